// The transfer loops under sendData and recvData.
//
// Results: `length` on success; -1 when waiting on the socket failed ("%s ,SOCKET_ERROR");
// -2 ("%s ,expire") when the peer stayed idle for `timeoutMs`, closed the connection or the
// connection failed. A length of 0 or less is returned at once.
#pragma once

#include <cstdint>

#include <zrad/remotedebug.h>

namespace zrad::remote {

int writedata(int sock, int length, const void* buffer, int timeoutMs);
int readdata(int sock, int length, void* buffer, int timeoutMs);
// Sends `length` bytes of `stream` from its start (zeros past its end): `length`, or -1.
int sendStream(int sock, int length, ZrSmartPtr<ZrStreamBuf> stream, int timeoutMs);

// Bytes moved per block by the transfer loops.
constexpr int kBlockSize = 256 * 1024;

}  // namespace zrad::remote

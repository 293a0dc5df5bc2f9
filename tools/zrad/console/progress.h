// The transfer progress line of UP and DOWN: bytes moved and the rate, read from the socket.
//
//   formatProgress("UP", 5 MiB, 10 MiB, 2 s) => "UP    5.0 MiB of 10.0 MiB  [##########          ]  2.5 MiB/s"
//   formatProgress("DOWN", 1536, 0, 1 s)     => "DOWN  1.5 KiB  1.5 KiB/s"  (total unknown)
#pragma once

#include <cstdint>
#include <string>

namespace zradtool {

// "1023 B", "1.5 KiB", "12.0 MiB", "3.2 GiB".
std::string formatBytes(uint64_t bytes);

// One progress line (no line end). `total` 0: unknown, so no bar.
std::string formatProgress(const std::string& word, uint64_t bytes, uint64_t total,
                           double seconds);

// Bytes the peer has acknowledged (sent) or this end has received on TCP socket `sock`
// since it opened; 0 when the kernel does not say.
uint64_t socketBytesSent(int sock);
uint64_t socketBytesReceived(int sock);

}  // namespace zradtool

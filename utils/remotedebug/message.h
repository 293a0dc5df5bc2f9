// The 24-byte message header at the start of every payload an endpoint sends.
#pragma once

#include <zrad/remotedebug.h>

namespace zrad::remote {

// A new package whose payload holds `header` (more may be written after it).
ZrSmartPtr<RvNetPackage> makeMessage(const RvMessageHeader& header);
// The header at the start of `pkg`'s payload; fields past the payload's end read as 0.
RvMessageHeader readHeader(const RvNetPackage& pkg);
// Overwrites the sequence of a message made by makeMessage.
void setSequence(RvNetPackage& pkg, int32_t sequence);
// The tag that names `com` on the wire.
inline uint64_t tagOf(const INetCom* com) { return reinterpret_cast<uintptr_t>(com); }

}  // namespace zrad::remote

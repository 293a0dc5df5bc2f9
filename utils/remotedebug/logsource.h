// The log source every message of the communication layer carries.
#pragma once

namespace zrad::remote {

inline constexpr char kLogSource[] = "utils/rvremotedebugcommunication";

}  // namespace zrad::remote

// The console's connection address: "host" or "host:port".
#pragma once

#include <zrplatform/strings.h>

namespace zrad::remote {

constexpr int kConsoleDefaultPort = 6666;

// Splits at the first ":"; the port text is read by strtol in base 10.
//   "127.0.0.2"       => "127.0.0.2", 6666
//   "127.0.0.2:7000"  => "127.0.0.2", 7000
//   "127.0.0.2:x"     => "127.0.0.2", 0
//   "127.0.0.2:"      => "127.0.0.2", 0
//   ":80"             => "", 80
void splitConsoleAddress(const ZrUtf8String& address, ZrUtf8String& host, int& port);

}  // namespace zrad::remote

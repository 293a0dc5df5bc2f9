// The stack-text provider: who turns the current call stack into text.
#pragma once

#include <cstddef>
#include <string>

namespace zrad::detail {

// Writes up to `size` bytes of stack text into `buffer` (terminated only if it fits).
using StackTextProvider = void (*)(char* buffer, size_t size);

// The built-in provider: the same frames zr_dumpStack logs.
void builtinStackText(char* buffer, size_t size);

// Replaces the provider (null removes it); the built-in one is installed at start.
void setStackTextProvider(StackTextProvider provider);

// Up to 1024 bytes from the installed provider; empty when there is none.
std::string stackText();

}  // namespace zrad::detail

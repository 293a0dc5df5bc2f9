// Opening the files the XML filer reads: regular files only, without ever blocking.
#pragma once

#include <cstdio>
#include <string>

namespace zrad::xml {

// `path` opened for reading when it is a regular file. Null otherwise, with `whyNot` set to
// "not a regular file" (directories, FIFOs, devices, sockets) or "cannot open: <system text>".
// A FIFO is opened without blocking and refused before anything is read from it.
FILE* openRegularFile(const char* path, std::string& whyNot);

}  // namespace zrad::xml

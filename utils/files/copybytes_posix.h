// Moving a file's bytes from one descriptor to another as fast as the kernel allows.
//
// Used by zrutCopyFile; kept apart so the fast path and its fallback are tested on their own.
#pragma once

namespace zrad::files {

// Copies everything from the read position of `from` to its end into `to`. Between regular
// files the holes of a sparse source stay holes (the copy has the same bytes and length, but
// only the source's data blocks). The kernel copies the bytes itself (copy_file_range) where it
// can; otherwise they go through a large buffer. False when a read fails or a write writes
// nothing.
bool copyBytes(int from, int to);

// The buffered copy on its own (the fallback of copyBytes).
bool copyBytesBuffered(int from, int to);

}  // namespace zrad::files

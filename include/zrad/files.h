// Paths and files: path text operations, and file and directory services over POSIX.
//
// Paths are UTF-8 `ZrUtf8String`s with "/" as separator unless an operation says otherwise.
// Nothing here throws (but the platform's out-of-memory error): failures are false, -1, 0 or
// an empty string, as each operation states.
#pragma once

#include <cstdint>
#include <cstdio>

#include <zrad/export.h>
#include <zrplatform/array.h>
#include <zrplatform/stream.h>
#include <zrplatform/strings.h>

// ---------------------------------------------------------------------------------------------
// Path text operations
//
// Pure text work on paths: nothing here looks at the file system except zrutAbsolutePath.
// "/" is the separator written; most operations also take "\" on input. Every operation
// returns a new string and never fails: degenerate input gives the rows shown (often "").
// The wide forms give the same results as the UTF-8 ones unless a row shows otherwise.

// Joins a directory and a name. When `base` ends with a separator, that separator is dropped
// and one "/" is put back unless `name` starts with "\" or ends with "/".
//   zrutCombinePath("", "x")      => "x"
//   zrutCombinePath("a", "b")     => "a/b"
//   zrutCombinePath("a/", "b")    => "a/b"
//   zrutCombinePath("a\\", "b")   => "a/b"
//   zrutCombinePath("a/", "\\b")  => "a\\b"
//   zrutCombinePath("a", "\\b")   => "a\\b"
//   zrutCombinePath("a/", "b/")   => "ab/"
//   zrutCombinePath("a", "/b")    => "a//b"
//   zrutCombinePath("a/", "")     => "a/"
ZRAD_EXPORT ZrUtf8String zrutCombinePath(const ZrUtf8String& base, const ZrUtf8String& name);
// The wide join never looks at `name`:
//   zrutCombinePathW(L"a/", L"b/")   => L"a/b/"
//   zrutCombinePathW(L"a\\", L"\\b") => L"a/\\b"
ZRAD_EXPORT ZrString zrutCombinePathW(const ZrString& base, const ZrString& name);

// The directory part with its trailing "/", trailing separators of `path` ignored.
//   zrutGetParentDir("a/b/c/")    => "a/b/"
//   zrutGetParentDir("a\\b\\c")   => "a/b/"
//   zrutGetParentDir("/a")        => "/"
//   zrutGetParentDir("file")      => ""
//   zrutGetParentDir("/")         => ""
ZRAD_EXPORT ZrUtf8String zrutGetParentDir(const ZrUtf8String& path);
ZRAD_EXPORT ZrString zrutGetParentDirW(const ZrString& path);

// What follows the last separator, or the whole path.
//   zrutGetFileName("a\\b.txt")   => "b.txt"
//   zrutGetFileName("a/b/")       => ""
//   zrutGetFileName("b")          => "b"
ZRAD_EXPORT ZrUtf8String zrutGetFileName(const ZrUtf8String& path);
ZRAD_EXPORT ZrString zrutGetFileName(const ZrString& path);

// The last component without its extension; "" when the last "." lies before the name.
//   zrutGetFileNoExtName("d/a.b.c")     => "a.b"
//   zrutGetFileNoExtName("a")           => "a"
//   zrutGetFileNoExtName("dir/.hidden") => ""
//   zrutGetFileNoExtName("dir.x/file")  => ""
ZRAD_EXPORT ZrUtf8String zrutGetFileNoExtName(const ZrUtf8String& path);
ZRAD_EXPORT ZrString zrutGetFileNoExtName(const ZrString& path);

// Everything up to and including the last separator; a bare name is its own path.
//   zrutGetFilePath("a\\b\\c.txt") => "a/b/"
//   zrutGetFilePath("c.txt")       => "c.txt"
ZRAD_EXPORT ZrUtf8String zrutGetFilePath(const ZrUtf8String& path);
ZRAD_EXPORT ZrString zrutGetFilePath(const ZrString& path);

// From the last "." anywhere in the path to the end, dot included; "" without a dot.
//   zrutGetFileExtName("x/y.tar.gz") => ".gz"
//   zrutGetFileExtName("noext")      => ""
//   zrutGetFileExtName("a.b\\c")     => ".b/c"
ZRAD_EXPORT ZrUtf8String zrutGetFileExtName(const ZrUtf8String& path);
ZRAD_EXPORT ZrString zrutGetFileExtName(const ZrString& path);

// What follows the last "/" or "\", left as it is written.
//   zrutGetLastFileNameInPath("a/b\\c")  => "c"
//   zrutGetLastFileNameInPath("a\\b/c")  => "c"
//   zrutGetLastFileNameInPath("c")       => "c"
ZRAD_EXPORT ZrUtf8String zrutGetLastFileNameInPath(const ZrUtf8String& path);
ZRAD_EXPORT ZrString zrutGetLastFileNameInPathW(const ZrString& path);

// Splits at the last separator: `dir` keeps the separator, `name` loses its extension when
// there is a directory part; without one, `name` is the whole path. Always true.
//   zrutSplitPath2("d/a.b.c")  => "d/", "a.b"
//   zrutSplitPath2("d\\a")     => "d\\", "a"
//   zrutSplitPath2("a.b.c")    => "", "a.b.c"
//   zrutSplitPath2("d.x/a")    => "d.x/", "a"
ZRAD_EXPORT bool zrutSplitPath2(const ZrUtf8String& path, ZrUtf8String& dir, ZrUtf8String& name);

// Appends the components of `path` to `elements` ("/" first for a rooted path); empty
// components are skipped. Always true.
//   zrutSplitPath("/a//b/")  => ["/", "a", "b"]
//   zrutSplitPath("a\\b")    => ["a", "b"]
//   zrutSplitPath("")        => []
ZRAD_EXPORT bool zrutSplitPath(const ZrUtf8String& path, ZrArray<ZrUtf8String>& elements);

// Resolves "." and ".."; "" when ".." climbs above the start. A trailing separator on `path`
// keeps the trailing "/"; otherwise trailing "/" are removed. Relative components are joined
// with a "/" after each but the first.
//   zrutFormatPath("/a/./b/../c")  => "/a/c"
//   zrutFormatPath("/a/b/")        => "/a/b/"
//   zrutFormatPath("a\\b\\")       => "ab/"
//   zrutFormatPath("a/b/c")        => "ab/c"
//   zrutFormatPath("../x")         => ""
//   zrutFormatPath("/")            => "/"
//   zrutFormatPath("/a/..")        => ""       (the root "/" goes like any trailing "/")
//   zrutFormatPath("")             => ""
ZRAD_EXPORT ZrUtf8String zrutFormatPath(const ZrUtf8String& path);

// Whether the path starts with "/". A drive letter is relative.
//   zrutPathIsRelative("a/b")  => true
//   zrutPathIsRelative("/a")   => false
//   zrutPathIsRelative("C:/a") => true
//   zrutPathIsRelative("")     => true (and reports an assertion: reading character 0)
ZRAD_EXPORT bool zrutPathIsRelative(const ZrUtf8String& path);
ZRAD_EXPORT bool zrutPathIsAbsolute(const ZrUtf8String& path);

// The path resolved by the operating system (it must exist), "\" turned into "/"; the input
// unchanged when it cannot be resolved or is 261 bytes or longer.
//   zrutAbsolutePath("/tmp/../tmp") => "/tmp"
//   zrutAbsolutePath("/missing")    => "/missing"
ZRAD_EXPORT ZrUtf8String zrutAbsolutePath(const ZrUtf8String& path);

// Applies `relative` to the directory `base` as zrutFormatPath resolves, without asking the
// file system; "" when ".." climbs above the start of `base`.
//   zrutAbsolutPath("c/d", "/a/b")   => "/a/b/c/d"
//   zrutAbsolutPath("../x", "/a/b")  => "/a/x"
//   zrutAbsolutPath("x/", "/a")      => "/a/x/"
//   zrutAbsolutPath("../../..", "/a") => ""
ZRAD_EXPORT ZrUtf8String zrutAbsolutPath(const ZrUtf8String& relative, const ZrUtf8String& base);

// The path from the directory that holds the file `basefile` to `target` (components compared
// case-sensitively). Starts with "./" when `target` lies in that directory or below.
//   zrutRelatePath("/p/q/x/y", "/p/q/f.dwg")  => "./x/y"
//   zrutRelatePath("/p/r/y", "/p/q/f.dwg")    => "../r/y"
//   zrutRelatePath("/p/q/x/", "/p/q/f.dwg")   => "./x/"
//   zrutRelatePath("/p", "/p/q/f.dwg")        => "../../"
//   zrutRelatePath("/p/q/f.dwg", "/p/q/f.dwg") => "./"
ZRAD_EXPORT ZrUtf8String zrutRelatePath(const ZrUtf8String& target, const ZrUtf8String& basefile);

// Whether `a` lies in the directory of the file `b` or below (zrutRelatePath starts "./"),
// and, for zrutIsSameDir, directly in it.
//   zrutIsSubDirOrSameDir("/p/q/x/y", "/p/q/f")  => true
//   zrutIsSameDir("/p/q/x/y", "/p/q/f")          => false
//   zrutIsSameDir("/p/q/g", "/p/q/f")            => true
//   zrutIsSubDirOrSameDir("/p/r", "/p/q/f")      => false
ZRAD_EXPORT bool zrutIsSubDirOrSameDir(ZrUtf8String a, ZrUtf8String b);
ZRAD_EXPORT bool zrutIsSameDir(ZrUtf8String a, ZrUtf8String b);

// Replaces the extension with `extension` (given without its dot). With a directory part one
// extension is already gone before the last one is replaced.
//   zrutPathRenameExtension("d/a.b.c", "x")  => "d/a.x"
//   zrutPathRenameExtension("a.b.c", "x")    => "a.b.x"
//   zrutPathRenameExtension(".rc", "x")      => ".rc.x"
//   zrutPathRenameExtension("d/.rc", "x")    => "d/.x"
//   zrutPathRenameExtension("a", "x")        => "a.x"
ZRAD_EXPORT ZrUtf8String zrutPathRenameExtension(const ZrUtf8String& path, const ZrUtf8String& extension);
ZRAD_EXPORT ZrString zrutPathRenameExtension(const ZrString& path, const ZrString& extension);

// False when the name holds any of : ? * > < & | ' "  ("/" and "\" are allowed).
//   zrutIsValidFilePathName("a/b")  => true
//   zrutIsValidFilePathName("a:b")  => false
ZRAD_EXPORT bool zrutIsValidFilePathName(const ZrUtf8String& name);

// ---------------------------------------------------------------------------------------------
// Directory entries.

// One directory entry, as filled by findnextUtf8 and zrutGlob. Callers zero it before use.
struct _finddata_t {
  uint32_t attrib;      // kFindAttribDirectory and/or kFindAttribLink, or 0
  int64_t time_create;  // status-change time, seconds
  int64_t time_access;
  int64_t time_write;
  int64_t size;         // bytes
  char name[260];       // zero-terminated, at most 259 bytes
  uint64_t inode;
  char directory[1024];  // the directory listed (empty when its path is 1024 bytes or more)
};

// attrib bits. The directory bit is set when the entry type has its bit of value 4 set, which
// also holds for block devices and sockets; a symbolic link (to anything) only has the link bit.
constexpr uint32_t kFindAttribDirectory = 16;
constexpr uint32_t kFindAttribLink = 64;

using ZrFindDataArray = ZrArray<_finddata_t, ZrArrayMemCopyReallocator<_finddata_t>>;

// Opens `directory` (a directory, not a pattern), stores it in record->directory and reads the
// first entry into `record`. Returns the handle for findnextUtf8 / findcloseUtf8, or -1 for a
// null or empty path, a null record or a directory that cannot be opened.
ZRAD_EXPORT intptr_t findfirstUtf8(const char* directory, _finddata_t* record);
// Reads the next entry; 0, or -1 at the end and for a bad handle or record. The times and
// size come from stat (links followed); when that fails they are 0 and the result is still 0.
ZRAD_EXPORT int findnextUtf8(intptr_t handle, _finddata_t* record);
// Closes a handle of findfirstUtf8; 0, or -1 for a bad handle.
ZRAD_EXPORT int findcloseUtf8(intptr_t handle);

// Glob flags.
constexpr int kGlobFiles = 1;      // report files (anything without the directory bit)
constexpr int kGlobDirs = 2;       // report directories that match
constexpr int kGlobRecursive = 4;  // search subdirectories; names become "sub/name"
constexpr int kGlobDotDirs = 8;    // with kGlobDirs, "." and ".." take part in the match

// Appends the entries of `directory` whose names match `pattern` (quickMatch wildcards) to
// `found`, in the order the directory lists them; a subdirectory's entries follow it. Names
// are relative to `directory`; a name of 260 bytes or more with its terminator is left out.
// Symbolic links are never descended. Directories that cannot be read add nothing.
// Returns found.length().
//   ("d", "*.txt", kGlobFiles | kGlobRecursive)  => "a.txt", "sub/b.txt"
//   ("d", "s*", kGlobDirs)                       => "sub"
//   ("missing", "*", kGlobFiles)                 => nothing added
ZRAD_EXPORT int zrutGlob(const ZrUtf8String& directory, const ZrUtf8String& pattern,
                         ZrFindDataArray& found, int flags);
// zrutGlob with quickMatchNoCase.
ZRAD_EXPORT int zrutGlobNoCaseSensitive(const ZrUtf8String& directory, const ZrUtf8String& pattern,
                                        ZrFindDataArray& found, int flags);
// zrutGlob, appending zrutCombinePath(directory, name) for every entry found; returns
// paths.length().
//   ("d", "*.txt")  => "d/a.txt", "d/sub/b.txt"
ZRAD_EXPORT int zrutGlob2(const ZrUtf8String& directory, const ZrUtf8String& pattern,
                          ZrArray<ZrUtf8String>& paths, int flags = kGlobFiles | kGlobRecursive);
ZRAD_EXPORT int zrutGlobNoCaseSensitive2(const ZrUtf8String& directory, const ZrUtf8String& pattern,
                                         ZrArray<ZrUtf8String>& paths,
                                         int flags = kGlobFiles | kGlobRecursive);

// ---------------------------------------------------------------------------------------------
// Existence and attributes. "\" is read as "/" where noted.

// True when stat succeeds (files and directories alike); "\" read as "/".
ZRAD_EXPORT bool zrutIsExistFile(const ZrUtf8String& path);

constexpr int kIsDirWritable = 1;  // also require the owner-write bit
constexpr int kIsDirReadable = 2;  // the result is the owner-read bit
// True for a directory (links followed); "\" read as "/". See the flags above.
ZRAD_EXPORT bool zrutIsDir(const ZrUtf8String& path, int flags = 0);
ZRAD_EXPORT bool isDir(const ZrUtf8String& path);

// Size in bytes (64-bit); -1 when the file cannot be opened for reading.
ZRAD_EXPORT int64_t zrutGetFileSize(const ZrUtf8String& path);
// Size of an open descriptor; -1 when fstat fails.
ZRAD_EXPORT int64_t filelength(int descriptor);
// Status-change time in seconds; 0 when stat fails.
ZRAD_EXPORT int64_t zrutGetFileCreateTime(const ZrUtf8String& path);
// zrutGetFileCreateTime in local time as "%Y-%m-%d %H-%M-%S" (a missing file gives the local
// form of time 0).
ZRAD_EXPORT ZrUtf8String zrutGetFileCreateTimeS(const ZrUtf8String& path);
// False when the owner may write or execute; otherwise whether the owner may read. A missing
// file is not read-only.
//   r--  => true     rw-  => false     r-x  => false     ---  => false
ZRAD_EXPORT bool zrutFileIsReadOnly(const ZrUtf8String& path);
// access() with the read (4) and write (2) bits of `mode` only, and the file must stat.
ZRAD_EXPORT bool zrutAccessFile(const ZrString& path, int mode);
// True when "lsof -c zrad | grep <path>" prints anything (a process named zrad* holds it).
// Empty path, or one holding a newline (which lsof never prints): false. The path reaches the
// shell as one quoted word, whatever it holds.
ZRAD_EXPORT bool zrutFileHasOpen(const ZrUtf8String& path);
// True when `path` is a symbolic link (target read up to 1023 bytes). `*length` is set to the
// target's length; when `buffer` is given and that length is below the `*length` passed in,
// the target is copied there and terminated. Null path or not a link: false, nothing written.
ZRAD_EXPORT bool isSymbolicLink(const char* path, char* buffer = nullptr, int* length = nullptr);
// True when `a` and `b` are the same inode, or when a's inode is found in b's tree (links not
// followed). False for null or empty arguments, or when either does not exist.
ZRAD_EXPORT bool isSubDirOrSameDirByInode(const char* a, const char* b);

// ---------------------------------------------------------------------------------------------
// Creating, removing, copying and moving. None of them rolls back a partial result, but no
// failure ever removes a source that was not copied completely. A path with a zero byte inside
// names no file: each of them gives false for it and touches nothing.

// Creates the directory and its missing parents (mode 0777 before umask); true when it exists
// afterwards. Empty path: false. Failures are logged at level 5.
ZRAD_EXPORT bool zrutCreateDir(const ZrUtf8String& path);
// Removes a file, or a directory tree with zrutRemovePath; true on success.
ZRAD_EXPORT bool zrutRemoveFile(const ZrUtf8String& path);
// Removes a directory tree; a symbolic link is unlinked, never followed.
ZRAD_EXPORT bool zrutRemovePath(const ZrUtf8String& path);
// Removes everything inside `directory`, keeping it; stops at the first failure (false).
ZRAD_EXPORT bool zrutCleanPath(const ZrUtf8String& directory);

// Copies a file's bytes and its access and modification times; the holes of a sparse file
// stay holes in the copy. A directory source is copied with zrutCopyPath. False for an empty path, a source that cannot be read, a destination that
// is the source itself (links and hard links included) or cannot be written.
//   ("a.txt", "b.txt")     => true, and nothing is copied (a bare destination name)
//   ("d/f", "d/f")         => false
//   ("d/f", "d/x/y/f")     => true, "d/x/y" created
ZRAD_EXPORT bool zrutCopyFile(const ZrUtf8String& source, const ZrUtf8String& destination);
// Copies a directory tree into `destination` (created); symbolic links are copied as links.
// False when the destination lies inside the source, or at the first failure.
ZRAD_EXPORT bool zrutCopyPath(const ZrUtf8String& source, const ZrUtf8String& destination);
// Moves a file (copy, then remove the source; when the source cannot be removed, the copy is
// removed and the result is false) or a directory tree (zrutMovePath, then the source
// directory is removed). A bare destination name is taken in the current directory, so a move
// never drops a file.
ZRAD_EXPORT bool zrutMoveFile(const ZrUtf8String& source, const ZrUtf8String& destination);
// Moves the entries of `source` into `destination` (created) one by one; `source` itself stays,
// empty when everything moved.
ZRAD_EXPORT bool zrutMovePath(const ZrUtf8String& source, const ZrUtf8String& destination);

// ---------------------------------------------------------------------------------------------
// File contents.

// fopen of a UTF-8 path.
ZRAD_EXPORT FILE* fopenUTF8(const char* path, const char* mode);
// The rest of an open file as UTF-8 text. A byte-order mark decides the encoding: FE FF
// big-endian UTF-16, FF FE little-endian UTF-16, EF BB BF UTF-8 (the mark is dropped); without
// one the bytes come back as they are. A file whose size reads as 0 (a pipe) is never decoded.
// Null file: "".
//   FE FF 00 41  => "A"
//   EF BB BF 41  => "A"
//   41 42        => "AB"
ZRAD_EXPORT ZrUtf8String zrutReadContent(FILE* file);
// zrutReadContent of the file at `path`; "" when it cannot be opened.
ZRAD_EXPORT ZrUtf8String zrutReadContentFromFile(const ZrUtf8String& path);

// Encodings of zrutWriteContentToFile. Other modes follow the bits: bit 0 writes a mark,
// bit 1 chooses little-endian UTF-16 over big-endian.
enum ZrContentMode {
  kContentUtf8 = 0,
  kContentUtf8Bom = 1,
  kContentUtf16Le = 2,
  kContentUtf16LeBom = 3,
  kContentUtf16Be = 4,
  kContentUtf16BeBom = 5,
};
// Writes `text` in the given encoding. UTF-16 writes one unit per character (characters above
// U+FFFF keep their low 16 bits). False for a null file or a failed write.
//   ("A", 3)  => FF FE 41 00
//   ("A", 5)  => FE FF 00 41
ZRAD_EXPORT bool zrutWriteContentToFile(FILE* file, const ZrUtf8String& text, int mode);
// Creates or truncates `path` and writes as above.
ZRAD_EXPORT bool zrutWriteContentToFile(const ZrUtf8String& path, const ZrUtf8String& text,
                                        int mode);

// ---------------------------------------------------------------------------------------------
// Finding files.

// The first zrutCombinePath(directory, name) that exists replaces `name`; false when none does
// (then `name` is unchanged).
ZRAD_EXPORT bool zrutFindFileInPaths(ZrUtf8String& name, const ZrArray<ZrUtf8String>& directories);
ZRAD_EXPORT bool zrutFindFileInPathsW(ZrString& name, const ZrArray<ZrString>& directories);
// The same, letter case ignored; `name` becomes the path as spelled on disk.
ZRAD_EXPORT bool zrutFindFileInPathsNoCase(ZrUtf8String& name,
                                           const ZrArray<ZrUtf8String>& directories);
ZRAD_EXPORT bool zrutFindFileInPathsNoCaseW(ZrString& name, const ZrArray<ZrString>& directories);
// Looks for `name` in `directory` ignoring ASCII letter case; on success `name` takes the
// spelling of the first such entry. An empty directory is the current one.
//   ("/", "TMP")  => true, name "tmp"
ZRAD_EXPORT bool zrutIsExistFileInPathNoCase(const ZrUtf8String& directory, ZrUtf8String& name);
// True when the path exists with its letter case ignored (ASCII); `realPath` becomes the path
// as spelled on disk. The path is first normalised with zrutFormatPath, and a component that
// exists as written is kept as written. A trailing "/" is kept only when `path` has one.
// `realPath` is unchanged on failure.
//   "/TMP"      => true, "/tmp"
//   "/TMP/"     => true, "/tmp/"
//   "/nothere"  => false
ZRAD_EXPORT bool zrutIsExistFileNoCaseSensitive(const ZrUtf8String& path, ZrUtf8String& realPath);
ZRAD_EXPORT bool zrutIsExistFileNoCaseSensitiveW(const ZrString& path, ZrString& realPath);
// Does nothing on this platform: `paths` stays as it was.
ZRAD_EXPORT void zrutGetFindPaths(ZrArray<ZrUtf8String>& paths, int kind);
// Pushes `directory` onto the library-path stack and sets LD_LIBRARY_PATH to
// "<directory>:<previous value>".
ZRAD_EXPORT void zrutPushFindLibraryPath(const ZrUtf8String& directory);
// Pops the last pushed directory (when any); LD_LIBRARY_PATH keeps it.
ZRAD_EXPORT void zrutPopFindLibraryPath();

// ---------------------------------------------------------------------------------------------
// Temporary names, the process and its surroundings.

// The process-wide temporary directory; empty until set. Not synchronised.
ZRAD_EXPORT void setTempPath(const ZrUtf8String& directory);
ZRAD_EXPORT ZrUtf8String getTempPath();
// A free temporary name (not created). A pattern with "*" after its first character gives the
// directory (its parent) and the name (its last component, "*" standing for 1, 2, 3, ...);
// otherwise the names are "1.tmp", "2.tmp", ... in getTempPath() (the current directory when
// that is empty). The directory is created when missing; "" when it cannot be.
//   "/tmp/x/*.err"  => "/tmp/x/1.err" (when free; "/tmp/x" created)
//   "/tmp/x/a*"     => "/tmp/x/a1"
ZRAD_EXPORT ZrUtf8String zrutMktempUTF8(const ZrUtf8String& pattern);
// Runs `command` through the shell and returns its standard output; its standard error is
// appended to `errorText` (it goes through a temporary "*.err" file in getTempPath(), or /tmp
// when that is empty). When the shell cannot be started, `errorText` becomes the command
// followed by "出错" and the result is "".
ZRAD_EXPORT ZrUtf8String zrutPipeCmd(const ZrUtf8String& command, ZrUtf8String& errorText);
// Runs "xdg-open <path>" (the path quoted for the shell when it needs it); true when the
// command succeeds.
ZRAD_EXPORT bool zrutOpenPdfFile(const ZrUtf8String& path);

// getcwd; "" when it fails.
ZRAD_EXPORT ZrUtf8String zrutGetCWD();
// $HOME/Documents, else $HOME/文档 when only that one is a directory.
ZRAD_EXPORT ZrString zrutGetHomeDir();
// The host name; "" when unknown.
ZRAD_EXPORT ZrString zrutGetComputerName();
// The login name of the real user; "" when unknown.
ZRAD_EXPORT ZrString zrutGetUserName();

// ---------------------------------------------------------------------------------------------
// Length-prefixed strings on a stream: a 32-bit byte count in machine order, then the bytes.

// Writes the count and the UTF-8 bytes; false for a null stream or a failed write.
ZRAD_EXPORT bool zrutWrUtf8String(ZrStreamBuf* stream, const ZrUtf8String& text);
// Reads one string. A count above 0x20000000, or more bytes than the stream still holds, gives
// "" and nothing more is read; a stream too short for the count gives "".
ZRAD_EXPORT ZrUtf8String zrutRdUtf8String(ZrStreamBuf* stream);

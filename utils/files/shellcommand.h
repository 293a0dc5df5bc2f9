// Shell command texts that carry a path: the path always reaches the command as one word.
//
// A path of plain characters keeps the command's usual form; any other path is single-quoted
// (a "'" inside written as '\''), so spaces, quotes, "$", backticks, ";" or newlines in it
// can neither break the command nor start another one.
#pragma once

#include <zrplatform/strings.h>

namespace zrad::files {

// True when the text is a shell word as it stands: not empty, not starting with "-", and made
// only of letters, digits, non-ASCII bytes and "/._+,:@%=-".
bool isPlainShellWord(const ZrUtf8String& text);

// 'text' with every "'" written as '\''.
//   a b  => 'a b'      it's  => 'it'\''s'
ZrUtf8String singleQuoted(const ZrUtf8String& text);

// The command that asks whether a zrad process holds `path`.
//   /tmp/a.dwg  => lsof -c zrad | grep "/tmp/a.dwg"
//   /tmp/a b    => lsof -c zrad | grep -F -e '/tmp/a b'
ZrUtf8String lsofCommand(const ZrUtf8String& path);

// The command that opens `path` with the desktop's program (a leading "-" is kept from
// reading as an option).
//   /tmp/a.pdf  => xdg-open /tmp/a.pdf
//   /tmp/a b    => xdg-open '/tmp/a b'
//   -x.pdf      => xdg-open ./-x.pdf
ZrUtf8String openCommand(const ZrUtf8String& path);

// `command` with its standard error sent to `file`.
//   ("ls", "/tmp/1.err")  => ls 2>"/tmp/1.err"
//   ("ls", "/tmp/a b")    => ls 2>'/tmp/a b'
ZrUtf8String withStderrTo(const ZrUtf8String& command, const ZrUtf8String& file);

}  // namespace zrad::files

// Shell command texts that carry a path, quoted so the path stays one word.
//
// Plain paths keep the double-quoted or bare form the commands always had; everything else
// is single-quoted, the one shell quoting in which no character but "'" is special.
#include "files/shellcommand.h"

namespace zrad::files {

namespace {

bool isPlainByte(unsigned char c) {
  if (c >= 0x80) return true;  // UTF-8: never a shell metacharacter
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) return true;
  for (const char* p = "/._+,:@%=-"; *p; ++p)
    if (c == static_cast<unsigned char>(*p)) return true;
  return false;
}

}  // namespace

bool isPlainShellWord(const ZrUtf8String& text) {
  if (text.isEmpty() || text[0] == '-') return false;
  for (char c : text.str())
    if (!isPlainByte(static_cast<unsigned char>(c))) return false;
  return true;
}

ZrUtf8String singleQuoted(const ZrUtf8String& text) {
  ZrUtf8String quoted("'");
  for (char c : text.str()) {
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  }
  quoted += '\'';
  return quoted;
}

ZrUtf8String lsofCommand(const ZrUtf8String& path) {
  ZrUtf8String command("lsof -c zrad | grep ");
  if (isPlainShellWord(path)) return command + "\"" + path + "\"";
  // Taken literally (-F), and never as an option (-e), whatever the path holds.
  return command + "-F -e " + singleQuoted(path);
}

ZrUtf8String openCommand(const ZrUtf8String& path) {
  ZrUtf8String word = !path.isEmpty() && path[0] == '-' ? "./" + path : path;
  return "xdg-open " + (isPlainShellWord(word) ? word : singleQuoted(word));
}

ZrUtf8String withStderrTo(const ZrUtf8String& command, const ZrUtf8String& file) {
  if (isPlainShellWord(file)) return command + " 2>\"" + file + "\"";
  return command + " 2>" + singleQuoted(file);
}

}  // namespace zrad::files

// Path text operations: joining, splitting, naming parts and resolving "." and "..".
//
// Pure text; nothing here touches the file system. Operations that have their own wide body
// are templates over the string type; the other wide forms go through UTF-8 with viaUtf8.
#include <zrad/files.h>

#include "files/pathtext.h"

using zrad::files::childPath;
using zrad::files::viaUtf8;
using zrad::files::withSlashes;
using zrad::files::withoutTrailingSlashes;

namespace {

using Elements = ZrArray<ZrUtf8String>;

bool isSeparator(wchar_t ch) { return ch == '/' || ch == '\\'; }

// Whether the text ends with "/" or "\"; false for an empty text.
template <class Text>
bool endsWithSeparator(const Text& text) {
  return !text.isEmpty() && isSeparator(text.str().back());
}

// Index of the last "/" or "\", or -1.
template <class Text>
int lastSeparator(const Text& text) {
  int slash = text.reverseFind('/');
  int backslash = text.reverseFind('\\');
  return slash > backslash ? slash : backslash;
}

template <class Text>
Text parentDirOf(const Text& path) {
  Text dir = withoutTrailingSlashes(withSlashes(path));
  int slash = dir.reverseFind('/');
  // No "/", or only the root's: no parent.
  return slash < 0 || slash == dir.length() - 1 ? Text() : dir.left(slash + 1);
}

template <class Text>
Text lastNameOf(const Text& path) {
  int at = lastSeparator(path);
  return at < 0 ? path : path.mid(at + 1);
}

// Walks `elements` over `stack`: "." is skipped, ".." pops; false when ".." finds it empty.
bool applyElements(const Elements& elements, Elements& stack) {
  for (const ZrUtf8String& element : elements) {
    if (element == ".") continue;
    if (element != "..") {
      stack.append(element);
    } else if (stack.isEmpty()) {
      return false;
    } else {
      stack.removeAt(stack.length() - 1);
    }
  }
  return true;
}

// Element 0, then every later element followed by "/": ["/", "a"] => "/a/", ["a", "b"] => "ab/".
ZrUtf8String joinElements(const Elements& elements) {
  ZrUtf8String joined;
  for (int i = 0; i < elements.length(); ++i) {
    joined += elements[i];
    if (i > 0) joined += '/';
  }
  return joined;
}

// Applies the components of `path` to `stack` and joins the result; the one normalisation
// behind zrutFormatPath and zrutAbsolutPath. A trailing "/" stays only when `path` ends with
// a separator.
ZrUtf8String resolveOnto(Elements stack, const ZrUtf8String& path) {
  Elements elements;
  zrutSplitPath(path, elements);
  if (!applyElements(elements, stack) || stack.isEmpty()) return ZrUtf8String();
  ZrUtf8String joined = joinElements(stack);
  if (endsWithSeparator(path)) return joined;
  // The root "/" goes like any trailing "/".
  ZrUtf8String stripped = withoutTrailingSlashes(joined);
  return stripped == "/" ? ZrUtf8String() : stripped;
}

ZrUtf8String repeated(const char* text, int times) {
  ZrUtf8String result;
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

ZrUtf8String appendElementsFrom(ZrUtf8String result, const Elements& elements, int from) {
  for (int i = from; i < elements.length(); ++i) result += elements[i] + '/';
  return result;
}

// The path from the directory of file `basefile` to `target`, before its trailing "/" is
// settled.
ZrUtf8String relativeSteps(const ZrUtf8String& target, const ZrUtf8String& basefile) {
  Elements base, goal;
  zrutSplitPath(basefile, base);
  zrutSplitPath(target, goal);
  int shorter = base.length() < goal.length() ? base.length() : goal.length();
  int common = 0;
  while (common < shorter && base[common] == goal[common]) ++common;

  if (common < shorter) {
    int up = base.length() - common - 1;  // the last base element is the file itself
    return appendElementsFrom(up == 0 ? ZrUtf8String("./") : repeated("../", up), goal, common);
  }
  if (goal.length() < base.length()) return repeated("../", base.length() - goal.length());
  return appendElementsFrom("./", goal, base.length());
}

bool startsWith(const ZrUtf8String& text, const char* prefix) {
  return text.str().compare(0, std::char_traits<char>::length(prefix), prefix) == 0;
}

}  // namespace

ZrUtf8String zrad::files::childPath(const ZrUtf8String& directory, const ZrUtf8String& name) {
  if (directory.isEmpty()) return name;
  return directory.str().back() == '/' ? directory + name : directory + "/" + name;
}

ZrUtf8String zrutCombinePath(const ZrUtf8String& base, const ZrUtf8String& name) {
  if (base.isEmpty()) return name;
  bool nameStartsWithBackslash = !name.isEmpty() && name.str().front() == '\\';
  if (!endsWithSeparator(base)) return nameStartsWithBackslash ? base + name : childPath(base, name);
  ZrUtf8String trimmed = base.left(base.length() - 1);
  // The name's last character, not its first, decides whether a "/" goes between.
  if (nameStartsWithBackslash || (!name.isEmpty() && name.str().back() == '/')) return trimmed + name;
  return trimmed + "/" + name;
}

ZrString zrutCombinePathW(const ZrString& base, const ZrString& name) {
  if (base.isEmpty()) return name;
  if (!endsWithSeparator(base)) return base + L"/" + name;
  return base.left(base.length() - 1) + L"/" + name;
}

ZrUtf8String zrutGetParentDir(const ZrUtf8String& path) { return parentDirOf(path); }
ZrString zrutGetParentDirW(const ZrString& path) { return parentDirOf(path); }

ZrUtf8String zrutGetFileName(const ZrUtf8String& path) {
  ZrUtf8String slashed = withSlashes(path);
  return slashed.mid(slashed.reverseFind('/') + 1);
}

ZrUtf8String zrutGetFileNoExtName(const ZrUtf8String& path) {
  ZrUtf8String slashed = withSlashes(path);
  int start = slashed.reverseFind('/') + 1;
  int dot = slashed.reverseFind('.');
  int end = dot < 0 ? slashed.length() : dot;
  return start < end ? slashed.mid(start, end - start) : ZrUtf8String();
}

ZrUtf8String zrutGetFilePath(const ZrUtf8String& path) {
  ZrUtf8String slashed = withSlashes(path);
  int slash = slashed.reverseFind('/');
  return slash < 0 ? slashed : slashed.left(slash + 1);
}

ZrUtf8String zrutGetFileExtName(const ZrUtf8String& path) {
  ZrUtf8String slashed = withSlashes(path);
  int dot = slashed.reverseFind('.');
  return dot < 0 ? ZrUtf8String() : slashed.mid(dot);
}

ZrString zrutGetFileName(const ZrString& path) { return viaUtf8(zrutGetFileName, path); }
ZrString zrutGetFileNoExtName(const ZrString& path) { return viaUtf8(zrutGetFileNoExtName, path); }
ZrString zrutGetFilePath(const ZrString& path) { return viaUtf8(zrutGetFilePath, path); }
ZrString zrutGetFileExtName(const ZrString& path) { return viaUtf8(zrutGetFileExtName, path); }

ZrUtf8String zrutGetLastFileNameInPath(const ZrUtf8String& path) { return lastNameOf(path); }
ZrString zrutGetLastFileNameInPathW(const ZrString& path) { return lastNameOf(path); }

bool zrutSplitPath2(const ZrUtf8String& path, ZrUtf8String& dir, ZrUtf8String& name) {
  int separator = lastSeparator(path);
  if (separator < 0) {
    dir = ZrUtf8String();
    name = path;
    return true;
  }
  dir = path.left(separator + 1);
  // No dot after the separator gives a negative count: mid() then takes the rest.
  name = path.mid(separator + 1, path.reverseFind('.') - separator - 1);
  return true;
}

bool zrutSplitPath(const ZrUtf8String& path, ZrArray<ZrUtf8String>& elements) {
  if (path.isEmpty()) return true;
  if (path.str().front() == '/') elements.append("/");
  ZrUtf8String slashed = withSlashes(path);
  int start = 0;
  for (int slash = slashed.find('/'); slash >= 0; slash = slashed.find('/', start)) {
    if (slash > start) elements.append(slashed.mid(start, slash - start));
    start = slash + 1;
  }
  if (start < slashed.length()) elements.append(slashed.mid(start));
  return true;
}

ZrUtf8String zrutFormatPath(const ZrUtf8String& path) { return resolveOnto(Elements(), path); }

bool zrutPathIsRelative(const ZrUtf8String& path) {
  // The checked access reports an empty path (and reads it as relative).
  return path[0] != '/';
}

bool zrutPathIsAbsolute(const ZrUtf8String& path) { return !zrutPathIsRelative(path); }

ZrUtf8String zrutAbsolutPath(const ZrUtf8String& relative, const ZrUtf8String& base) {
  Elements stack;
  zrutSplitPath(base, stack);
  return resolveOnto(stack, relative);
}

ZrUtf8String zrutRelatePath(const ZrUtf8String& target, const ZrUtf8String& basefile) {
  ZrUtf8String steps = relativeSteps(target, basefile);
  bool endsWithDotSlash = steps.length() >= 2 && steps.right(2) == "./";
  // Steps begin with "./" or "../", so they are never the root.
  if (!endsWithDotSlash && !endsWithSeparator(target)) steps = withoutTrailingSlashes(steps);
  return steps;  // built from split components, so it holds no "\"
}

bool zrutIsSubDirOrSameDir(ZrUtf8String a, ZrUtf8String b) {
  return startsWith(zrutRelatePath(a, b), "./");
}

bool zrutIsSameDir(ZrUtf8String a, ZrUtf8String b) {
  ZrUtf8String relation = zrutRelatePath(a, b);
  return startsWith(relation, "./") && relation.find('/') == relation.reverseFind('/');
}

ZrUtf8String zrutPathRenameExtension(const ZrUtf8String& path, const ZrUtf8String& extension) {
  ZrUtf8String dir, name;
  zrutSplitPath2(path, dir, name);
  int dot = name.reverseFind('.');
  ZrUtf8String stem = dot <= 0 ? name : name.left(dot);
  return zrutCombinePath(dir, stem + "." + extension);
}

ZrString zrutPathRenameExtension(const ZrString& path, const ZrString& extension) {
  return viaUtf8(zrutPathRenameExtension, path, extension);
}

bool zrutIsValidFilePathName(const ZrUtf8String& name) {
  return name.str().find_first_of(":?*><&|'\"") == std::string::npos;
}

// Internal helpers shared by the path and text operations of the files subsystem.
//
// `viaUtf8` runs the UTF-8 form of an operation for its wide form; `withSlashes` gives a copy
// of a path with every "\" turned into "/"; `childPath` is the one joiner of a directory and a
// name, `withoutTrailingSlashes` the one stripper of trailing "/".
#pragma once

#include <type_traits>

#include <zrplatform/strings.h>

namespace zrad::files {

// Each argument of a wide form: a ZrString where the UTF-8 form takes a ZrUtf8String.
template <class Narrow>
using WideArg = typename std::conditional<true, ZrString, Narrow>::type;

// Converts the wide arguments to UTF-8, calls `narrowForm` and converts a text result back.
// The first parameter is spelled out so that an overloaded name picks its UTF-8 form:
//   viaUtf8(zrutGetFileName, ZrString(L"a/b")) => L"b"
//   viaUtf8(stol, ZrString(L"0x10"))           => 16
template <class Result, class... Narrow>
auto viaUtf8(Result (*narrowForm)(const ZrUtf8String&, const Narrow&...), const ZrString& first,
             const WideArg<Narrow>&... rest) {
  Result result = narrowForm(ZrUtf8String(first), ZrUtf8String(rest)...);
  if constexpr (std::is_same<Result, ZrUtf8String>::value)
    return ZrString(result);
  else
    return result;
}

template <class Text>
Text withSlashes(Text path) {
  path.replace(typename Text::Std::value_type('\\'), typename Text::Std::value_type('/'));
  return path;
}

// The path of entry `name` of `directory`: one "/" between them, none added after a
// trailing one. Names are taken as they are ("\\" is an ordinary byte in them).
//   ("d", "f") => "d/f"     ("d/", "f") => "d/f"     ("", "f") => "f"     ("/", "f") => "/f"
ZrUtf8String childPath(const ZrUtf8String& directory, const ZrUtf8String& name);

// The path without trailing "/"; the root "/" stays (callers for whom it goes say so).
//   "d/l/" => "d/l"     "d//" => "d"     "/" => "/"     "" => ""
template <class Text>
Text withoutTrailingSlashes(Text path) {
  while (path.length() > 1 && path.str().back() == '/') path.str().pop_back();
  return path;
}

}  // namespace zrad::files

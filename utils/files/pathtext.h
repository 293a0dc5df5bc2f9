// Internal helpers shared by the path and text operations of the files subsystem.
//
// `viaUtf8` runs the UTF-8 form of an operation for its wide form; `withSlashes` gives a copy
// of a path with every "\" turned into "/".
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

}  // namespace zrad::files

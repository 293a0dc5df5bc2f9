// Wildcard matching and case-insensitive comparison.
//
// Patterns: `*` any run, `?` one character, `#` one digit, `` ` `` takes the next character
// literally.
//   zrutWcMatchExp(L"a12.txt", L"a##.*")  => true
//   zrutWcMatchExp(L"A.txt", L"a.*")      => false
//   zrutWcMatchNoCase(L"A.txt", L"a.*")   => true
//   zrutWcMatchExp(L"a*", L"a`*")          => true
#pragma once

#include "export.h"
#include "strings.h"

ZRPLATFORM_EXPORT bool zrutWcMatchExp(const ZrString& name, const ZrString& pattern);
ZRPLATFORM_EXPORT bool zrutWcMatchNoCase(const ZrString& name, const ZrString& pattern);
// strcmp that folds ASCII letters; <0, 0, >0.
ZRPLATFORM_EXPORT int Zr_stricmpA(const char* a, const char* b);

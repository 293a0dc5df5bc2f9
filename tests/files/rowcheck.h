// Table-driven checks for the path and text tests: rows of text in, text out.
//
// checkRows runs every row through one operation and compares the result, rendered as text,
// with the row's expected text; a failure names the table and the row index.
#pragma once

#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <zrplatform/strings.h>

struct Row {
  const char* a;
  const char* b;  // second operand; unused by one-operand operations
  const char* out;
};
using Rows = std::vector<Row>;

inline ZrString wide(const char* utf8) { return ZrString(ZrUtf8String(utf8)); }

inline std::string text(const std::string& s) { return s; }
inline std::string text(const ZrUtf8String& s) { return s.str(); }
inline std::string text(const ZrString& s) { return ZrUtf8String(s).str(); }
inline std::string text(bool b) { return b ? "true" : "false"; }
template <class Number, class = std::enable_if_t<std::is_arithmetic<Number>::value>>
std::string text(Number n) {
  return std::to_string(n);
}

template <class Operation>
void checkRows(const char* table, const Rows& rows, Operation operation) {
  for (size_t i = 0; i < rows.size(); ++i)
    EXPECT_EQ(text(operation(rows[i])), rows[i].out) << table << " row " << i << ": " << rows[i].a;
}

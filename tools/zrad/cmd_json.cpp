// zrad json: shows, converts, queries, edits and checks element-tree files.
//
// Input may be JSON text or the binary form, from a file or from standard input ("-"); a
// tree that does not read says why (the system's error, or the line and column of a JSON
// syntax error). Text goes out as the library writes it (see jsontext.h) plus a newline.
#include <cstdlib>
#include <string>

#include <zrad/json.h>

#include "command.h"
#include "jsontext.h"

using namespace zradtool;

namespace {

std::string file = "-", out, where, value, to = "json";
bool pretty = false;

// Reads an operand into `tree`; false after printing why not. `binary` tells the form read.
bool loadTree(const std::string& operand, ZrJson& tree, bool& binary) {
  std::string bytes, cause;
  const std::string what = "cannot read " + operandName(operand, true) + " as a tree";
  if (!readAll(operand, bytes, cause)) return fail(what, cause), false;
  binary = !bytes.empty() && zrutIsBinaryJsonStart(static_cast<unsigned char>(bytes[0]));
  if (binary) {
    ZrMemoryStreamPtr stream = ZrMemoryStream::createNew(bytes.size());
    stream->putBytes(bytes.data(), uint32_t(bytes.size()));
    stream->rewind();
    if (bytes.size() > UINT32_MAX || !tree.readBinaryStream(stream.get()))
      return fail(what, "not a binary element stream that can be decoded"), false;
    return true;
  }
  if (tree.readFromStream(bytes.data(), unsigned(bytes.size()), ZrJson::eJsonText)) return true;
  ZrJsonTextError error;
  if (!zrutLocateJsonError(bytes.data(), bytes.size(), error)) error.reason = "not JSON text";
  const std::string place = "line " + std::to_string(error.line) + ", column " + std::to_string(error.column);
  return fail(what, place + ": " + error.reason), false;
}

// The bytes the library writes for `value` in `format`; empty when it refuses (a tree nested
// too deeply).
std::string written(const ZrJsonPtr& value, ZrJson::fileFormat format) {
  ZrMemoryStreamPtr stream = ZrMemoryStream::createNew();
  if (!ZrJson(value).write2Stream(stream.get(), format)) return std::string();
  return std::string(reinterpret_cast<const char*>(stream->data()), size_t(stream->length()));
}

// Writes `value` to an output operand as JSON text (shown, with a newline) or in binary form.
// A file is replaced only when the whole output is ready.
int put(const ZrJsonPtr& value, const std::string& operand, ZrJson::fileFormat format) {
  std::string bytes = written(value, format), cause;
  if (bytes.empty()) return fail("cannot write " + operandName(operand, false), "the tree is nested too deeply");
  if (format == ZrJson::eJsonText) bytes = showJson(bytes, pretty) + '\n';
  if (!writeAll(operand, bytes, cause)) return fail("cannot write " + operandName(operand, false), cause);
  return kOk;
}

int cat() {
  ZrJson tree;
  bool binary;
  if (!loadTree(file, tree, binary)) return kFailed;
  return put(tree, "-", ZrJson::eJsonText);
}

int convert() {
  ZrJson tree;
  bool binary;
  if (!loadTree(file, tree, binary)) return kFailed;
  return put(tree, out, to == "binary" ? ZrJson::eBinary : ZrJson::eJsonText);
}

int get() {
  ZrJson tree;
  bool binary;
  if (!loadTree(file, tree, binary)) return kFailed;
  ZrJsonPtr found = tree->quickGetProperty(ZrUtf8String(where));
  if (!found) return fail("nothing at " + where);
  return put(found, "-", ZrJson::eJsonText);
}

// VALUE as JSON text when it reads as such, else as a string.
ZrJsonPtr parseValue(const std::string& text) {
  ZrJson parsed;
  if (parsed.readFromStream(text.data(), unsigned(text.size()), ZrJson::eJsonText)) return parsed;
  ZrJsonPtr string = ElementValue::createObject(etString);
  string->set_values(ZrUtf8String(text));
  return string;
}

int set() {
  ZrJson tree;
  bool binary;
  if (!loadTree(file, tree, binary)) return kFailed;
  ZrUtf8String parentPath, name;
  if (!IElementValueBase::RebuildJsonName(ZrUtf8String(where), parentPath, name))
    return fail("PATH names no property", where);
  ZrJsonPtr item = parseValue(value);
  ZrJsonPtr parent = tree->CheckKey(parentPath, true);
  const int kind = parent ? parent->getType() & 0xFF : 0;
  bool stored = false;
  if (kind == etObject) {
    stored = !parent->set_property(name, item).isNull();
  } else if (kind == etArray && IElementValueBase::isNumber(name)) {
    const long index = std::strtol(name.c_str(), nullptr, 10);
    stored = index == parent->array_count() ? parent->array_append(item)
                                            : parent->setArrayItem(static_cast<int>(index), item);
  }
  if (!stored) return fail("cannot store a value at " + where, "no object or array item there");
  return put(tree, file, binary ? ZrJson::eBinary : ZrJson::eJsonText);
}

int check() {
  ZrJson tree;
  bool binary;
  return loadTree(file, tree, binary) ? kOk : kFailed;
}

CLI::App* addSub(CLI::App* json, const char* name, const char* help, int (*run)()) {
  CLI::App* sub = json->add_subcommand(name, help);
  onRun(sub, run);
  return sub;
}

void addFile(CLI::App* sub) { sub->add_option("FILE", file, "the tree; \"-\" or none: standard input"); }

void add(CLI::App& zrad) {
  CLI::App* json = zrad.add_subcommand("json", "element-tree files: show, convert, get, set, check");
  json->footer(
      "FILE may be JSON text or the binary form (first byte 0xE0). The text written follows the\n"
      "library's rules: names of an object in byte order, doubles with six decimals\n"
      "(2.5 => 2.500000), a null value written as \"\" inside objects and as [] elsewhere,\n"
      "no spaces; a zero byte inside a string is shown as \\u0000.");
  json->require_subcommand(1);
  CLI::App* sub = addSub(json, "cat", "print the JSON text of a text or binary file", cat);
  addFile(sub);
  sub->add_flag("--pretty", pretty, "indent the text (names in the same order)");

  sub = addSub(json, "convert", "write IN to OUT as JSON text (ending in a newline) or in binary form", convert);
  sub->add_option("IN", file, "the tree; \"-\": standard input")->required();
  sub->add_option("OUT", out, "the file to write; \"-\": standard output")->required();
  sub->add_option("--to", to, "json (the default) or binary")->check(CLI::IsMember({"json", "binary"}));
  sub->add_flag("--pretty", pretty, "indent JSON text");

  sub = addSub(json, "get", "print the JSON text of the value at PATH (segments split by /)", get);
  sub->add_option("FILE", file, "the tree; \"-\": standard input")->required();
  sub->add_option("PATH", where, "a/b/0: name a, name b, item 0")->required();
  sub->add_flag("--pretty", pretty, "indent the text");

  sub = addSub(json, "set", "store VALUE at PATH, creating objects on the way; FILE keeps its form", set);
  sub->footer("VALUE is JSON text when it reads as such (7, true, [1], {\"a\":1}), else a string.");
  sub->add_option("FILE", file, "the tree to change; \"-\": standard input to standard output")->required();
  sub->add_option("PATH", where, "a/b/0: name a, name b, item 0")->required();
  sub->add_option("VALUE", value, "the value")->required();

  sub = addSub(json, "check", "exit status 0 when FILE reads as a tree, 1 (and why) when not", check);
  addFile(sub);
}

const Registration kRegistration("json", add);

}  // namespace

// zrad json: shows, converts, queries, edits and checks element-tree files.
//
// Files may be JSON text or the binary form (first byte 0xE0); every subcommand reads both.
// `set` writes the file back in the form it had.
#include <cstdio>
#include <cstdlib>
#include <string>

#include <zrad/json.h>

#include "command.h"

using namespace zradtool;

namespace {

const char kName[] = "json";

int run(const Args& args);

const Family kFamily{kName, "element-tree files: show, convert, get, set, check",
                     "usage: zrad json cat FILE\n"
                     "       zrad json convert IN OUT --to json|binary\n"
                     "       zrad json get FILE PATH\n"
                     "       zrad json set FILE PATH VALUE\n"
                     "       zrad json check FILE\n"
                     "  cat      prints the JSON text of a text or binary file\n"
                     "  convert  writes IN to OUT as JSON text or in the binary form\n"
                     "  get      prints the JSON text of the value at PATH (segments split by /)\n"
                     "  set      stores VALUE at PATH, creating containers on the way; VALUE is\n"
                     "           JSON text when it parses as such, else a string\n"
                     "  check    exit status 0 when FILE reads as a tree, 1 when not\n",
                     run};

bool isBinaryFile(const std::string& path) {
  FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return false;
  int first = std::fgetc(file);
  std::fclose(file);
  return first == 0xE0;
}

bool load(const std::string& path, ZrJson& tree) { return tree.load(ZrUtf8String(path)); }

int loadFailure(const std::string& path) { return fail(kName, "cannot read " + path + " as a tree"); }

int print(const ZrJsonPtr& value) {
  std::string text = value->writeJson().str();
  if (text.empty()) return fail(kName, "the tree is nested too deeply to print");
  std::printf("%s\n", text.c_str());
  return kOk;
}

int cat(const std::string& path) {
  ZrJson tree;
  if (!load(path, tree)) return loadFailure(path);
  return print(tree);
}

int convert(const std::string& in, const std::string& out, const std::string& to) {
  ZrJson::fileFormat format;
  if (to == "json") format = ZrJson::eJsonText;
  else if (to == "binary") format = ZrJson::eBinary;
  else return usageError(kFamily, "--to takes json or binary, not " + to);
  ZrJson tree;
  if (!load(in, tree)) return loadFailure(in);
  if (!tree.write(out, format)) return fail(kName, "cannot write " + out);
  return kOk;
}

int get(const std::string& path, const std::string& where) {
  ZrJson tree;
  if (!load(path, tree)) return loadFailure(path);
  ZrJsonPtr value = tree->quickGetProperty(ZrUtf8String(where));
  if (!value) return fail(kName, "nothing at " + where);
  return print(value);
}

// The parent path and the last segment of `where`.
void splitLast(const std::string& where, std::string& parent, std::string& name) {
  size_t end = where.find_last_not_of("/\\");
  std::string trimmed = end == std::string::npos ? std::string() : where.substr(0, end + 1);
  size_t cut = trimmed.find_last_of("/\\");
  parent = cut == std::string::npos ? std::string() : trimmed.substr(0, cut);
  name = cut == std::string::npos ? trimmed : trimmed.substr(cut + 1);
}

int set(const std::string& path, const std::string& where, const std::string& text) {
  ZrJson tree;
  if (!load(path, tree)) return loadFailure(path);
  std::string parentPath, name;
  splitLast(where, parentPath, name);
  if (name.empty()) return fail(kName, "PATH names no property");
  ZrJsonPtr value = ZrJson::readjson(ZrUtf8String(text));
  if (!value) {
    value = ElementValue::createObject(etString);
    value->set_values(ZrUtf8String(text));
  }
  ZrJsonPtr parent = parentPath.empty() ? ZrJsonPtr(tree) : tree->quickSetProperty(ZrUtf8String(parentPath));
  bool stored = false;
  if (parent && (parent->getType() & 0xFF) == etObject) {
    stored = !parent->set_property(ZrUtf8String(name), value).isNull();
  } else if (parent && (parent->getType() & 0xFF) == etArray && IElementValueBase::isNumber(ZrUtf8String(name))) {
    long index = std::strtol(name.c_str(), nullptr, 10);
    stored = index == parent->array_count() ? parent->array_append(value)
                                            : parent->setArrayItem(static_cast<int>(index), value);
  }
  if (!stored) return fail(kName, "cannot store a value at " + where);
  if (!tree.write(path, isBinaryFile(path) ? ZrJson::eBinary : ZrJson::eJsonText))
    return fail(kName, "cannot write " + path);
  return kOk;
}

int check(const std::string& path) {
  ZrJson tree;
  return load(path, tree) ? kOk : fail(kName, path + " does not read as a tree");
}

int run(const Args& args) {
  if (wantsHelp(args)) {
    std::fputs(kFamily.usage, stdout);
    return kOk;
  }
  if (args.empty()) return usageError(kFamily, "expected a subcommand");
  const std::string& sub = args[0];
  const size_t n = args.size();
  if (sub == "cat" && n == 2) return cat(args[1]);
  if (sub == "check" && n == 2) return check(args[1]);
  if (sub == "get" && n == 3) return get(args[1], args[2]);
  if (sub == "set" && n == 4) return set(args[1], args[2], args[3]);
  if (sub == "convert" && n == 5 && args[3] == "--to") return convert(args[1], args[2], args[4]);
  return usageError(kFamily, "unknown subcommand or wrong operands: " + sub);
}

const FamilyRegistration kRegistration(kFamily);

}  // namespace

// zrad xml: prints the element tree of an XML file, or one element's text or attribute.
//
// Both subcommands read through the library's XML filer, so `get` finds children exactly as the
// filer does (first match by name, ASCII case ignored).
#include <cstdio>
#include <string>

#include <zrad/xml.h>

#include "command.h"

using namespace zradtool;

namespace {

const char kName[] = "xml";

int run(const Args& args);

const Family kFamily{kName, "XML files: element tree, one text or attribute",
                     "usage: zrad xml tree FILE\n"
                     "       zrad xml get FILE PATH [--attr NAME]\n"
                     "  tree  prints every element, one a line indented by depth:\n"
                     "          name attr=\"value\" ... : text\n"
                     "  get   walks PATH (child names split by /, from the root element; \"\"\n"
                     "        names the root) and prints the element's text, or with --attr the\n"
                     "        attribute's value\n",
                     run};

using Node = ZrSmartPtr<ZrsiPwUtXmlNode>;

// `text` on one line: backslash, quote and line breaks escaped.
std::string oneLine(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == '\n') out += "\\n";
    else if (c == '\r') out += "\\r";
    else if (c == '\t') out += "\\t";
    else if (c == '\\' || c == '"') out += std::string("\\") + c;
    else out += c;
  }
  return out;
}

// The filer's root for `path`, or null after printing why the file does not load.
Node loadRoot(const ZrSmartPtr<ZrsiPwUtXmlFiler>& filer, const std::string& path, int& status) {
  status = kOk;
  if (filer->load(ZrUtf8String(path))) {
    if (Node root = filer->rootNode()) return root;
    status = fail(kName, path + ": no element");
    return nullptr;
  }
  int line = 0;
  std::string why = zrutXmlLoadError(filer.get(), line).str();
  if (line > 0) why += " at line " + std::to_string(line);
  status = fail(kName, "cannot read " + path + ": " + why);
  return nullptr;
}

// Depth is bounded by the parser's nesting limit.
void printTree(const Node& node, int depth) {
  std::string line(size_t(depth) * 2, ' ');
  line += node->name().str();
  ZrUtf8String value;
  for (const ZrUtf8String& name : zrutXmlAttributeNames(node.get())) {
    node->getAttribute(name, value);
    line += " " + name.str() + "=\"" + oneLine(value.str()) + "\"";
  }
  std::string text = node->text().str();
  if (!text.empty()) line += " : " + oneLine(text);
  std::printf("%s\n", line.c_str());
  for (unsigned i = 0, n = node->childCount(); i < n; ++i) printTree(node->child(i), depth + 1);
}

int tree(const std::string& path) {
  auto filer = createPwutXmlFiler();
  int status;
  Node root = loadRoot(filer, path, status);
  if (root) printTree(root, 0);
  return status;
}

int get(const std::string& path, const std::string& where, const std::string* attribute) {
  auto filer = createPwutXmlFiler();
  int status;
  Node node = loadRoot(filer, path, status);
  for (size_t start = 0; node && start < where.size();) {
    size_t end = where.find('/', start);
    if (end == std::string::npos) end = where.size();
    if (end > start) node = node->child(ZrUtf8String(where.substr(start, end - start)));
    start = end + 1;
  }
  if (status != kOk) return status;
  if (!node) return fail(kName, path + ": no element at " + where);
  if (!attribute) {
    std::printf("%s\n", node->text().c_str());
    return kOk;
  }
  ZrUtf8String value;
  if (!node->getAttribute(ZrUtf8String(*attribute), value))
    return fail(kName, path + ": no attribute " + *attribute + " at " + where);
  std::printf("%s\n", value.c_str());
  return kOk;
}

int run(const Args& args) {
  if (wantsHelp(args)) {
    std::fputs(kFamily.usage, stdout);
    return kOk;
  }
  if (args.empty()) return usageError(kFamily, "expected a subcommand");
  const std::string& sub = args[0];
  const size_t n = args.size();
  if (sub == "tree" && n == 2) return tree(args[1]);
  if (sub == "get" && n == 3) return get(args[1], args[2], nullptr);
  if (sub == "get" && n == 5 && args[3] == "--attr") return get(args[1], args[2], &args[4]);
  return usageError(kFamily, "unknown subcommand or wrong operands: " + sub);
}

const FamilyRegistration kRegistration(kFamily);

}  // namespace

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

std::string file, where, attribute;
CLI::Option* attributeOption = nullptr;

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

// The filer's root for `file`, or null after printing why the file does not load.
Node loadRoot(const ZrSmartPtr<ZrsiPwUtXmlFiler>& filer) {
  if (filer->load(ZrUtf8String(file))) {
    if (Node root = filer->rootNode()) return root;
    fail("cannot read " + file, "no element");
    return nullptr;
  }
  int line = 0;
  std::string why = zrutXmlLoadError(filer.get(), line).str();
  if (line > 0) why += " at line " + std::to_string(line);
  fail("cannot read " + file, why);
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

int tree() {
  auto filer = createPwutXmlFiler();
  Node root = loadRoot(filer);
  if (!root) return kFailed;
  printTree(root, 0);
  return kOk;
}

int get() {
  auto filer = createPwutXmlFiler();
  Node node = loadRoot(filer);
  if (!node) return kFailed;
  for (size_t start = 0; node && start < where.size();) {
    size_t end = where.find('/', start);
    if (end == std::string::npos) end = where.size();
    if (end > start) node = node->child(ZrUtf8String(where.substr(start, end - start)));
    start = end + 1;
  }
  if (!node) return fail(file + ": no element at " + where);
  if (!*attributeOption) {
    std::printf("%s\n", node->text().c_str());
    return kOk;
  }
  ZrUtf8String value;
  if (!node->getAttribute(ZrUtf8String(attribute), value))
    return fail(file + ": no attribute " + attribute + " at " + where);
  std::printf("%s\n", value.c_str());
  return kOk;
}

void add(CLI::App& zrad) {
  CLI::App* xml = zrad.add_subcommand("xml", "XML files: element tree, one text or attribute");
  xml->require_subcommand(1);

  CLI::App* treeCmd = xml->add_subcommand("tree", "print every element, one a line indented by depth");
  treeCmd->footer("Each line: name attr=\"value\" ... : text (quotes, backslashes and line breaks escaped).");
  treeCmd->add_option("FILE", file, "the XML file")->required();
  onRun(treeCmd, tree);

  CLI::App* getCmd = xml->add_subcommand("get", "print one element's text or attribute");
  getCmd->footer(
      "Walks PATH from the root element, child names split by \"/\" and matched as the filer\n"
      "does (the first element of that name, ASCII case ignored); \"\" names the root.\n"
      "Exit status 1 when the file does not read or nothing is at PATH.");
  getCmd->add_option("FILE", file, "the XML file")->required();
  getCmd->add_option("PATH", where, "child names split by /")->required();
  attributeOption = getCmd->add_option("--attr", attribute, "print this attribute's value instead of the text");
  onRun(getCmd, get);
}

const Registration kRegistration("xml", add);

}  // namespace

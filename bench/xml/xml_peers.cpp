// tinyxml2 and pugixml doing the XML benchmark's walk directly on their own documents.
#include "xml_peers.h"

#include <pugixml.hpp>
#include <tinyxml2.h>

#include <cstring>

namespace peer {

const char* const kAttributeNames[] = {"id", "name", "kind", "x", "y", "missing"};
const size_t kAttributeNameCount = sizeof kAttributeNames / sizeof *kAttributeNames;

namespace {

size_t walk(const tinyxml2::XMLElement* element) {
  size_t sum = 1 + std::strlen(element->Name());
  const tinyxml2::XMLNode* first = element->FirstChild();
  if (const tinyxml2::XMLText* text = first ? first->ToText() : nullptr)
    sum += std::strlen(text->Value());
  for (const char* name : kAttributeNames)
    if (const char* value = element->Attribute(name)) sum += std::strlen(value);
  for (const tinyxml2::XMLElement* c = element->FirstChildElement(); c; c = c->NextSiblingElement())
    sum += walk(c);
  return sum;
}

size_t walk(const pugi::xml_node& element) {
  size_t sum = 1 + std::strlen(element.name());
  pugi::xml_node first = element.first_child();
  if (first.type() == pugi::node_pcdata || first.type() == pugi::node_cdata)
    sum += std::strlen(first.value());
  for (const char* name : kAttributeNames)
    if (pugi::xml_attribute a = element.attribute(name)) sum += std::strlen(a.value());
  for (pugi::xml_node c = element.first_child(); c; c = c.next_sibling())
    if (c.type() == pugi::node_element) sum += walk(c);
  return sum;
}

}  // namespace

size_t tinyxml2Walk(const char* path) {
  tinyxml2::XMLDocument document;
  if (document.LoadFile(path) != tinyxml2::XML_SUCCESS) return 0;
  const tinyxml2::XMLElement* root = document.FirstChildElement();
  return root ? walk(root) : 0;
}

size_t pugixmlWalk(const char* path) {
  pugi::xml_document document;
  if (!document.load_file(path)) return 0;
  pugi::xml_node root = document.document_element();
  return root ? walk(root) : 0;
}

}  // namespace peer

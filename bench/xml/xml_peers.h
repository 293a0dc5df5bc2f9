// The peer side of the XML benchmark: the same load and walk with tinyxml2 alone and pugixml.
#pragma once

#include <cstddef>

namespace peer {

// The attribute names every walk asks each element for.
extern const char* const kAttributeNames[];
extern const size_t kAttributeNameCount;

// Loads `path` and visits every element: its name, its first child's text when that is text,
// and each of kAttributeNames. Returns the number of elements plus the bytes of every name,
// text and attribute value read, so both sides can be checked to do the same work; 0 when the
// file does not load.
size_t tinyxml2Walk(const char* path);
size_t pugixmlWalk(const char* path);

}  // namespace peer

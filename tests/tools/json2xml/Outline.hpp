// The outline of a document: what it says, on one line, whether it is in JSON or in XML.
//
// A map is `{key=value, ...}` and an array `[value, ...]`; a string stands in `<` and `>`, and
// other values as they are in JSON.
#pragma once

#include <string>

namespace json2xml::test {

/// By libxml2; checks namespaces and that no element or attribute is there that should not be.
std::string outlineOfXml(const std::string& xml);

/// By RapidJSON, for numbers that a `double` can hold.
std::string outlineOfJson(const std::string& json);

} // namespace json2xml::test

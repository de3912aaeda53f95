// What JSON says, in the form of outlineOfXml().
#pragma once

#include "support/XmlOutline.hpp"

#include <string>

namespace json2xml::test {

using tarn::tests::outlineOfXml;

/// The outline of what json2xml is to make of @p json, by RapidJSON, with the characters in it that
/// XML does not allow. Empty if RapidJSON refuses it, which it does with some JSON too: numbers
/// that a `double` cannot hold, and NUL.
std::string outlineOfJson(const std::string& json);

} // namespace json2xml::test

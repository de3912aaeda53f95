// What JSON says, in the form of outlineOfXml().
#pragma once

#include "support/XmlOutline.hpp"

#include <string>

namespace json2xml::test {

using tarn::tests::outlineOfXml;

/// The outline of what json2xml is to make of @p json, by RapidJSON. It may not hold characters
/// that XML does not allow.
std::string outlineOfJson(const std::string& json);

} // namespace json2xml::test

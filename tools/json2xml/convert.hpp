// The conversion from JSON to XML.
#pragma once

#include "tools/json2xml/JsonInput.hpp"
#include "tools/json2xml/XmlHandler.hpp"

#include <iosfwd>

namespace json2xml {

/// Reads the whole of @p input and writes it as XML.
///
/// Memory grows with the longest string or number and with the depth, not with the input. Throws
/// what JsonInput::fail throws if the input is not JSON or exceeds its limits, and what reading
/// @p input and writing @p output throw.
void convert(JsonInput& input, std::ostream& output, const Format& format = {});

} // namespace json2xml

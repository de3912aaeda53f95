// The conversion from JSON to XML.
#pragma once

#include "tools/json2xml/JsonInput.hpp"

#include <cstddef>
#include <iosfwd>

namespace json2xml {

/// Reads the whole of @p input and writes it as XML.
///
/// Memory grows with the longest string or number and with the depth, not with the input. Throws
/// what JsonInput::fail throws if the input is not JSON, and what @p input and @p output throw.
void convert(JsonInput& input, std::ostream& output, std::size_t maximumDepth);

} // namespace json2xml

// The conversion from XML to JSON.
#pragma once

#include "tools/common/program.hpp"
#include "tools/xml2json/JsonHandler.hpp"
#include "tools/xml2json/limits.hpp"

#include <iosfwd>

namespace xml2json {

/// Reads the whole of @p file and writes it as JSON.
///
/// Memory grows with the longest start tag, comment, processing instruction, CDATA section or
/// number, with the depth, and with the keys of the objects that are open unless repeated keys are
/// kept; not with other strings or the input. Throws what XmlParser::fail throws if the input is
/// not the XML representation of JSON or exceeds its limits, and what reading and writing throw.
void convert(tarn::tools::InputFile file, std::ostream& output, const Limits& limits,
             const Format& format);

} // namespace xml2json

// The conversions of the programs, from text to text.
#pragma once

#include "tools/common/inputs.hpp"
#include "tools/json2xml/convert.hpp"
#include "tools/xml2json/convert.hpp"

#include <sstream>
#include <string>

namespace tarn::tools::test {

/// What json2xml makes of @p file. Throws what it reports.
inline std::string toXml(InputFile file, const json2xml::Format& format)
{
    std::ostringstream xml;
    json2xml::JsonInput input(std::move(file), json2xml::Limits(), format.hasEscapes);
    json2xml::convert(input, xml, format);
    return xml.str();
}

/// What xml2json makes of @p file. Throws what it reports.
inline std::string toJson(InputFile file, const xml2json::Format& format)
{
    std::ostringstream json;
    xml2json::convert(std::move(file), json, xml2json::Limits(), format);
    return json.str();
}

} // namespace tarn::tools::test

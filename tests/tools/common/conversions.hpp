// The conversions of the programs, from text to text.
#pragma once

#include "tools/json2xml/convert.hpp"
#include "tools/xml2json/convert.hpp"

#include <sstream>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace tarn::tools::test {

/// A file that is only in memory.
inline InputFile inputOf(std::string_view text)
{
    FileDescriptor file(::memfd_create("input", MFD_CLOEXEC));
    while (!text.empty()) {
        const ssize_t count = ::write(file.get(), text.data(), text.size());
        if (count < 0) {
            throwSystemError("memfd");
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    ::lseek(file.get(), 0, SEEK_SET);
    return {std::move(file), "input", [](std::uint64_t) {}};
}

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

// Takes any bytes as JSON. What json2xml accepts must have the same value when it comes back from
// xml2json.
#include "fuzz/target.hpp"
#include "support/difference.hpp"
#include "tests/tools/common/conversions.hpp"
#include "tests/tools/common/json_value.hpp"

#include <stdexcept>

namespace tarn::fuzz {

namespace {

using namespace tools::test;

/// The XML, or nothing if @p json is refused.
std::string convert(std::string_view json, const json2xml::Format& format)
{
    try {
        return toXml(inputOf(json), format);
    } catch (const std::runtime_error&) {
        return "";
    }
}

} // namespace

void check(std::string_view json)
{
    constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
    if (json.starts_with(BYTE_ORDER_MARK)) {
        json.remove_prefix(BYTE_ORDER_MARK.size());
    }
    bool isAccepted = false;
    for (const json2xml::Format there :
         {json2xml::Format{.hasEscapes = true},
          {.hasEscapes = true, .isCompact = true},
          {.hasEscapes = true, .isCompact = true, .hasLines = true}}) {
        const std::string xml = convert(json, there);
        require(!isAccepted || !xml.empty(), "a value is refused in another form");
        isAccepted = !xml.empty();
        if (isAccepted) {
            const std::string back =
                toJson(inputOf(xml), {.hasLines = there.hasLines, .keepsRepeatedKeys = true});
            requireNoFault(tests::difference(valueOfJson(back), valueOfJson(json)));
        }
    }
}

} // namespace tarn::fuzz

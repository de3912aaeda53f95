// Takes any bytes as JSON. What json2xml accepts must have the same value when it comes back from
// xml2json.
#include "fuzz/require.hpp"
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

void check(std::string_view json)
{
    constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
    if (json.starts_with(BYTE_ORDER_MARK)) {
        json.remove_prefix(BYTE_ORDER_MARK.size());
    }
    const std::string value = convert(json, {.hasEscapes = true});
    for (const json2xml::Format there :
         {json2xml::Format{.hasEscapes = true}, {.hasEscapes = true, .isCompact = true}}) {
        if (!value.empty()) {
            const std::string back =
                toJson(inputOf(convert(json, there)), {.keepsRepeatedKeys = true});
            requireNoFault(tests::difference(valueOfJson(back), valueOfJson(json)));
        }
    }
    const std::string lines =
        convert(json, {.hasEscapes = true, .isCompact = true, .hasLines = true});
    require(value.empty() || !lines.empty(), "a value is refused as a line");
    if (!lines.empty()) {
        const std::string back =
            toJson(inputOf(lines), {.hasLines = true, .keepsRepeatedKeys = true});
        requireNoFault(tests::difference(valueOfJson(back), valueOfJson(json)));
    }
}

} // namespace

} // namespace tarn::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    tarn::fuzz::check({reinterpret_cast<const char*>(bytes), size});
    return 0;
}

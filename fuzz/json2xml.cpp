// Takes any bytes as the input of json2xml. JSON must become XML that says the same, and the result
// must not depend on the blocks that the input comes in.
#include "fuzz/in_blocks.hpp"
#include "fuzz/target.hpp"
#include "support/difference.hpp"
#include "tests/tools/json2xml/json_outline.hpp"
#include "tools/json2xml/convert.hpp"

#include <sstream>
#include <stdexcept>
#include <string_view>

namespace tarn::fuzz {

namespace {

/// The XML, or the message of the error.
std::string convert(tools::InputFile file)
{
    std::ostringstream xml;
    try {
        json2xml::JsonInput input(std::move(file), json2xml::Limits(), false);
        json2xml::convert(input, xml);
        return xml.str();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

/// @p text with U+FFFD in place of every surrogate and of every character that XML 1.0 does not
/// allow. RapidJSON may let an escaped surrogate through, as three bytes.
std::string replaceForbidden(std::string_view text)
{
    std::string replaced;
    while (!text.empty()) {
        const auto byteAt = [&](std::size_t index) {
            return index < text.size() ? static_cast<unsigned char>(text[index]) : 0u;
        };
        const bool isControl =
            byteAt(0) < 0x20 && byteAt(0) != '\t' && byteAt(0) != '\n' && byteAt(0) != '\r';
        const bool isNoncharacter = byteAt(0) == 0xEF && byteAt(1) == 0xBF && byteAt(2) >= 0xBE;
        const bool isSurrogate = byteAt(0) == 0xED && byteAt(1) >= 0xA0;
        const std::size_t length = isNoncharacter || isSurrogate ? 3 : 1;
        replaced += isControl || length == 3 ? "\xEF\xBF\xBD" : text.substr(0, length);
        text.remove_prefix(length);
    }
    return replaced;
}

} // namespace

void check(std::string_view bytes)
{
    bytes = bytes.substr(0, LONGEST);
    const std::string outcome = convert(inBlocks(bytes, LONGEST));
    const std::string inSmallBlocks = convert(inBlocks(bytes, smallBlockSize(bytes)));
    require(outcome == inSmallBlocks,
            "in one block: " + outcome + "\nin small blocks: " + inSmallBlocks);
    const bool isXml = outcome.starts_with('<');
    const std::string outline = isXml ? json2xml::test::outlineOfXml(outcome) : "";
    require(!isXml || outline.starts_with('<'), outline + outcome);
    const std::string expected = json2xml::test::outlineOfJson(std::string(bytes));
    if (!expected.empty() && outcome.find("nested deeper") == std::string::npos) {
        require(isXml, "JSON is refused: " + outcome);
        requireNoFault(tests::difference(outline, replaceForbidden(expected)));
    }
}

} // namespace tarn::fuzz

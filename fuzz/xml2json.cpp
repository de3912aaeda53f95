// Takes any bytes as the input of xml2json. The result must not depend on the blocks that the input
// comes in. What is accepted must be well-formed XML, and what is written JSON.
#include "fuzz/in_blocks.hpp"
#include "fuzz/target.hpp"
#include "support/xml_outline.hpp"
#include "tests/tools/common/conversions.hpp"
#include "tests/tools/common/json_value.hpp"

#include <stdexcept>

namespace tarn::fuzz {

namespace {

using namespace tools::test;

constexpr xml2json::Format BACK{.keepsRepeatedKeys = true};

/// The JSON, or the message of the error, which does not end in a line feed.
std::string convert(tools::InputFile input)
{
    try {
        return toJson(std::move(input), BACK);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

} // namespace

void check(std::string_view bytes)
{
    bytes = bytes.substr(0, LONGEST);
    const std::string outcome = convert(inBlocks(bytes, LONGEST));
    const std::string inSmallBlocks = convert(inBlocks(bytes, smallBlockSize(bytes)));
    require(outcome.ends_with('\n') == inSmallBlocks.ends_with('\n') &&
                (!outcome.ends_with('\n') || outcome == inSmallBlocks),
            "in one block: " + outcome + "\nin small blocks: " + inSmallBlocks);
    if (!outcome.ends_with('\n')) {
        require(outcome.starts_with("input:"), "no position: " + outcome);
        return;
    }
    const std::string outline = tests::outlineOfXml(std::string(bytes));
    require(outline.starts_with('<'), outline + '\n' + outcome);
    const std::string again = toJson(inputOf(toXml(inputOf(outcome), {.hasEscapes = true})), BACK);
    require(valueOfJson(again) == valueOfJson(outcome), outcome + "becomes " + again);
}

} // namespace tarn::fuzz

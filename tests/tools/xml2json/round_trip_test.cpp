// JSON that goes through json2xml --escape and xml2json: nothing is lost.
#include "support/difference.hpp"
#include "support/files.hpp"
#include "support/random_inputs.hpp"
#include "support/xml_outline.hpp"
#include "tools/common/conversions.hpp"
#include "tools/common/json_value.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace tarn::tools::test;
using namespace tarn::tests;

/// Makes JSON of all that JSON can have: every code unit, as itself and escaped, numbers in each
/// form, repeated keys, any layout.
class RandomJson
{
public:
    explicit RandomJson(Input& input) : input(input) {}

    std::string value(std::size_t depth)
    {
        constexpr const char* LITERALS[] = {"true", "false", "null"};
        switch (input.below(depth == 0 ? 4 : 8)) {
        case 0:
            return input.pick(LITERALS);
        case 1:
            return number();
        case 2:
        case 3:
            return string();
        case 4:
        case 5:
            return list('{', '}', [&] { return string() + space() + ':' + value(depth - 1); });
        default:
            return list('[', ']', [&] { return value(depth - 1); });
        }
    }

    std::string space()
    {
        constexpr const char* SPACES[] = {"", "", "", " ", "\n", "\r\n\t"};
        return input.pick(SPACES);
    }

private:
    std::string number()
    {
        constexpr const char* SIGNS[] = {"", "-"};
        constexpr const char* INTEGERS[] = {"0", "7", "10", "123456789012345678901234567890"};
        constexpr const char* FRACTIONS[] = {"", "", ".0", ".50", ".000000000000000000000000001"};
        constexpr const char* EXPONENTS[] = {"", "", "e0", "E+06", "e-7", "e999", "E-0999"};
        return std::string(input.pick(SIGNS)) + input.pick(INTEGERS) + input.pick(FRACTIONS) +
               input.pick(EXPONENTS);
    }

    std::string string()
    {
        std::string text = "\"";
        for (std::size_t units = input.below(5); units > 0; --units) {
            text += character();
        }
        return text + '"';
    }

    std::string character()
    {
        constexpr const char* CHARACTERS[] = {
            "a",      "k",      "/",      "<",      ">",      "&",          "'",
            "]]>",    "\x7F",   "\u0085", "\u00A0", "\u00E9", "\u2028",     "\uFFFD",
            "\uFFFE", "\uFFFF", " ",      "\\b",    "\\n",    "\U0001F600", "\U0010FFFF",
            "\\\"",   "\\\\",   "\\/",    "\\t",    "\\r",    "\\f",        "\\ud83d\\ude00",
        };
        constexpr const char* FORMATS[] = {"\\u%04x", "\\u%04X"};
        constexpr unsigned UNITS[] = {0,      1,      0x1F,   0x22,   0x41,   0x5C,
                                      0x7F,   0x9F,   0xD800, 0xDBFF, 0xDC00, 0xDFFF,
                                      0xFFFD, 0xFFFE, 0xFFFF, 0xE000};
        if (input.below(2) == 0) {
            return input.pick(CHARACTERS);
        }
        char escape[8];
        // NOLINTNEXTLINE(clang-diagnostic-format-nonliteral)
        std::snprintf(escape, sizeof escape, input.pick(FORMATS), input.pick(UNITS));
        return escape;
    }

    std::string list(char start, char end, const auto& member)
    {
        std::string text = start + space();
        for (std::size_t members = input.below(4); members > 0; --members) {
            text += member() + space() + (members > 1 ? "," : "") + space();
        }
        return text + end;
    }

    Input& input;
};

/// What the two programs make of @p json, one after the other.
std::string thereAndBack(const std::string& json, const json2xml::Format& there,
                         const xml2json::Format& back)
{
    return toJson(inputOf(toXml(inputOf(json), there)), back);
}

TEST(RoundTrip, LosesNothingOfAnyJson)
{
    forRandomInputs(3000, 1000, [](Input input) {
        const json2xml::Format there{.hasEscapes = true, .isCompact = input.below(2) == 0};
        xml2json::Format back{.keepsRepeatedKeys = true};
        if (input.below(2) == 0) {
            back.indentation = static_cast<unsigned>(input.below(4));
        }
        RandomJson random(input);
        const std::string json = random.space() + random.value(6) + random.space();
        EXPECT_EQ(difference(valueOfJson(thereAndBack(json, there, back)), valueOfJson(json)), "")
            << json;
    });
}

TEST(RoundTrip, LosesNothingOfAnyLines)
{
    forRandomInputs(3000, 1000, [](Input input) {
        const json2xml::Format there{
            .hasEscapes = true, .isCompact = input.below(2) == 0, .hasLines = true};
        const xml2json::Format back{.hasLines = true, .keepsRepeatedKeys = true};
        RandomJson random(input);
        std::string json;
        std::string lines;
        for (std::size_t count = input.below(6); count > 0; --count) {
            const std::string value = random.value(2);
            json += random.space() + value + (count > 1 ? "\n" : "") + random.space();
            lines += valueOfJson(value) + '\n';
        }
        EXPECT_EQ(difference(valueOfJson(thereAndBack(json, there, back), true), lines), "")
            << json;
    });
}

/// The outline shows whether the layout is all that differs.
TEST(RoundTrip, CompactXmlSaysTheSame)
{
    forRandomInputs(3000, 1000, [](Input input) {
        const bool hasEscapes = input.below(2) == 0;
        const std::string json = RandomJson(input).value(6);
        const auto xml = [&](bool isCompact) {
            return toXml(inputOf(json), {.hasEscapes = hasEscapes, .isCompact = isCompact});
        };
        const auto outline = [](const std::string& text) {
            return outlineOfXml(text, TextBesideElements::LEFT_OUT);
        };
        const std::string compact = xml(true);
        EXPECT_EQ(compact.find('\n'), compact.size() - 1) << json;
        EXPECT_EQ(difference(outline(compact), outline(xml(false))), "") << json;
    });
}

TEST(RoundTrip, LosesNothingOfRealFiles)
{
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/usr/share/iso-codes/json")) {
        if (entry.path().extension() == ".json") {
            ++files;
            const std::string json = readFile(entry.path());
            EXPECT_EQ(difference(valueOfJson(thereAndBack(json, {.hasEscapes = true}, {})),
                                 valueOfJson(json)),
                      "")
                << entry.path();
        }
    }
    EXPECT_GT(files, 0u);
}

} // namespace

// The XML that json2xml makes of JSON, and its messages about other input.
#include "support/difference.hpp"
#include "tools/common/inputs.hpp"
#include "tools/common/run_program.hpp"
#include "tools/json2xml/convert.hpp"
#include "tools/json2xml/json_outline.hpp"

#include <cerrno>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <tuple>

namespace {

using namespace json2xml::test;
using namespace tarn::tools::test;
using namespace std::string_literals;
using tarn::tests::difference;

/// The number of bytes in a block of the input.
constexpr std::size_t BLOCK_SIZE = 64 * 1024;

#if !IS_SANITIZED
TEST(Conversion, NeedsNoMoreMemoryForAMillionRecords)
{
    constexpr long LIMIT_IN_KILOBYTES = 40'000;
    const Directory directory;
    {
        // A child process inherits the peak memory use of this one. So the JSON is never in memory,
        // and this test comes before those that hold long texts.
        std::ofstream file(directory / "records.json");
        file << "[0";
        for (int record = 0; record < 1'000'000; ++record) {
            file << ",{\"id\":" << record << ",\"name\":\"a name\"}";
        }
        file << ']';
    }
    EXPECT_EQ(run({directory / "records.json"}, "", "/dev/null").error, "");
    rusage children{};
    ::getrusage(RUSAGE_CHILDREN, &children);
    EXPECT_LT(children.ru_maxrss, LIMIT_IN_KILOBYTES);
}
#endif

TEST(Conversion, WritesOneElementForEachValue)
{
    const std::string json = R"({"a": [1, "x<", true, null, [], {}], "": {"b": ""}, "a": false})";
    const Result result = run({}, json);
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.output, R"(<?xml version="1.0" encoding="UTF-8"?>
<map xmlns="http://www.w3.org/2005/xpath-functions">
  <array key="a">
    <number>1</number>
    <string>x&lt;</string>
    <boolean>true</boolean>
    <null/>
    <array/>
    <map/>
  </array>
  <map key="">
    <string key="b"></string>
  </map>
  <boolean key="a">false</boolean>
</map>
)");
}

TEST(Conversion, WritesWhatAParserReadsBack)
{
    // JSON, and the same without anything in which readers differ.
    const std::pair<std::string, std::string> cases[] = {
        {" \t\r\n\"\" ", "\"\""},
        {"\xEF\xBB\xBF[true]", "[true]"},
        {R"({"k":1,"k":2,"k":1})", R"({"k":1,"k":2,"k":1})"},
        {"[0,-0,1.09,9e300,-1E+2,1e-0300]", "[0,-0,1.09,9e300,-1E+2,1e-0300]"},
        // Escapes, and characters of one to four bytes.
        {R"(["\"\\\/\n\u0041\u00e9\uD83D\uDE00"])", "[\"\\\"\\\\/\\nA\xC3\xA9\xF0\x9F\x98\x80\"]"},
        {"\"\x7F\xC3\xA9\xEF\xBF\xBD\xF0\x9F\x98\x80\"",
         "\"\x7F\xC3\xA9\xEF\xBF\xBD\xF0\x9F\x98\x80\""},
        // White space that an XML parser would normalise, in text and in a key.
        {R"({"\r\n\t a\r":"\r\n\t a\r"})", R"({"\r\n\t a\r":"\r\n\t a\r"})"},
        // Characters that XML 1.0 does not allow.
        {R"({"\u0000\b\u001F":"\f\uFFFE\uFFFFz"})",
         "{\"\uFFFD\uFFFD\uFFFD\":\"\uFFFD\uFFFD\uFFFDz\"}"},
        {"[\"\xEF\xBF\xBE\"]", "[\"\uFFFD\"]"},
        // Surrogates without a partner.
        {R"(["\ud800","\udc00\ud83d\ude00","\ud83d\ud83d\ude00","\ud800\n","\\ud800","\ud800\u0041"])",
         "[\"\uFFFD\",\"\uFFFD\U0001F600\",\"\uFFFD\U0001F600\",\"\uFFFD\\n\",\"\\\\ud800\","
         "\"\uFFFDA\"]"},
        {R"("\nD800")", R"("\nD800")"},
    };
    for (const auto& [json, plain] : cases) {
        const Result result = run({}, json);
        EXPECT_EQ(result.error, "") << json;
        EXPECT_EQ(difference(outlineOfXml(result.output), outlineOfJson(plain)), "") << json;
    }
}

TEST(Conversion, TakesEveryCharacterAtEveryPlaceOfAString)
{
    const std::pair<std::string, std::string> characters[] = {{"~", "~"},
                                                              {"<", "&lt;"},
                                                              {"\\\"", "&quot;"},
                                                              {"\\r", "&#13;"},
                                                              {"\x7F", "\x7F"},
                                                              {"\xC2\x80", "\xC2\x80"},
                                                              {"\\u0001", "\uFFFD"},
                                                              {"\uFFFF", "\uFFFD"},
                                                              {"\U00010000", "\U00010000"}};
    const std::size_t lengths[] = {0,  1,   7,   8,   15,  16,  17,  31,
                                   32, 250, 253, 254, 255, 256, 257, 70'000};
    std::string json = "[0";
    std::string xml;
    for (const auto& [written, expected] : characters) {
        for (const std::size_t before : lengths) {
            for (const std::string after : {"", "b", "bbbbbbbbbbbbbbbbbbbb"}) {
                const std::string start(before, 'a');
                json += ",\n\"" + start + written + after + '"';
                xml += "  <string>" + start + expected + after + "</string>\n";
            }
        }
    }
    const Result result = run({}, json + ']');
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(
        difference(result.output.substr(result.output.find("  <string>")), xml + "</array>\n"), "");
}

TEST(Conversion, EscapesWhatXmlCannotHold)
{
    const std::tuple<std::string, std::string, bool> cases[] = {
        {R"( ~\"\/\u00e9\ud7ff\uFFFD\uE000)", " ~&quot;/\u00E9\uD7FF\uFFFD\uE000", false},
        {R"(\u0000\u001F\u007f\u0080\u008a\u009F\u00a0)",
         R"(\u0000\u001F\u007F\u0080\u008A\u009F)"
         "\u00A0",
         true},
        {"\x7F\u0080\uFFFE\uFFFF", R"(\u007F\u0080\uFFFE\uFFFF)", true},
        {R"(\b\t\n\f\r\\a)", R"(\b\t\n\f\r\\a)", true},
        {R"(\ud83d\ude00)", "\U0001F600", false},
        {R"(\udcba\ud945\ud867)", R"(\uDCBA\uD945\uD867)", true},
        {R"(\ud83d\ud83d\ude00\u0000\udc00)", "\\uD83D\U0001F600\\u0000\\uDC00", true},
        {std::string(255, 'a') + '\x7F', std::string(255, 'a') + "\\u007F", true},
        {R"(\ud83d\u005cude00)", R"(\uD83D\\ude00)", true},
        {R"(\udc22\ud80a)", R"(\uDC22\uD80A)", true},
    };
    for (const auto& [text, xml, isEscaped] : cases) {
        const std::string mark = isEscaped ? "escaped=\"true\"" : "";
        const std::string markOfKey = isEscaped ? " escaped-key=\"true\"" : "";
        EXPECT_THAT(run({"--escape"}, "[\"" + text + "\", \"a\"]").output,
                    testing::HasSubstr("<string" + (isEscaped ? ' ' + mark : "") + ">" + xml +
                                       "</string>\n  <string>a</string>"));
        EXPECT_THAT(run({"--escape"}, "{\"" + text + "\":null, \"a\": \"a\"}").output,
                    testing::HasSubstr("<null key=\"" + xml + '"' + markOfKey +
                                       "/>\n  <string key=\"a\">a</string>"));
    }
}

TEST(Conversion, WritesOneLine)
{
    EXPECT_EQ(
        run({"--compact"}, R"({"a\n\r\t\"": [1, "x<\n\r\t", "", true, null, [], {}]})").output,
        R"(<?xml version="1.0" encoding="UTF-8"?>)"
        R"(<map xmlns="http://www.w3.org/2005/xpath-functions">)"
        R"(<array key="a&#10;&#13;&#9;&quot;"><number>1</number><string>x&lt;&#10;&#13;)"
        "\t</string><string></string><boolean>true</boolean><null/><array/><map/></array></map>\n");
}

TEST(Conversion, ReadsLines)
{
    const std::pair<std::string, std::string> cases[] = {
        {"", "[]"},
        {" \n", "[]"},
        {"1\n-2.5e3\n\n{}\r\n[ ]", "[1,-2.5e3,{},[]]"},
        {R"({}[]"a""b"{"k":1}1 true null)", R"([{},[],"a","b",{"k":1},1,true,null])"},
        {"\xEF\xBB\xBF\"\"1", "[\"\",1]"},
        {std::string(BLOCK_SIZE - 3, ' ') + "12345 6", "[12345,6]"},
    };
    for (const auto& [lines, json] : cases) {
        const Result result = run({"--lines"}, lines);
        EXPECT_EQ(result.error, "") << lines;
        EXPECT_EQ(difference(outlineOfXml(result.output), outlineOfJson(json)), "") << lines;
    }
    const std::pair<std::string, std::string> faults[] = {
        {"1\n[1,\n", "3:1: expected a value, found the end of the input"},
        {"{}\n{\"a\":}\n", "2:6: expected a value, found '}'"},
        {"1,2", "1:2: expected white space between two values, found ','"},
        {"\n01", "2:2: expected white space between two values, found '1'"},
        {"12-3", "1:3: expected white space between two values, found '-'"},
        {"1\"a\"", "1:2: expected white space between two values, found '\"'"},
        {"true[]", "1:5: expected white space between two values, found '['"},
        {"{}\n\0"s, "2:1: expected a value, found byte 0x00"},
    };
    for (const auto& [lines, problem] : faults) {
        const Result result = run({"--lines"}, lines);
        EXPECT_EQ(result.status, 1) << lines;
        EXPECT_EQ(result.error, "json2xml: <stdin>:" + problem + '\n') << lines;
    }
    EXPECT_EQ(run({"--lines", "--max-depth", "1"}, "[]").error, "");
}

TEST(Conversion, KeepsTheDigitsOfNumbersThatNoDoubleCanHold)
{
    const std::string manyDigits(100'000, '7');
    for (const std::string& number : {"1e400"s, "-1E-0400"s, manyDigits + "." + manyDigits}) {
        EXPECT_THAT(run({}, number).output, testing::EndsWith(">" + number + "</number>\n"))
            << number.substr(0, 20);
    }
}

TEST(Conversion, ReadsTokensAcrossTheEndOfABlock)
{
    const std::pair<std::string, std::string> cases[] = {
        {R"("\ud83d\ude00\udc00\\")", "\"\U0001F600\uFFFD\\\\\""},
        {"\"\xF0\x9F\x98\x80\xC3\xA9\"", "\"\U0001F600\u00E9\""},
        {"-123.456e+78", "-123.456e+78"},
        {"false", "false"},
    };
    for (const auto& [token, plain] : cases) {
        for (std::size_t before = 0; before <= token.size(); ++before) {
            const Result result = run({}, std::string(BLOCK_SIZE - before, ' ') + token);
            EXPECT_EQ(outlineOfXml(result.output), outlineOfJson(plain))
                << token << " begins " << before << " bytes before the end. " << result.error;
        }
    }
}

TEST(Conversion, ReadsTokensThatComeByteByByte)
{
    std::ostringstream xml;
    json2xml::JsonInput input(inBlocks("\xEF\xBB\xBF[\"\u00E9\\ud83d\\ude00\",-1.5]", 1), {},
                              false);
    errno = EINTR; // left behind by an earlier call
    json2xml::convert(input, xml);
    EXPECT_EQ(outlineOfXml(xml.str()), outlineOfJson("[\"\u00E9\U0001F600\",-1.5]"));
}

TEST(Conversion, FindsFaultsAcrossTheEndOfABlock)
{
    for (std::size_t before = 0; before <= 16; ++before) {
        SCOPED_TRACE(std::to_string(before) + " bytes before the end");
        const std::string blanks(BLOCK_SIZE - before, ' ');
        const std::string column = std::to_string(blanks.size() + 2);
        EXPECT_EQ(run({}, blanks + "\"\\uD83\"").error,
                  "json2xml: <stdin>:1:" + column + ": unknown escape sequence\n");
        EXPECT_EQ(run({}, blanks + "\"\xF0\x9F\x98z\"").error,
                  "json2xml: <stdin>:1:" + column + ": ill-formed UTF-8\n");
    }
}

TEST(Conversion, SaysWhatIsWrongAndWhere)
{
    const std::pair<std::string, std::string> cases[] = {
        {"", "1:1: expected a value, found the end of the input"},
        {"[1,", "1:4: expected a value, found the end of the input"},
        {"{\"a\":{\n\"b\"", "2:4: expected ':', found the end of the input"},
        {"[\"abc", "1:6: expected the end of a string, found the end of the input"},
        {"\"a\\", "1:3: the input ends inside an escape sequence"},
        {"\"a\\u00", "1:3: the input ends inside an escape sequence"},
        {"tru", "1:4: expected true, false or null, found the end of the input"},
        {"\"\u00E9\x1F\"", "1:3: expected an escape sequence, found byte 0x1F"},
        {"1 234", "1:3: expected the end of the input, found '2'"},
        {"1\0"s, "1:2: expected the end of the input, found byte 0x00"},
        {"[1 -2]", "1:4: expected ',' or ']', found '-'"},
        {"{\"a\":1 \"b\"}", "1:8: expected ',' or '}', found '\"'"},
        {"[1,]", "1:4: expected a value, found ']'"},
        {"{\"a\":1,}", "1:8: expected a key, found '}'"},
        {"{1:2}", "1:2: expected a key, found '1'"},
        {"nULL", "1:2: expected true, false or null, found 'U'"},
        {"fa{}", "1:3: expected true, false or null, found '{'"},
        {"NaN", "1:1: expected a value, found 'N'"},
        {"!", "1:1: expected a value, found '!'"},
        {"~", "1:1: expected a value, found '~'"},
        {"\f1", "1:1: expected a value, found byte 0x0C"},
        {"1\v", "1:2: expected the end of the input, found byte 0x0B"},
        {"\x7F", "1:1: expected a value, found byte 0x7F"},
        {"\xEF\xBB", "1:1: expected a value, found byte 0xEF"},
        {"/**/1", "1:1: expected a value, found '/'"},
        {"01", "1:2: expected the end of the input, found '1'"},
        {"+1", "1:1: expected a value, found '+'"},
        {".5", "1:1: expected a value, found '.'"},
        {"-", "1:2: expected a digit of a number, found the end of the input"},
        {"- 1", "1:2: expected a digit of a number, found byte 0x20"},
        {std::string(400, '1') + ".e1", "1:402: expected a digit of a number, found 'e'"},
        {"[1e+]", "1:5: expected a digit of a number, found ']'"},
        {"\"\\x\"", "1:2: unknown escape sequence"},
        {"\"\\uD83D\\u12G4\"", "1:8: unknown escape sequence"},
        {"\"a\n\"", "1:3: expected an escape sequence, found byte 0x0A"},
        // Ill-formed UTF-8: a lone continuation byte, an overlong form, a sequence that is cut off.
        {"\"\u00E9\x80\"", "1:3: ill-formed UTF-8"},
        {"\"\xC0\x80\"", "1:2: ill-formed UTF-8"},
        {"\r\n\t\r\"\u20AC\xE2\x82\"", "2:5: ill-formed UTF-8"},
        {"\xFF\xFE[\0"s, "1:1: expected a value, found byte 0xFF"},
        {"\uFEFF\uFEFF", "1:1: expected a value, found byte 0xEF"},
        // After the first block.
        {std::string(BLOCK_SIZE, '\n') + "\"" + std::string(BLOCK_SIZE, 'a') + "\xFF",
         "65537:65538: ill-formed UTF-8"},
    };
    for (const auto& [json, problem] : cases) {
        const Result result = run({}, json);
        EXPECT_EQ(result.status, 1) << json;
        EXPECT_EQ(result.error, "json2xml: <stdin>:" + problem + '\n') << json;
    }
}

} // namespace

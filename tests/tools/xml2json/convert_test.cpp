// The JSON that xml2json makes of XML, and its messages about other input.
#include "tools/common/conversions.hpp"
#include "tools/common/run_program.hpp"
#include "tools/xml2json/limits.hpp"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <tuple>

namespace {

using namespace tarn::tools::test;
using namespace std::string_literals;

/// The number of bytes in a block of the input.
constexpr std::size_t BLOCK_SIZE = 64 * 1024;

const std::string NAMESPACE = "http://www.w3.org/2005/xpath-functions";

/// @p content in an element whose start tag also declares the namespace, in 100 characters, so that
/// the columns of the messages are easy to read.
std::string element(const std::string& name, const std::string& content)
{
    std::string start = '<' + name + " xmlns=\"" + NAMESPACE + '"';
    start.resize(99, ' ');
    return start + '>' + content + "</" + name + '>';
}

std::string array(const std::string& content)
{
    return element("array", content);
}

std::string map(const std::string& content)
{
    return element("map", content);
}

#if !IS_SANITIZED
TEST(Conversion, NeedsNoMoreMemoryForALongString)
{
    constexpr long LIMIT_IN_KILOBYTES = 20'000;
    const Directory directory;
    {
        // A child process inherits the peak memory use of this one. So the XML is never in memory,
        // and this test comes before those that hold long texts.
        std::ofstream file(directory / "input.xml");
        file << "<array xmlns=\"" << NAMESPACE << "\"><string escaped=\"1\">";
        for (int i = 0; i < 2'000'000; ++i) {
            file << "\\u00e9 text\n\xC3\xA9";
        }
        file << "</string>";
        for (int i = 0; i < 200'000; ++i) {
            file << "<map><string key=\"" << i << "\">" << i << "</string></map>";
        }
        file << "</array>";
    }
    EXPECT_EQ(run({directory / "input.xml"}, "", "/dev/null").error, "");
    rusage children{};
    ::getrusage(RUSAGE_CHILDREN, &children);
    EXPECT_LT(children.ru_maxrss, LIMIT_IN_KILOBYTES);
}

TEST(Conversion, TakesMemoryAndTimeInProportionToAKey)
{
    const Directory directory;
    std::string key;
    key.resize(50'000'000, 'a');
    const std::string xml = map("<null key='" + key + "'/>");
    for (const std::string kilobytes : {"100000", "150000"}) {
        const Result result =
            run({"-o", directory / "file.json"}, xml, "", "ulimit -v " + kilobytes);
        EXPECT_EQ(result.status, 1) << kilobytes;
        EXPECT_EQ(result.error, "xml2json: out of memory\n") << kilobytes;
        EXPECT_THAT(directory.names(), testing::IsEmpty()) << kilobytes;
    }
    // It takes a small part of that, and minutes if the time grows with the square of the size.
    EXPECT_EQ(run({}, xml, "/dev/null", "ulimit -t 5; ulimit -c 0").status, 0);
}
#endif

TEST(Conversion, WritesOneValueForEachElement)
{
    const std::string declaration = R"(<?xml version="1.0" encoding="ISO-8859-1"?>)";
    const std::pair<std::string, std::string> cases[] = {
        {element("null", ""), "null"},
        {element("null", "<!--c--><?p?>"), "null"},
        {element("string", ""), R"("")"},
        {declaration + "\n<!--c-->\n" + element("string", "\xE9") + "<?p?>\n", "\"\u00E9\""},
        {"\xEF\xBB\xBF" + element("string", "a"), R"("a")"},
        {array(""), "[]"},
        {array(" \n<null/> <!--c--> <null><![CDATA[]]></null><?p?>\t"), "[null,null]"},
        {map(" <null key='a'/>\n<map key=''><array key='a'/></map>"), R"({"a":null,"":{"a":[]}})"},
        {"<p:array xmlns:p='" + NAMESPACE + "'><p:null/><n:null xmlns:n='" + NAMESPACE +
             "'/></p:array>",
         "[null,null]"},
        // Attributes of other namespaces; a key that the outermost element has kept.
        {array("<null xml:space='default' o:key='k' xmlns:o='o'/>"), "[null]"},
        {"<map key='k' escaped-key='x' xmlns='" + NAMESPACE + "'/>", "{}"},
        // Booleans, and numbers with and without the form of JSON.
        {array("<boolean> tr<!--c-->ue\n</boolean><boolean>0</boolean><boolean>&#13;1</boolean>"
               "<boolean>fal<?p?>se</boolean>"),
         "[true,false,true,false]"},
        {array("<number>-0</number><number>1E+06</number><number> 1e400 </number>"
               "<number>2<!--c-->7.50</number>"),
         "[-0,1E+06,1e400,27.50]"},
        {array("<number> +005 </number><number>-.50</number><number>23.</number>"
               "<number>+1e6</number><number>-.0000012345678901234567</number>"
               "<number>+1e-6</number><number>-01.5e-7</number><number>-00e1</number>"
               "<number>+1e-999</number><number>+4e-320</number>"
               "<number>+999999.4999999999</number><number>00.1</number>"),
         "[5,-0.5,23,1.0E6,-0.0000012345678901234567,0.000001,-1.5E-7,-0,0,4.0E-320,"
         "999999.4999999999,0.1]"},
    };
    for (const auto& [xml, json] : cases) {
        const Result result = run({}, xml);
        EXPECT_EQ(result.error, "") << xml;
        EXPECT_EQ(result.output, json + '\n') << xml;
    }
}

TEST(Conversion, EscapesStringsAndKeys)
{
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"", "\"\\/&amp;&lt;'&#9;&#10;&#13;", R"(\"\\\/&<'\t\n\r)"},
        {"false", R"(\n\u0041)", R"(\\n\\u0041)"},
        {"0", "\x7F\u0080\u0091\u0084\u009F\u00A0\u00C2\U0001F600",
         "\\u007F\\u0080\\u0091\\u0084\\u009F\u00A0\u00C2\U0001F600"},
        {"true", R"(\\\/\b\f\n\r\t\u09af\uAFaf\ud83d\ude00\ud800\u0000\&quot;)",
         R"(\\\/\b\f\n\r\t\u09af\uAFaf\ud83d\ude00\ud800\u0000\")"},
        {"1", "&quot;/&#9;&#10;&#13;\x7F\u0085\\\\/", R"(\"\/\t\n\r\u007F\u0085\\\/)"},
        {"&#9; true ", R"(\<!--in a string-->u0<?p?>0e9)", R"(\u00e9)"},
    };
    for (const auto& [escaped, text, json] : cases) {
        const auto attribute = [&escaped = escaped](const std::string& name) {
            return escaped.empty() ? "" : ' ' + name + "=\"" + escaped + '"';
        };
        EXPECT_EQ(run({}, array("<string" + attribute("escaped") + ">" + text +
                                "</string><string>\\</string>"))
                      .output,
                  "[\"" + json + "\",\"\\\\\"]\n");
        if (!text.contains('<')) {
            std::string quoted;
            for (const char byte : text) {
                quoted += byte == '"' ? "&quot;" : std::string(1, byte);
            }
            EXPECT_EQ(run({}, map("<string" + attribute("escaped-key") + " key=\"" + quoted +
                                  "\" escaped='1'>\\n</string>"))
                          .output,
                      "{\"" + json + "\":\"\\n\"}\n");
        }
    }
}

TEST(Conversion, RefusesEscapesThatJsonDoesNotHave)
{
    for (const std::string text :
         {"u000/", "u000:", "u000@", "u000G", "u000`", "u000g", "U0041", "'", "v"}) {
        EXPECT_THAT(run({}, array("<string escaped='1'>\\" + text + "</string>")).error,
                    testing::EndsWith("unknown escape sequence\n"))
            << text;
        EXPECT_THAT(
            run({"--keep-repeated-keys"}, map("<null escaped-key='1' key=\"\\" + text + "\"/>"))
                .error,
            testing::EndsWith("a key with an unknown escape sequence\n"))
            << text;
    }
}

TEST(Conversion, EscapesEveryCharacterAtEveryPlaceOfAString)
{
    const std::pair<std::string, std::string> characters[] = {
        {"\"", "\\\""},       {" ", " "},
        {"#", "#"},           {"\u009F", "\\u009F"},
        {"\u00C0", "\u00C0"}, {"~", "~"},
        {"!", "!"},           {".", "."},
        {"0", "0"},           {"&#9;", "\\t"},
        {"/", "\\/"},         {"\\", R"(\\)"},
        {"\x7F", "\\u007F"},  {"\u0080", "\\u0080"},
        {"\u00A0", "\u00A0"}};
    std::string xml;
    std::string json;
    for (const auto& [character, escaped] : characters) {
        for (std::size_t before = 0; before < 50; ++before) {
            for (std::size_t after = 0; before + after < 50; ++after) {
                xml += "<string>" + std::string(before, 'a') + character + std::string(after, 'b') +
                       "</string>";
                json += (json.empty() ? "\"" : ",\"") + std::string(before, 'a') + escaped +
                        std::string(after, 'b') + '"';
            }
        }
    }
    EXPECT_EQ(run({}, array(xml)).output, '[' + json + "]\n");
}

TEST(Conversion, WritesMoreThanItsBufferHolds)
{
    std::string xml;
    std::string json;
    for (int i = 0; i < 100'000; ++i) {
        xml += "<string/>";
        json += ",\"\"";
    }
    for (const char letter : {'a', 'b', 'c'}) {
        const std::string key(letter == 'b' ? 200'000 : 100'000, letter);
        xml += "<map><null key='" + key + "'/></map>";
        json += ",{\"" + key + "\":null}";
    }
    const std::string text = array(xml);
    std::uint64_t bytesRead = 0;
    tarn::tools::InputFile input = inputOf(text);
    input.onBlock = [&](std::uint64_t bytes) { bytesRead = bytes; };
    EXPECT_TRUE(toJson(std::move(input), {}) == '[' + json.substr(1) + "]\n");
    EXPECT_EQ(bytesRead, text.size());
    const std::string full(128 * 1024 - 1, 'a'); // with the quotation mark before it
    EXPECT_TRUE(toJson(inputOf(element("string", full)), {}) == '"' + full + "\"\n");
}

TEST(Conversion, ReadsByteByByteUpToTheFirstEnd)
{
    const std::string xml = array("<!----><null/>");
    std::size_t reads = 0;
    tarn::tools::InputFile input = inBlocks(xml, 1);
    input.onBlock = [&](std::uint64_t) { ++reads; };
    EXPECT_EQ(toJson(std::move(input), {}), "[null]\n");
    EXPECT_EQ(reads, xml.size() + 1) << "a terminal has an end more than once";
}

TEST(Conversion, ComparesKeysWithoutTheirEscapes)
{
    const auto members = [](const std::string& first, const std::string& second) {
        return map("<null " + first + "/><null " + second + "/>");
    };
    const std::pair<std::string, std::string> repeated[] = {
        {"key='a'", "key='a'"},
        {"key='a/'", "escaped-key='1' key='\\u0061\\/'"},
        {"key='&#10;'", "escaped-key='1' key='\\n'"},
        {"key='\u007F\u0080\u07FF\u0800\uFFFD\U00010000\U0010FFFF'",
         "escaped-key='1' key='\\u007f\\u0080\\u07FF\\u0800\\uFffd\\uD800\\uDC00\\udbff\\udfff'"},
        {"escaped-key='1' key='\\udEAD'", "escaped-key='1' key='\\uDEAd'"},
    };
    for (const auto& [first, second] : repeated) {
        const Result result = run({}, members(first, second));
        EXPECT_THAT(result.error, testing::HasSubstr("the key is repeated")) << first << second;
        EXPECT_EQ(run({"--keep-repeated-keys"}, members(first, second)).error, "");
    }
    const std::pair<std::string, std::string> different[] = {
        {"key='a'", "escaped-key='1' key='\\u0000a'"},
        {"key='\\n'", "escaped-key='1' key='\\n'"},
        {"escaped-key='1' key='a\\n'", "escaped-key='1' key='b\\n'"},
        {"escaped-key='1' key='\\ud83d'", "escaped-key='1' key='\\ude00'"},
        {"escaped-key='1' key='\\u00001234567a'", "escaped-key='1' key='\\u00001234567b'"},
    };
    for (const auto& [first, second] : different) {
        EXPECT_EQ(run({}, members(first, second)).error, "") << first << second;
    }
    EXPECT_EQ(run({}, map("<map key='a'><null key='a'/></map><null key='b'/>")).error, "");
    EXPECT_EQ(run({"--keep-repeated-keys"}, members("key='a'", "key='a'")).output,
              "{\"a\":null,\"a\":null}\n");
}

TEST(Conversion, FindsARepeatedKeyAmongAnyNumber)
{
    const auto member = [](const std::string& key) { return "<null key='" + key + "'/>\n"; };
    // Keys of which many are the beginning of others.
    const auto key = [](std::size_t number) {
        return (number % 2 == 0 ? "a" : "the same ") + std::string(number / 2, 'x');
    };
    for (const std::size_t count : {1, 2, 3, 15, 16, 17, 18, 40}) {
        std::string members;
        for (std::size_t number = count; number-- > 0;) {
            members += member(key(number));
        }
        EXPECT_EQ(run({}, map(members + map(members))).error,
                  "xml2json: <stdin>:" + std::to_string(count + 1) +
                      ":1: map in a map has no key\n");
        for (const std::size_t repeated : {std::size_t{0}, count / 2, count - 1}) {
            EXPECT_THAT(
                run({}, map(members + member("other") + member(key(repeated)))).error,
                testing::HasSubstr(':' + std::to_string(count + 2) + ":1: the key is repeated"))
                << count << ' ' << repeated;
        }
    }
    std::string members;
    for (std::size_t number = 0; number < 40; ++number) {
        members += member(key(number));
        const std::string siblings = "<map>" + members + "</map>";
        EXPECT_EQ(run({}, array(siblings + siblings)).error, "") << number;
    }
}

TEST(Conversion, LaysTheJsonOut)
{
    const std::string xml =
        array("<number>1</number><map><array key='a'><null/></array></map><string>a\nb</string>");
    EXPECT_EQ(run({"--indent", "2"}, xml).output,
              "[\n  1,\n  {\n    \"a\": [\n      null\n    ]\n  },\n  \"a\\nb\"\n]\n");
    EXPECT_EQ(run({"--indent", "0"}, array("<null/>")).output, "[\nnull\n]\n");
    EXPECT_EQ(run({"--indent", "100"}, array("<null/>")).output,
              "[\n" + std::string(100, ' ') + "null\n]\n");
    EXPECT_EQ(run({"--lines"}, xml).output, "1\n{\"a\":[null]}\n\"a\\nb\"\n");
    EXPECT_EQ(run({"--lines"}, array("")).output, "");
    EXPECT_THAT(run({"--lines"}, map("")).error, testing::HasSubstr("1:1: expected array"));
    for (const Arguments& arguments :
         {Arguments{"--indent", "-1"}, {"--indent", "101"}, {"--indent", "0", "--lines"}}) {
        EXPECT_EQ(run(arguments, xml).status, 2);
    }
}

TEST(Conversion, LimitsTheDepth)
{
    const auto nested = [](std::size_t depth) {
        std::string xml;
        for (std::size_t i = 1; i < depth; ++i) {
            xml = "<array>" + xml + "</array>";
        }
        return array(xml);
    };
    EXPECT_EQ(run({}, nested(1000)).output, std::string(1000, '[') + std::string(1000, ']') + '\n');
    EXPECT_THAT(run({}, nested(1001)).error, testing::HasSubstr("nested deeper than 1000 levels"));
    EXPECT_EQ(run({"--max-depth", "1"}, array("<null/>")).error, "");
    EXPECT_EQ(run({"--max-depth", "0"}, element("null", "")).error, "");
    EXPECT_EQ(run({"--max-depth", "0"}, map("")).status, 1);
    EXPECT_EQ(run({"--max-depth", "1", "--lines"}, array("<array/>")).error, "");
    EXPECT_EQ(run({"--max-depth", "1", "--lines"}, array("<array><map/></array>")).status, 1);
}

TEST(Conversion, SaysWhatIsWrongAndWhere)
{
    const std::string unknown = "expected array, boolean, map, null, number or string, found ";
    const std::pair<std::string, std::string> cases[] = {
        {"", "1:1: expected an element"},
        {"text", "1:1: expected an element"},
        {array("").substr(0, 100), "1:101: the input ends inside an element"},
        {array("<null>").substr(0, 106), "1:107: the input ends inside an element"},
        {array("<string><![CDATA[a]]></string><bad/>"), "1:131: " + unknown + "'bad'"},
        {array("<!-- \u3042 --> <?a \u3042?><bad/>"), "1:119: " + unknown + "'bad'"},
        {array("<![CDATA[ ").substr(0, 109), "1:110: the input ends inside a CDATA section"},
        {array("</map>"), "1:107: Opening and ending tag mismatch: array line 1 and map"},
        {array("") + "\n x", "2:2: Extra content at the end of the document"},
        {array(std::string(BLOCK_SIZE, ' ') + "&e;"), "1:65640: Entity 'e' not defined"},
        {"<p:array/>", "1:9: Namespace prefix p on array is not defined"},
        {array("<null p:a=''/>"), "1:113: Namespace prefix p for a on null is not defined"},
        // Document types.
        {"\n <!DOCTYPE map>" + map(""), "2:2: a document type declaration is not allowed"},
        {"<!DOCTYPE map SYSTEM '/dev/zero' [<!ENTITY e 'e'>]>" + map("&e;"),
         "1:1: a document type declaration is not allowed"},
        // Elements.
        {"\n\n  <array/>", "3:3: 'array' is not in the namespace " + NAMESPACE},
        {"<array xmlns='" + NAMESPACE + "#'/>",
         "1:1: 'array' is not in the namespace " + NAMESPACE},
        {"\n<!--\u00E9--> <a\n\n b=''/>", "2:10: 'a' is not in the namespace " + NAMESPACE},
        {"<!---->\n  <a\n/>", "2:3: 'a' is not in the namespace " + NAMESPACE},
        {" <a\n b=''\n/>", "1:2: 'a' is not in the namespace " + NAMESPACE},
        {" <!----> <a\n b=''\n/>", "1:10: 'a' is not in the namespace " + NAMESPACE},
        {"<?xml version='1.0'?>  <a\n/>", "1:24: 'a' is not in the namespace " + NAMESPACE},
        {array("\n <nulL/>"), "2:2: " + unknown + "'nulL'"},
        {array("\u00E9").replace(100, 2, "<null/>\n\n<Array\n a='\n'/>"),
         "3:1: " + unknown + "'Array'"},
        {array("<string>\u00E9<null/></string>"),
         "1:110: an element inside a value that can only be text"},
        // Attributes.
        {array("<null key='a'/>"), "1:101: a key in an array, at null"},
        {array("<null escaped-key='0'/>"), "1:101: a key in an array, at null"},
        {map("<map key='a'><null/></map>"), "1:114: null in a map has no key"},
        {map("<null escaped-key='0'/>"), "1:101: null in a map has no key"},
        {map("<null key='' yek=''/>"), "1:101: null cannot have the attribute 'yek'"},
        {map("<null key='' p:yek='' xmlns:p='" + NAMESPACE + "'/>"),
         "1:101: null cannot have the attribute 'yek'"},
        {array("<number escaped='0'/>"), "1:101: number cannot have the attribute 'escaped'"},
        {array("<string escaped='no'/>"),
         "1:101: the attribute 'escaped' is not true, false, 1 or 0"},
        {map("<null key='' escaped-key='TRUE'/>"),
         "1:101: the attribute 'escaped-key' is not true, false, 1 or 0"},
        {map("<null key='k'/>\n<null key='k'/>"),
         "2:1: the key is repeated in its map (see --keep-repeated-keys)"},
        // Content.
        {array("<null/>\n  x"), "2:3: text outside of strings, numbers and booleans"},
        {map("\n <![CDATA[x]]>"), "2:2: text outside of strings, numbers and booleans"},
        {array("\n<null> </null>"), "2:7: text in null, which must be empty"},
        {array(" <boolean/>"), "1:102: the content of boolean is not true, false, 1 or 0"},
        {array("<boolean>falsely</boolean>"), "1:101: a value longer than 5 bytes"},
        {array("<boolean>t rue</boolean>"),
         "1:101: the content of boolean is not true, false, 1 or 0"},
        {array("<string escaped='1'>\\x</string>"),
         "1:101: a string with an unknown escape sequence"},
        {array("<string escaped='1'>\\u000</string>"),
         "1:101: a string that ends inside an escape sequence"},
        {array("<number>+1e999</number>"), "1:101: the content of number is not a finite number"},
        {array("<number>-01e400</number>"), "1:101: the content of number is not a finite number"},
        {map("<null escaped-key='1' key='\\'/>"), "1:101: a key with an unknown escape sequence"},
        {map("<null escaped-key='1' key='\\u000'/>"),
         "1:101: a key with an unknown escape sequence"},
        // An encoding.
        {"<?xml version='1.0' encoding='EUC-JP'?>\n" + array("\xFF\xFF"),
         "1:1: input conversion failed due to input error, bytes 0xFF 0xFF 0x3C 0x2F"},
        {"\xFE\xFF\xD8"s + '\0' + '\0' + 'a',
         "1:1: input conversion failed due to input error, bytes 0xD8 0x00 0x00 0x61"},
        {array("\xE9"),
         "1:101: Input is not proper UTF-8, indicate encoding ! Bytes: 0xE9 0x3C 0x2F 0x61"},
        // After the first block.
        {array(std::string(BLOCK_SIZE, '\n') + "<null/>" + std::string(BLOCK_SIZE, ' ') + "<x/>"),
         "65537:65544: " + unknown + "'x'"},
    };
    for (const auto& [xml, problem] : cases) {
        const Result result = run({}, xml);
        EXPECT_EQ(result.status, 1) << xml.substr(0, 200);
        EXPECT_EQ(result.error, "xml2json: <stdin>:" + problem + '\n') << xml.substr(0, 200);
    }
}

TEST(Conversion, NamesItsLimitsInTheHelpAndTheManual)
{
    constexpr xml2json::Limits LIMITS;
    for (const std::string& limit :
         {std::to_string(LIMITS.depth) + " if", std::to_string(LIMITS.numberSize) + " bytes"}) {
        EXPECT_THAT(run({"--help"}).output,
                    testing::ContainsRegex("Refuse maps and arrays .*" + limit));
        EXPECT_THAT(readFile(PROGRAM_MANUAL), testing::HasSubstr(limit));
    }
}

TEST(Conversion, LimitsTheNamesThatTheParserKeeps)
{
    const auto withNames = [](int count) {
        std::string members;
        for (int i = 0; i < count; ++i) {
            const std::string name = 'n' + std::to_string(10'000 + i) + std::string(994, 'x');
            members += "<null p:" + name + "='' xmlns:p='p'/>";
        }
        return array(members + std::string(BLOCK_SIZE, ' '));
    };
    EXPECT_EQ(run({}, withNames(1000)).error, "");
    EXPECT_THAT(run({}, withNames(1400)).error,
                testing::HasSubstr("more than a million bytes of different names"));
}

TEST(Conversion, LimitsTheSizeOfANumber)
{
    const auto problem = [](const std::string& number) -> std::string {
        std::ostringstream json;
        xml2json::Limits limits;
        limits.numberSize = 4;
        try {
            xml2json::convert(inputOf(array("<number>" + number + "</number>")), json, limits, {});
            return "";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    };
    for (const std::string number : {"1234", " 12<!---->34 "}) {
        EXPECT_EQ(problem(number), "");
    }
    for (const std::string number : {"12345", "123<!---->45"}) {
        EXPECT_EQ(problem(number), "input:1:101: a value longer than 4 bytes");
    }
}

TEST(Conversion, RefusesWhatIsNoFiniteNumber)
{
    for (const std::string text :
         {"", " ", "-", ".", "1e", "1e+", "e1", "1 2", "0x1", "1d", "INF", "-INF", "NaN", "1.2.3",
          "--1", "1<!-- --> 2", "1 <!-- -->2", "1<!----> <![CDATA[]]>2", "1<!----> <!---->2"}) {
        EXPECT_EQ(run({}, array("<number>" + text + "</number>")).status, 1) << text;
    }
}

} // namespace

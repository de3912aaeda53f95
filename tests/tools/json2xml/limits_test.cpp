// The limits of json2xml: the depth, and the size of a string and a number.
#include "tools/common/inputs.hpp"
#include "tools/common/run_program.hpp"
#include "tools/json2xml/convert.hpp"

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>

namespace {

using namespace tarn::tools::test;
using json2xml::Limits;

/// The number of bytes in a block of the input.
constexpr std::size_t BLOCK_SIZE = 64 * 1024;

/// Converts @p file. Returns the message if it is refused, else nothing.
///
/// @param bytesRead set to how much of it has been read.
std::string problem(tarn::tools::InputFile file, const Limits& limits, std::uint64_t& bytesRead)
{
    file.onBlock = [&](std::uint64_t bytes) { bytesRead = bytes; };
    std::ostringstream xml;
    try {
        json2xml::JsonInput input(std::move(file), limits, false);
        json2xml::convert(input, xml);
        return "";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

TEST(Limits, LimitsStringsAndNumbers)
{
    constexpr Limits LIMITS{.stringSize = 4, .numberSize = 6};
    const std::string longString = ": a string longer than 4 bytes";
    const std::string longNumber = ": a number longer than 6 bytes";
    const std::pair<std::string, std::string> cases[] = {
        {R"(["abcd", "", {"abcd": "\n\n"}, "abcd"])", ""},
        {R"("abcde")", "1:1" + longString},
        {"[\"\u00E9\",\n \"\u00E9\u00E9a\"]", "2:2" + longString},
        {R"({"k": "v", "\n\nk": 1})", "1:12" + longString},
        {R"({"k": "\u0041"})", "1:7" + longString},
        {"[123456, -123e5, -1.5e2, false]", ""},
        {"1234567", "1:1" + longNumber},
        {"[1,\n  -1.5e+2]", "2:3" + longNumber},
        // White space around a token does not count.
        {"[\"abcd\"" + std::string(3 * BLOCK_SIZE, ' ') + ", 123456" +
             std::string(3 * BLOCK_SIZE, ' ') + "]",
         ""},
    };
    for (const auto& [json, expected] : cases) {
        std::uint64_t bytesRead = 0;
        EXPECT_EQ(problem(inputOf(json), LIMITS, bytesRead),
                  expected.empty() ? "" : "input:" + expected)
            << json;
        EXPECT_EQ(bytesRead, json.size()) << json;
    }
}

TEST(Limits, StopsReadingAndNamesWhereATokenBegins)
{
    constexpr std::size_t LIMIT = 4 * BLOCK_SIZE;
    constexpr Limits LIMITS{.stringSize = LIMIT, .numberSize = LIMIT};
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"\"", "a", "string"},  {"\"", "\u00E9", "string"}, {"\"", R"(\\)", "string"},
        {"{\"", "k", "string"}, {"-1.", "2", "number"},     {"", "1", "number"},
    };
    for (const auto& [start, repeated, token] : cases) {
        for (const std::size_t blanks : {std::size_t{0}, BLOCK_SIZE - 6, 2 * BLOCK_SIZE + 5}) {
            SCOPED_TRACE(start + repeated + " after " + std::to_string(blanks) + " blanks");
            std::string json = "[\n\"\u00E9\"," + std::string(blanks, ' ') + start;
            const std::size_t column = blanks + (start.starts_with('{') ? 6 : 5);
            while (json.size() < 20 * LIMIT) {
                json += repeated;
            }
            std::uint64_t bytesRead = 0;
            EXPECT_EQ(problem(inputOf(json), LIMITS, bytesRead),
                      "input:2:" + std::to_string(column) + ": a " + token + " longer than " +
                          std::to_string(LIMIT) + " bytes");
            EXPECT_LE(bytesRead, blanks + 3 * LIMIT); // the buffer grows by doubling
        }
    }
}

TEST(Limits, NameWhereATokenBeginsThatComesByteByByte)
{
    for (std::size_t limit = 1; limit < 25; ++limit) {
        std::uint64_t bytesRead = 0;
        EXPECT_EQ(problem(inBlocks("[\n1, \"" + std::string(30, 'a'), 1), {.stringSize = limit},
                          bytesRead),
                  "input:2:4: a string longer than " + std::to_string(limit) + " bytes");
    }
}

TEST(Limits, LimitsTheDepth)
{
    const auto nested = [](std::size_t depth) {
        return std::string(depth, '[') + std::string(depth, ']');
    };
    EXPECT_EQ(run({}, nested(1000)).status, 0);
    EXPECT_EQ(run({}, nested(1001)).error,
              "json2xml: <stdin>:1:1001: nested deeper than 1000 levels (see --max-depth)\n");
    EXPECT_EQ(run({"--max-depth", "1"}, "[1,[]]").error,
              "json2xml: <stdin>:1:4: nested deeper than 1 levels (see --max-depth)\n");
    EXPECT_EQ(run({"--max-depth", "2"}, "[{},{}]").error, "");
    EXPECT_EQ(run({"--max-depth", "0"}, "1").error, "");
    EXPECT_EQ(run({"--max-depth", "0"}, "{}").status, 1);
    EXPECT_EQ(run({}, std::string(5'000'000, '[')).status, 1);
    EXPECT_EQ(run({"--max-depth", "2500"}, nested(2500)).status, 0);
}

TEST(Limits, StandInTheHelpAndTheManual)
{
    const Limits limits;
    for (const std::string& limit :
         {std::to_string(limits.depth) + " if", std::to_string(limits.stringSize) + " bytes and a ",
          " a number of more than[ \n]" + std::to_string(limits.numberSize) + " bytes"}) {
        EXPECT_THAT(run({"--help"}).output,
                    testing::ContainsRegex("Refuse arrays and objects .*" + limit));
        EXPECT_THAT(readFile(PROGRAM_MANUAL), testing::ContainsRegex(limit));
    }
}

#if !IS_SANITIZED
TEST(Limits, SaysThatMemoryIsExhausted)
{
    const Directory directory;
    std::string longString = "\"";
    longString.resize(50'000'000, 'a');
    longString += '"';
    for (const std::string kilobytes : {"100000", "200000", "300000"}) {
        const Result result =
            run({"-o", directory / "file.xml"}, longString, "", "ulimit -v " + kilobytes);
        EXPECT_EQ(result.status, 1) << kilobytes;
        EXPECT_EQ(result.error, "json2xml: out of memory\n") << kilobytes;
        EXPECT_THAT(directory.names(), testing::IsEmpty()) << kilobytes;
    }
}
#endif

} // namespace

// Any bytes as the input of json2xml: what is JSON becomes XML that says the same, and what becomes
// of an input does not depend on the blocks that it comes in.
#include "fuzz/Require.hpp"
#include "tests/tools/json2xml/Outline.hpp"
#include "tools/json2xml/Conversion.hpp"

#include <rapidjson/memorystream.h>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <sys/socket.h>

namespace tarn::fuzz {

namespace {

using json2xml::FileDescriptor;

/// The end to read @p bytes from; each read gives a block of @p blockSize.
FileDescriptor inBlocks(std::string_view bytes, std::size_t blockSize)
{
    int ends[2];
    require(::socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) == 0, "socketpair fails");
    const FileDescriptor writeEnd(ends[0]);
    FileDescriptor readEnd(ends[1]);
    for (; !bytes.empty(); bytes.remove_prefix(std::min(blockSize, bytes.size()))) {
        const std::size_t size = std::min(blockSize, bytes.size());
        require(::send(writeEnd.get(), bytes.data(), size, MSG_DONTWAIT) ==
                    static_cast<ssize_t>(size),
                "send fails");
    }
    return readEnd;
}

struct Outcome
{
    std::string xml;
    std::string error;

    bool operator==(const Outcome&) const = default;
};

Outcome convert(std::string_view bytes, std::size_t blockSize)
{
    std::ostringstream xml;
    try {
        json2xml::JsonInput input(inBlocks(bytes, blockSize), "input", [](std::uint64_t) {});
        constexpr std::size_t DEEPEST = 1000;
        json2xml::convert(input, xml, DEEPEST);
        return {xml.str(), ""};
    } catch (const std::runtime_error& error) {
        return {"", error.what()};
    }
}

/// Whether RapidJSON takes it as it is. That leaves out some JSON.
bool isPlainJson(std::string_view bytes)
{
    rapidjson::BaseReaderHandler<> handler;
    rapidjson::MemoryStream stream(bytes.data(), bytes.size());
    constexpr unsigned FLAGS = rapidjson::kParseIterativeFlag |
                               rapidjson::kParseValidateEncodingFlag |
                               rapidjson::kParseNumbersAsStringsFlag;
    return bytes.find('\0') == std::string_view::npos &&
           !rapidjson::Reader().Parse<FLAGS>(stream, handler).IsError();
}

/// @p text in UTF-8, to which RapidJSON may have added surrogates, with U+FFFD for each of these
/// and for every character that XML 1.0 does not allow.
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

void check(std::string_view bytes)
{
    constexpr std::size_t LONGEST = 16'384;
    constexpr std::size_t MOST_BLOCKS = 128;
    if (bytes.size() > LONGEST) {
        return;
    }
    const Outcome outcome = convert(bytes, LONGEST);
    const Outcome inSmallBlocks = convert(bytes, bytes.size() / MOST_BLOCKS + 1);
    require(outcome == inSmallBlocks, "in one block: " + outcome.error + outcome.xml +
                                          "\nin small blocks: " + inSmallBlocks.error +
                                          inSmallBlocks.xml);
    if (outcome.error.empty()) {
        const std::string outline = json2xml::test::outlineOfXml(outcome.xml);
        require(outline.starts_with('<'), outline + outcome.xml);
        if (isPlainJson(bytes)) {
            const std::string expected =
                replaceForbidden(json2xml::test::outlineOfJson(std::string(bytes)));
            require(outline == expected,
                    "the XML says\n" + outline + "\nand the JSON says\n" + expected);
        }
    } else {
        require(!isPlainJson(bytes) || outcome.error.find("nested deeper") != std::string::npos,
                "JSON is refused: " + outcome.error);
    }
}

} // namespace

} // namespace tarn::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    tarn::fuzz::check({reinterpret_cast<const char*>(bytes), size});
    return 0;
}

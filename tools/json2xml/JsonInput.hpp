// JsonInput: the bytes of a JSON text, read in blocks, as an input stream for RapidJSON's reader.
#pragma once

#include "tools/json2xml/FileDescriptor.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <rapidjson/reader.h>
#include <string>
#include <vector>

namespace json2xml {

/// Reads a file descriptor block by block and keeps count of lines and columns.
///
/// It also takes from RapidJSON's reader the two things that the reader refuses although they are
/// JSON, both by rewriting bytes in place so that the reader's positions stay right:
/// - a number that a `double` cannot hold. The stream checks and keeps the text of every number
///   when a token begins and leaves to the reader a number of one digit and blanks;
/// - an escaped surrogate without a partner, which becomes `\uFFFD`.
class JsonInput
{
public:
    /// Receives the number of bytes read so far, after each block.
    using BlockObserver = std::function<void(std::uint64_t)>;

    /// Reads the first block; skips a byte order mark.
    ///
    /// @param name how messages name the input.
    JsonInput(FileDescriptor descriptor, std::string name, BlockObserver onBlock);

    /// What RapidJSON asks of an input stream. The end is a NUL that can be taken for ever.
    using Ch = char;
    Ch Peek() const { return *current; }
    Ch Take()
    {
        const Ch taken = *current++;
        if (current >= visibleEnd) [[unlikely]] {
            continueAtEnd();
        }
        return taken;
    }
    std::size_t Tell() const { return startOffset + indexOf(current); }

    /// The part of RapidJSON's stream concept that only a stream parsed in place has; never called.
    Ch* PutBegin() { return nullptr; }
    void Put(Ch) {}
    std::size_t PutEnd(Ch*) { return 0; }

    /// Goes to the next byte that is not white space. If a number begins there, checks it, keeps
    /// its text for number() and blanks out all but its sign and first digit.
    void skipToToken()
    {
        while (isWhiteSpace(*current)) {
            Take();
        }
        if (isDigit(*current) || *current == '-') {
            captureNumber();
        }
    }

    /// The text of the last number that skipToToken() met.
    const std::u16string& number() const { return numberText; }

    /// Whether the input ends at @p offset.
    bool isEnd(std::size_t offset) const
    {
        return ended && offset == startOffset + indexOf(readEnd);
    }

    /// The byte at @p offset, which is at most LOOK_BEHIND before the current one; NUL at the end.
    char byteAt(std::size_t offset) const { return buffer[offset - startOffset]; }

    /// That byte for people: `'x'`, `byte 0xNN` or `the end of the input`.
    std::string describeByte(std::size_t offset) const;

    /// Throws an error whose text is `NAME:LINE:COLUMN: problem`. Lines and columns count from 1,
    /// and columns count characters.
    [[noreturn]] void fail(std::size_t offset, const std::string& problem) const;

private:
    static constexpr std::size_t BLOCK_SIZE = 64 * 1024;

    /// The reader reports an error this many bytes before the current one at most: where a Unicode
    /// escape begins.
    static constexpr std::size_t LOOK_BEHIND = 6;

    /// Where a byte stands; both count from 1.
    struct Position
    {
        std::uint64_t line = 1;
        std::uint64_t column = 1;
    };

    static bool isWhiteSpace(char byte)
    {
        return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t';
    }
    static bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }
    std::size_t indexOf(const char* place) const
    {
        return static_cast<std::size_t>(place - buffer.data());
    }

    static Position advance(Position position, const char* first, const char* last);

    void skipByteOrderMark();
    void continueAtEnd();
    void showMore();
    void dropUsed();
    void readBlock();
    void revealEscapes();
    char peekAhead(std::size_t distance);
    std::size_t passDigits(std::size_t distance);
    void captureNumber();

    FileDescriptor descriptor;
    std::string name;
    BlockObserver onBlock;

    /// Bytes that have been taken lately, then those to come. One byte longer than what is read
    /// into it, for the NUL at the end.
    std::vector<char> buffer;
    /// The offset in the input and the place of the buffer's first byte.
    std::size_t startOffset = 0;
    Position startPosition;

    /// The next byte. Before the end of the input it lies before visibleEnd.
    char* current;
    /// The end of what the reader may see; behind it may stand the beginning of an escape.
    char* visibleEnd;
    /// The end of what has been read.
    char* readEnd;
    /// All bytes have been read and are visible, with a NUL behind them.
    bool ended = false;

    std::u16string numberText;
};

} // namespace json2xml

namespace rapidjson {

/// The reader calls this before each token.
template <>
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
inline void SkipWhitespace(json2xml::JsonInput& input)
{
    input.skipToToken();
}

} // namespace rapidjson

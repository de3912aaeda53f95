// JsonInput: the bytes of a JSON text, read in blocks, as an input stream for RapidJSON's reader.
#pragma once

#include "tools/common/Position.hpp"
#include "tools/common/program.hpp"
#include "tools/json2xml/limits.hpp"
#include "tools/json2xml/string_block.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <rapidjson/reader.h>
#include <string>
#include <vector>

namespace json2xml {

/// Reads a file descriptor block by block and keeps count of lines and columns.
///
/// RapidJSON's reader refuses two things although they are JSON. The input rewrites them in place,
/// so that the reader's positions stay right:
/// - A `double` cannot hold every number. So the input checks each number itself, keeps its text,
///   and leaves one digit and blanks to the reader.
/// - An escaped surrogate without a partner becomes `\uFFFD`. If special units are kept, it becomes
///   `\u0000`, and takeSpecialUnit() tells what each U+0000 of a string stands for. No other U+0000
///   can be in a string, since JSON has it as an escape sequence only.
///
/// A string or number that exceeds its limit is refused while it is read, before it takes much more
/// memory than the limit allows.
class JsonInput
{
public:
    /// Reads the first block; skips a byte order mark.
    ///
    /// @param keepsSpecialUnits surrogates without a partner are not replaced.
    JsonInput(tarn::tools::InputFile file, const Limits& limits, bool keepsSpecialUnits);

    /// The members that RapidJSON requires of an input stream. After the last byte they give NUL,
    /// however often they are called.
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

    /// Takes characters of a string up to one that is not itself, or some of them, and puts them
    /// into @p output as UTF-16. Takes none and returns false if the next one is ill-formed.
    template <typename Output>
    bool takeCharacters(Output& output)
    {
        if (!takeBlock()) {
            return false;
        }
        std::memcpy(output.Push(static_cast<rapidjson::SizeType>(block.size)), block.units.data(),
                    block.size * sizeof(char16_t));
        return true;
    }

    /// RapidJSON requires these too, but calls them only when it parses in place.
    Ch* PutBegin() { return nullptr; }
    void Put(Ch) {}
    std::size_t PutEnd(Ch*) { return 0; }

    void skipWhiteSpace()
    {
        while (isWhiteSpace(*current)) {
            Take();
        }
    }

    /// Goes behind the last number that skipToToken() met, if the reader has just read it.
    void skipRestOfNumber()
    {
        while (Tell() < numberEnd) {
            Take();
        }
    }

    /// Goes to the next byte that is not white space. If a number begins there, checks it, keeps
    /// its text for number() and blanks out all but its sign and first digit.
    void skipToToken()
    {
        skipWhiteSpace();
        tokenOffset = Tell();
        isInString = *current == '"';
        plainSize = 0;
        if (isDigit(*current) || *current == '-') {
            captureNumber();
        }
    }

    /// What the next U+0000 of a string stands for: itself, or a surrogate. Must be called once for
    /// each, in their order, if special units are kept.
    char16_t takeSpecialUnit()
    {
        const char16_t unit = specialUnits.front();
        specialUnits.pop_front();
        return unit;
    }

    /// The text of the last number that skipToToken() met.
    const std::u16string& number() const { return numberText; }

    /// To be called when the reader has taken all of a string. Throws if it is too large.
    void endString()
    {
        checkStringSize();
        isInString = false;
    }

    /// Whether the last string, of @p size code units, is printable ASCII without an escape
    /// sequence.
    bool isPlainString(std::size_t size) const { return size == plainSize; }

    const Limits& limits() const { return limitsOfInput; }

    /// Whether the input ends at @p offset.
    bool isEnd(std::size_t offset) const
    {
        return ended && offset == startOffset + indexOf(readEnd);
    }

    /// The byte at @p offset, which is at most LOOK_BEHIND before the current one; NUL at the end.
    char byteAt(std::size_t offset) const { return buffer[offset - startOffset]; }

    /// That byte as messages show it: `'x'`, `byte 0xNN` or `the end of the input`.
    std::string describeByte(std::size_t offset) const;

    /// Throws an error whose text is `NAME:LINE:COLUMN: problem`. Lines and columns count from 1,
    /// and columns count characters.
    [[noreturn]] void fail(std::size_t offset, const std::string& problem) const;

private:
    static constexpr std::size_t BLOCK_SIZE = 64 * 1024;

    static constexpr std::size_t SPARE_SIZE = 1 + STRING_BLOCK_OVERREAD;

    /// How many bytes before the current one are kept. The reader reports a fault in an escape
    /// sequence where the sequence begins, and no other fault further back.
    static constexpr std::size_t LOOK_BEHIND = 6;

    static bool isWhiteSpace(char byte)
    {
        return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t';
    }
    static bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }
    std::size_t indexOf(const char* place) const
    {
        return static_cast<std::size_t>(place - buffer.data());
    }

    tarn::tools::Position positionAt(std::size_t offset) const;

    /// Throws if the string that is being read is too large.
    void checkStringSize() const
    {
        constexpr std::size_t QUOTATION_MARKS = 2;
        if (Tell() - tokenOffset > limitsOfInput.stringSize + QUOTATION_MARKS) [[unlikely]] {
            refuseSize("string", limitsOfInput.stringSize);
        }
    }
    bool takeBlock();
    void checkNumberSize(std::size_t size) const;
    [[noreturn]] void refuseSize(const char* token, std::size_t limit) const;

    void skipByteOrderMark();
    void continueAtEnd();
    void showMore();
    void dropUsed();
    void readBlock();
    void revealEscapes();
    std::size_t passEscape(char* first);
    void showMoreOfNumber(std::size_t size);
    char peekAhead(std::size_t distance);
    std::size_t passDigits(std::size_t distance);
    void captureNumber();

    tarn::tools::InputFile file;
    const Limits limitsOfInput;

    /// The bytes taken last, then those to come. The last SPARE_SIZE bytes are never read into: one
    /// is for the NUL at the end.
    std::vector<char> buffer;
    /// The buffer's first byte: its offset in the input, its line and column.
    std::size_t startOffset = 0;
    tarn::tools::Position startPosition;

    /// The next byte. It is before visibleEnd, except at the end of the input.
    char* current;
    /// The end of what the reader may see. The beginning of an escape sequence may follow it.
    char* visibleEnd;
    /// The end of what has been read.
    char* readEnd;
    /// All bytes have been read and are visible, with a NUL after them.
    bool ended = false;

    /// The first byte of the last token that skipToToken() met.
    std::size_t tokenOffset = 0;
    /// Its line and column, noted when it leaves the buffer.
    tarn::tools::Position tokenPosition;
    /// That token is a string and the reader has not taken all of it.
    bool isInString = false;
    /// How many characters of it were printable ASCII and stood for themselves.
    std::size_t plainSize = 0;

    std::u16string numberText;
    /// The offset of the byte after that number.
    std::size_t numberEnd = 0;

    const bool keepsSpecialUnits;
    /// Those that the reader has not had yet, too.
    std::deque<char16_t> specialUnits;

    /// The characters that were taken last.
    StringBlock block;
};

/// The encoding of the input, for which the reader takes characters by takeCharacters().
struct InputEncoding : rapidjson::UTF8<>
{
};

} // namespace json2xml

namespace rapidjson {

template <>
struct Transcoder<json2xml::InputEncoding, UTF16<char16_t>>
{
    /// The reader calls this where a string goes on with a character that is itself.
    template <typename Output>
    static bool Validate(json2xml::JsonInput& input, Output& output)
    {
        return input.takeCharacters(output);
    }
    template <typename Output>
    static bool Transcode(json2xml::JsonInput& input, Output& output)
    {
        return Validate(input, output);
    }
};

/// The reader calls this before each token.
template <>
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
inline void SkipWhitespace(json2xml::JsonInput& input)
{
    input.skipToToken();
}

} // namespace rapidjson

#include "tools/json2xml/JsonInput.hpp"

#include "text/utf16.hpp"
#include "tools/common/json_escapes.hpp"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

namespace json2xml {

using namespace tarn::tools;

namespace {

/// The digits of the escape sequence that takes the place of a surrogate without a partner.
constexpr std::string_view REPLACEMENT_DIGITS = "FFFD";
constexpr std::string_view SPECIAL_DIGITS = "0000";

/// The number of bytes that a character takes at most.
constexpr std::size_t LONGEST_CHARACTER = 4;

char* findBackslash(char* first, char* last)
{
    void* const found = std::memchr(first, '\\', static_cast<std::size_t>(last - first));
    return found != nullptr ? static_cast<char*>(found) : last;
}

} // namespace

JsonInput::JsonInput(InputFile file, const Limits& limits, bool keepsSpecialUnits)
    : file(std::move(file)), limitsOfInput(limits), buffer(BLOCK_SIZE + SPARE_SIZE),
      current(buffer.data()), visibleEnd(current), readEnd(current),
      keepsSpecialUnits(keepsSpecialUnits)
{
    skipByteOrderMark();
    continueAtEnd();
}

std::string JsonInput::describeByte(std::size_t offset) const
{
    constexpr char HEXADECIMAL_DIGITS[] = "0123456789ABCDEF";
    if (isEnd(offset)) {
        return "the end of the input";
    }
    const auto byte = static_cast<unsigned char>(byteAt(offset));
    if (byte > ' ' && byte <= '~') {
        return {'\'', static_cast<char>(byte), '\''};
    }
    return std::string("byte 0x") + HEXADECIMAL_DIGITS[byte >> 4] + HEXADECIMAL_DIGITS[byte & 0xF];
}

void JsonInput::fail(std::size_t offset, const std::string& problem) const
{
    failAt(file.name, positionAt(offset), problem);
}

Position JsonInput::positionAt(std::size_t offset) const
{
    return advance(startPosition, {buffer.data(), offset - startOffset});
}

/// Reads characters of a string into `block`. Returns false if the next one is ill-formed.
bool JsonInput::takeBlock()
{
    readStringBlock(current, visibleEnd, block);
    while (block.size == 0 && !ended &&
           visibleEnd - current < static_cast<std::ptrdiff_t>(LONGEST_CHARACTER)) {
        showMore(); // the character may go on there
        readStringBlock(current, visibleEnd, block);
    }
    current += block.bytesRead;
    plainSize += block.isPlain ? block.size : 0;
    if (current == visibleEnd) {
        continueAtEnd();
    }
    return block.size > 0;
}

/// Throws if a number of which @p size bytes have been read is too large.
void JsonInput::checkNumberSize(std::size_t size) const
{
    if (size > limitsOfInput.numberSize) {
        refuseSize("number", limitsOfInput.numberSize);
    }
}

void JsonInput::refuseSize(const char* token, std::size_t limit) const
{
    failAt(file.name, tokenOffset < startOffset ? tokenPosition : positionAt(tokenOffset),
           std::string("a ") + token + " longer than " + std::to_string(limit) + " bytes");
}

void JsonInput::skipByteOrderMark()
{
    constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
    while (!ended && indexOf(readEnd) < BYTE_ORDER_MARK.size()) {
        showMore();
    }
    if (std::string_view(current, visibleEnd).starts_with(BYTE_ORDER_MARK)) {
        startPosition.column = 0; // the mark takes up no column
        current += BYTE_ORDER_MARK.size();
    }
}

/// Reads on if `current` has reached what the reader may see.
void JsonInput::continueAtEnd()
{
    current = std::min(current, visibleEnd);
    while (current == visibleEnd && !ended) {
        showMore();
    }
}

/// Reads once and moves `visibleEnd`.
void JsonInput::showMore()
{
    if (isInString) {
        checkStringSize();
    }
    dropUsed();
    readBlock();
    revealEscapes();
}

/// Makes room at the end of the buffer.
void JsonInput::dropUsed()
{
    const std::size_t used = indexOf(current);
    if (used > LOOK_BEHIND) {
        char* const start = buffer.data();
        const std::size_t dropped = used - LOOK_BEHIND;
        const char* counted = start;
        if (tokenOffset >= startOffset && tokenOffset < startOffset + dropped) {
            counted = start + (tokenOffset - startOffset);
            tokenPosition = startPosition = advance(startPosition, {start, counted});
        }
        startPosition = advance(startPosition, {counted, start + dropped});
        startOffset += dropped;
        std::copy(start + dropped, readEnd, start);
        current -= dropped;
        visibleEnd -= dropped;
        readEnd -= dropped;
    }
}

void JsonInput::readBlock()
{
    const std::size_t currentIndex = indexOf(current);
    const std::size_t visibleSize = indexOf(visibleEnd);
    const std::size_t size = indexOf(readEnd);
    if (size + SPARE_SIZE == buffer.size()) {
        buffer.resize(2 * buffer.size());
    }
    const std::size_t count =
        file.descriptor.read(buffer.data() + size, buffer.size() - SPARE_SIZE - size, file.name);
    current = buffer.data() + currentIndex;
    visibleEnd = buffer.data() + visibleSize;
    readEnd = buffer.data() + size + count;
    ended = count == 0;
    file.onBlock(startOffset + indexOf(readEnd));
}

/// Moves `visibleEnd` to the end of what has been read, or to an escape of which a part may not
/// have been read yet.
void JsonInput::revealEscapes()
{
    char* escape = visibleEnd;
    while ((escape = findBackslash(escape, readEnd)) != readEnd) {
        if (!ended && readEnd - escape < static_cast<std::ptrdiff_t>(2 * UNICODE_ESCAPE_SIZE)) {
            break;
        }
        escape += passEscape(escape);
        escape = std::min(escape, readEnd);
    }
    visibleEnd = escape;
    *readEnd = '\0';
}

/// Replaces the escape at @p first if it is a surrogate without a partner. Returns the length of
/// that escape; of both escapes if they are a surrogate pair.
std::size_t JsonInput::passEscape(char* first)
{
    const std::optional<char16_t> unit = escapedCodeUnit({first, readEnd});
    if (!unit) {
        return SHORT_ESCAPE_SIZE;
    }
    if (tarn::text::isHighSurrogate(*unit) &&
        tarn::text::isLowSurrogate(
            escapedCodeUnit({first + UNICODE_ESCAPE_SIZE, readEnd}).value_or(0))) {
        return 2 * UNICODE_ESCAPE_SIZE;
    }
    const bool isSurrogate = tarn::text::isSurrogate(*unit);
    if (isSurrogate) {
        std::ranges::copy(keepsSpecialUnits ? SPECIAL_DIGITS : REPLACEMENT_DIGITS,
                          first + UNICODE_ESCAPE_START.size());
    }
    if (keepsSpecialUnits && (isSurrogate || *unit == 0)) {
        specialUnits.push_back(*unit);
    }
    return UNICODE_ESCAPE_SIZE;
}

/// Reads on until the byte after the first @p size bytes of a number is visible, or to the end.
void JsonInput::showMoreOfNumber(std::size_t size)
{
    while (current + size >= visibleEnd && !ended) {
        checkNumberSize(size);
        showMore();
    }
}

/// The byte of a number that is @p distance after the current one, or NUL at the end. All bytes
/// between the two must have been peeked at.
inline char JsonInput::peekAhead(std::size_t distance)
{
    if (current + distance >= visibleEnd) [[unlikely]] {
        showMoreOfNumber(distance);
    }
    return current[distance];
}

/// Reads one digit or more, the first of them @p distance after the current byte. Returns the
/// distance of the byte after the last digit.
std::size_t JsonInput::passDigits(std::size_t distance)
{
    if (!isDigit(peekAhead(distance))) {
        const std::size_t offset = Tell() + distance;
        fail(offset, "expected a digit of a number, found " + describeByte(offset));
    }
    do {
        ++distance;
    } while (isDigit(peekAhead(distance)));
    return distance;
}

void JsonInput::captureNumber()
{
    const std::size_t signSize = *current == '-' ? 1 : 0;
    std::size_t size = peekAhead(signSize) == '0' ? signSize + 1 : passDigits(signSize);
    if (peekAhead(size) == '.') {
        size = passDigits(size + 1);
    }
    if (peekAhead(size) == 'e' || peekAhead(size) == 'E') {
        ++size;
        if (peekAhead(size) == '+' || peekAhead(size) == '-') {
            ++size;
        }
        size = passDigits(size);
    }
    checkNumberSize(size);
    numberText.assign(current, current + size);
    numberEnd = Tell() + size;
    std::fill(current + signSize + 1, current + size, ' ');
}

} // namespace json2xml

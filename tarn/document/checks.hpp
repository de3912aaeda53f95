// What makes a document well-formed beside its characters and the order of calls.
#pragma once

#include "tarn/document/Name.hpp"
#include "tarn/document/names.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace tarn::document::detail {

/// Why a call is refused; becomes an Error when the place is known.
struct Refusal
{
    std::string reason;
};

/// What a byte can be part of.
enum Uses : unsigned char
{
    NO_USES = 0,
    NAME_START = 1,
    NAME = 2,
    URI = 4,
    PUBLIC_ID = 8,
};

inline constexpr auto USES = [] {
    constexpr std::string_view ONLY_IN_PUBLIC_IDS = " -'()+,./:=?;!*#@$_%";
    std::array<Uses, 0x100> uses{};
    for (unsigned byte = 0; byte < 0x80; ++byte) {
        const char character = static_cast<char>(byte);
        const bool isStart = contains(NAME_STARTS, byte);
        const bool isLetter = isStart && character != '_';
        const bool isDigit = character >= '0' && character <= '9';
        const bool isInPublicIds =
            isLetter || isDigit || ONLY_IN_PUBLIC_IDS.find(character) != std::string_view::npos;
        uses[byte] = static_cast<Uses>(
            (isStart ? NAME_START : NO_USES) |
            (isStart || contains(NAME_CONTINUATIONS, byte) ? NAME : NO_USES) |
            (isUri({&character, 1}) ? URI : NO_USES) | (isInPublicIds ? PUBLIC_ID : NO_USES));
    }
    return uses;
}();

inline bool canBe(Uses use, char byte)
{
    return (USES[static_cast<unsigned char>(byte)] & use) != 0;
}

inline bool canBe(Uses use, std::string_view text)
{
    return std::ranges::all_of(text, [use](char byte) { return canBe(use, byte); });
}

[[noreturn]] void refuseName(std::string_view name);

// Each throws Refusal unless everything is right.

inline void requireLocalName(std::string_view name)
{
    const bool isName = !name.empty() && canBe(NAME_START, name.front()) && canBe(NAME, name);
    if (!isName && !isNcName(name)) { // the second one knows all of Unicode
        refuseName(name);
    }
}
void requireNamespace(std::string_view uri, std::string_view prefix);
/// @param text what stands in the comment.
void requireComment(std::string_view text);
void requireTarget(const Name& target);
/// @param data what stands in the instruction after its target.
void requireData(std::string_view data);
void requireIdentifiers(std::string_view publicId, std::string_view systemId);

} // namespace tarn::document::detail

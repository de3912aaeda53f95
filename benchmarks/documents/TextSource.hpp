// Random text, the same in every run.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace benchmarks {

/// The words of a text.
struct Vocabulary
{
    std::vector<std::u16string_view> words;
    std::u16string_view separator = u" ";
    std::u16string_view sentenceEnd = u". ";
};

extern const Vocabulary ENGLISH;
/// One vocabulary for each script: Chinese, Japanese, Russian, Arabic, accented Latin, and English
/// with emoji.
extern const std::vector<Vocabulary> SCRIPTS;
/// Source text and markup, where one of every few characters has to be escaped.
extern const Vocabulary SOURCE_TEXT;
/// English with control characters of C0 between the words.
extern const Vocabulary CONTROLS;

class TextSource
{
public:
    explicit TextSource(const Vocabulary& vocabulary) : vocabulary(vocabulary) {}

    /// @return a number from @p least to @p most.
    std::size_t number(std::size_t least, std::size_t most);

    std::u16string words(std::size_t count);

    /// @return sentences of at least @p units UTF-16 code units in all.
    std::u16string paragraph(std::size_t units);

private:
    const Vocabulary& vocabulary;
    std::mt19937 random; // always with the same seed
};

/// @return @p text followed by @p number in base ten.
std::u16string numbered(std::u16string_view text, std::size_t number);

} // namespace benchmarks

// Times each kernel by itself, and the plain code that does the same work one code unit at a time,
// on about one batch of text.
#include "tarn/xml/text_escaping.hpp"
#include "text/utf16.hpp"
#include "text/utf8_decoder.hpp"
#include "text/utf8_encoder.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

namespace benchmarks {

namespace {

using namespace tarn::text;
using namespace tarn::utils::detail;

constexpr std::size_t BATCH = 8192;

struct Sample
{
    std::string name;
    std::u16string phrase;

    std::u16string text() const
    {
        std::u16string repeated;
        while (repeated.size() < BATCH) {
            repeated += phrase;
        }
        return repeated;
    }
};

const std::vector<Sample> SAMPLES = {
    {"ascii", u"The quick brown fox jumps over the lazy dog. "},
    {"french", u"Où l’été déjà s’achève, le garçon français naît à Noël. "},
    {"russian", u"Съешь же ещё этих мягких французских булок, да выпей чаю. "},
    {"chinese", u"天地玄黃宇宙洪荒日月盈昃辰宿列張寒來暑往秋收冬藏"},
    {"emoji", u"happy \U0001F600 birthday \U0001F382\U0001F389 to you "},
    {"chat", u"See you at the lake \U0001F600 bring food and kites \U0001F389 we leave at seven "},
    {"markup", u"L'<b>été</b> s'achève &amp; l'<i>hiver</i> naît: qu'il pleuve à <b>Orléans</b>? "},
    {"mixed",
     u"Tea чай 茶 τσάι \U0001F375 water вода 水 νερό bread хлеб 麵包 ψωμί \U0001F35E salt соль 鹽 "
     u"αλάτι fish рыба 魚 ψάρι \U0001F41F rice рис 米飯 ρύζι milk молоко 牛奶 γάλα \U0001F95B "},
    {"source", u"if (a < b && c > d) { print(\"x\", 'y'); } "},
};

/// @param units the code units that @p text has in UTF-16.
void add(const std::string& name, auto text, std::size_t units, auto&& kernel)
{
    benchmark::RegisterBenchmark(
        name.c_str(), [text = std::move(text), units, kernel](auto& state) mutable {
            for (auto _ : state) {
                benchmark::DoNotOptimize(kernel(text.data(), text.data() + text.size()));
            }
            state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(units));
        });
}

void add(const std::string& name, const std::u16string& text, auto&& kernel)
{
    add(name, text, text.size(), kernel);
}

void addEncoder(const Sample& sample, const Utf8EncoderLevel& level)
{
    if (level.encode == nullptr) {
        return; // this processor cannot run it
    }
    std::string out(encodedUtf8Bound(sample.text().size()), '\0');
    add("encode/" + sample.name + '/' + std::string(level.name), sample.text(),
        [encode = level.encode, out](const char16_t* first, const char16_t* last) mutable {
            return encode(first, last, out.data()).written;
        });
}

void addDecoders(const Sample& sample, const Utf8DecoderLevel& level)
{
    if (level.decode == nullptr) {
        return; // this processor cannot run it
    }
    const std::u16string text = sample.text();
    std::string bytes(encodedUtf8Bound(text.size()), '\0');
    bytes.resize(static_cast<std::size_t>(
        encodeUtf8(text.data(), text.data() + text.size(), bytes.data()).written - bytes.data()));
    const std::string name = '/' + sample.name + '/' + std::string(level.name);
    std::u16string out(decodedUtf8Bound(bytes.size()), u'\0');
    add("decode" + name, bytes, text.size(),
        [decode = level.decode, out](const char* first, const char* last) mutable {
            return decode(first, last, out.data()).written;
        });
    add("classify" + name, bytes, text.size(),
        [classify = level.classify](const char* first, const char* last) {
            return classify(first, last).classes;
        });
}

/// Escapes one code unit at a time.
EscapedRun escapePlain(const char16_t* first, const char16_t* last, char16_t* out, const char16_t*,
                       const Replacements& replacements)
{
    for (; first != last; ++first) {
        const char16_t unit = *first;
        if (unit < replacements.size() && replacements[unit].length != 0) {
            out = std::ranges::copy(replacements[unit].text(), out).out;
        } else {
            *out++ = unit;
        }
    }
    return {first, out};
}

void addEscaper(const Sample& sample, const EscaperLevel& level)
{
    if (level.escape == nullptr) {
        return; // this processor cannot run it
    }
    std::u16string out(sample.text().size() * LONGEST_REPLACEMENT + BATCH, u'\0');
    add("escape/" + sample.name + '/' + std::string(level.name), sample.text(),
        [escape = level.escape, out](const char16_t* first, const char16_t* last) mutable {
            return escape(first, last, out.data(), out.data() + out.size(), REPLACEMENTS).written;
        });
}

/// Escapes text without specials by a search and then a copy, for comparison with a single pass.
EscapedRun searchAndCopy(const char16_t* first, const char16_t* last, char16_t* out,
                         const char16_t*, const Replacements&)
{
    const char16_t* const special = findSpecial(first, last);
    return {special, std::copy(first, special, out)};
}

/// Counts the bytes of the text in UTF-8, which an exact allocation would have to know first.
std::size_t countBytes(const char16_t* first, const char16_t* last)
{
    std::size_t bytes = 0;
    for (; first != last; ++first) {
        const std::size_t isLonger = *first >= 0x80 ? 1 : 0;
        const std::size_t isLongest = *first >= 0x800 && !isSurrogate(*first) ? 1 : 0;
        bytes += 1 + isLonger + isLongest; // a surrogate pair has four bytes, two for each half
    }
    return bytes;
}

} // namespace

} // namespace benchmarks

int main(int argumentCount, char** arguments)
{
    using namespace benchmarks;
    for (const Sample& sample : SAMPLES) {
        for (const Utf8EncoderLevel& level : utf8EncoderLevels()) {
            addEncoder(sample, level);
        }
        for (const Utf8DecoderLevel& level : utf8DecoderLevels()) {
            addDecoders(sample, level);
        }
        for (const EscaperLevel& level : escaperLevels()) {
            addEscaper(sample, level);
        }
        addEscaper(sample, {"portable", escapePlain});
    }
    addEscaper(SAMPLES.front(), {"search-then-copy", searchAndCopy});
    add("count/" + SAMPLES.front().name + "/bytes", SAMPLES.front().text(), countBytes);
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}

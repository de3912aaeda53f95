// Times the kernels by themselves, each beside its portable twin, on about one batch of text.
#include "tarn/xml/text_escaping.hpp"
#include "tests/support/plain_escaping.hpp"
#include "text/utf16.hpp"
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
    {"source", u"if (a < b && c > d) { print(\"x\", 'y'); } "},
};

void add(const std::string& name, std::u16string text, auto&& kernel)
{
    benchmark::RegisterBenchmark(
        name.c_str(), [text = std::move(text), kernel](auto& state) mutable {
            for (auto _ : state) {
                benchmark::DoNotOptimize(kernel(text.data(), text.data() + text.size()));
            }
            state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
        });
}

void addEncoder(const Sample& sample, const char* name, Utf8Encoder encoder)
{
    if (encoder == nullptr) {
        return; // this processor cannot run it
    }
    std::string out(encodedUtf8Bound(sample.text().size()), '\0');
    add("encode/" + sample.name + '/' + name, sample.text(),
        [encoder, out](const char16_t* first, const char16_t* last) mutable {
            return encoder(first, last, out.data()).written;
        });
}

void addEscaper(const Sample& sample, const char* name, decltype(&escapeMarkup) escape)
{
    constexpr std::size_t LONGEST_REPLACEMENT = 6;
    std::u16string out(sample.text().size() * LONGEST_REPLACEMENT + BATCH, u'\0');
    add("escape/" + sample.name + '/' + name, sample.text(),
        [escape, out](const char16_t* first, const char16_t* last) mutable {
            return escape(first, last, out.data(), out.data() + out.size()).written;
        });
}

/// What escaping by a search and then a copy would take for text without specials.
EscapedRun searchAndCopy(const char16_t* first, const char16_t* last, char16_t* out,
                         const char16_t*)
{
    const char16_t* const special = findSpecial(first, last);
    return {special, std::copy(first, special, out)};
}

/// What an exact allocation would need to know first: the number of bytes in UTF-8.
std::size_t countBytes(const char16_t* first, const char16_t* last)
{
    std::size_t bytes = 0;
    for (; first != last; ++first) {
        const bool halfPair = isSurrogate(*first); // each counts for half of four bytes
        bytes += 1u + (*first >= 0x80) + (*first >= 0x800) - halfPair;
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
            addEncoder(sample, std::string(level.name).c_str(), level.encode);
        }
        addEscaper(sample, "portable", tarn::tests::escapeMarkupPlain);
        addEscaper(sample, "vector", escapeMarkup);
    }
    addEscaper(SAMPLES.front(), "search and copy", searchAndCopy);
    add("count bytes/" + SAMPLES.front().name, SAMPLES.front().text(), countBytes);
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}

#include "benchmarks/text_forms.hpp"

#include <rapidjson/encodings.h>
#include <rapidjson/stringbuffer.h>

namespace benchmarks {

namespace {

using Utf8 = rapidjson::UTF8<>;
using Utf16 = rapidjson::UTF16<char16_t>;

template <class From, class To>
std::basic_string<typename To::Ch> transcode(std::basic_string_view<typename From::Ch> text)
{
    const std::basic_string<typename From::Ch> terminated(text);
    rapidjson::GenericStringStream<From> source(terminated.c_str());
    rapidjson::GenericStringBuffer<To> converted;
    while (source.Peek() != 0) {
        rapidjson::Transcoder<From, To>::Transcode(source, converted);
    }
    return {converted.GetString(), converted.GetSize() / sizeof(typename To::Ch)};
}

} // namespace

std::string toUtf8(std::u16string_view text)
{
    return transcode<Utf16, Utf8>(text);
}

std::u16string toUtf16(std::string_view text)
{
    return transcode<Utf8, Utf16>(text);
}

} // namespace benchmarks

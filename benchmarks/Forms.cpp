#include "benchmarks/Forms.hpp"

#include <rapidjson/encodings.h>
#include <rapidjson/stringbuffer.h>

namespace benchmarks {

std::string toUtf8(std::u16string_view text)
{
    using Utf16 = rapidjson::UTF16<char16_t>;
    const std::u16string terminated(text);
    rapidjson::GenericStringStream<Utf16> source(terminated.c_str());
    rapidjson::StringBuffer converted;
    while (source.Peek() != 0) {
        rapidjson::Transcoder<Utf16, rapidjson::UTF8<>>::Transcode(source, converted);
    }
    return {converted.GetString(), converted.GetSize()};
}

} // namespace benchmarks

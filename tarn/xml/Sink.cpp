#include "tarn/xml/Sink.hpp"

#include "text/utf16.hpp"

#include <ostream>
#include <typeinfo>

namespace tarn::utils {

detail::AppendWindow detail::appendWindowOf(Sink& sink)
{
    const std::type_info& type = typeid(sink);
    if (type == typeid(StdStringSink) || type == typeid(StreamSink)) {
        return {&static_cast<ConvertingSink&>(sink).buffer, ConvertingSink::BUFFER_CAPACITY, false};
    }
    if (type == typeid(UStringSink)) {
        std::u16string& target = static_cast<UStringSink&>(sink).target;
        return {&target, target.max_size(), true};
    }
    return {};
}

UStringSink::UStringSink(std::u16string& target) : target(target)
{
    target.clear();
}

Sink& UStringSink::write(const std::u16string& text)
{
    target.append(text);
    return *this;
}

std::u16string UStringSink::encodingName() const
{
    return {};
}

void UStringSink::flush() {}

ConvertingSink::ConvertingSink() : converter("UTF-8", true)
{
    buffer.reserve(BUFFER_CAPACITY);
}

Sink& ConvertingSink::write(const std::u16string& text)
{
    buffer.append(text);
    if (buffer.size() > BUFFER_CAPACITY) {
        // Without the first half of a surrogate pair whose second half may follow.
        const std::size_t length = buffer.size() - (text::isHighSurrogate(buffer.back()) ? 1 : 0);
        writeConverted(converter.do_convert(buffer.data(), length));
        buffer.erase(0, length);
    }
    return *this;
}

std::u16string ConvertingSink::encodingName() const
{
    return u"UTF-8";
}

void ConvertingSink::flush()
{
    writeConverted(buffer.empty() ? std::string()
                                  : converter.do_convert(buffer.data(), buffer.size()));
    buffer.clear();
}

StdStringSink::StdStringSink(std::string& target) : target(target)
{
    target.clear();
}

void StdStringSink::writeConverted(const std::string& bytes)
{
    target.append(bytes);
}

StreamSink::StreamSink(std::ostream& stream) : stream(stream) {}

void StreamSink::flush()
{
    ConvertingSink::flush();
    stream.flush();
}

void StreamSink::writeConverted(const std::string& bytes)
{
    stream << bytes;
}

} // namespace tarn::utils

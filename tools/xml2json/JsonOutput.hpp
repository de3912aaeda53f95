// JsonOutput: a buffer before a stream, as an output stream for RapidJSON's writers.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

namespace xml2json {

/// Collects text and passes it on in large pieces. What is left at the end is lost unless push()
/// is called.
class JsonOutput
{
public:
    explicit JsonOutput(std::ostream& stream) : stream(stream) { buffer.reserve(SIZE); }

    /// The members that RapidJSON requires of an output stream.
    using Ch = char;
    void Put(char byte)
    {
        if (buffer.size() == SIZE) [[unlikely]] {
            push();
        }
        buffer += byte;
    }
    /// RapidJSON calls this at the end of each outermost value, of which there can be many.
    void Flush() {}

    void append(std::string_view text)
    {
        if (buffer.size() + text.size() > SIZE) [[unlikely]] {
            push();
        }
        if (text.size() > SIZE) [[unlikely]] {
            write(text);
        } else {
            buffer += text;
        }
    }

    void push()
    {
        write(buffer);
        buffer.clear();
    }

private:
    static constexpr std::size_t SIZE = std::size_t{128} * 1024;

    void write(std::string_view text)
    {
        stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    }

    std::ostream& stream;
    std::string buffer;
};

} // namespace xml2json

// JsonOutput: a buffer before a stream, as an output stream for RapidJSON's writers.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstring>
#include <memory>
#include <ostream>
#include <string_view>

namespace xml2json {

/// Collects text and passes it on in large pieces. What is left at the end is lost unless push()
/// is called.
class JsonOutput
{
public:
    explicit JsonOutput(std::ostream& stream) : stream(stream) {}

    /// The members that RapidJSON requires of an output stream.
    using Ch = char;
    void Put(char byte)
    {
        if (size == SIZE) [[unlikely]] {
            push();
        }
        assert(size < SIZE);
        buffer[size++] = byte;
    }
    /// RapidJSON calls this at the end of each outermost value, of which there can be many.
    void Flush() {}

    void append(std::string_view text)
    {
        if (text.size() > SIZE - size) [[unlikely]] {
            push();
        }
        if (text.size() > SIZE) [[unlikely]] {
            write(text);
        } else {
            assert(text.size() <= SIZE - size);
            std::memcpy(buffer.get() + size, text.data(), text.size());
            size += text.size();
        }
    }

    void push()
    {
        write({buffer.get(), size});
        size = 0;
    }

private:
    static constexpr std::size_t SIZE = std::size_t{128} * 1024;

    void write(std::string_view text)
    {
        stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    }

    std::ostream& stream;
    const std::unique_ptr<char[]> buffer = std::make_unique<char[]>(SIZE);
    std::size_t size = 0;
};

} // namespace xml2json

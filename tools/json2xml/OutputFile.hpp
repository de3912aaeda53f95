// OutputFile: where the XML goes, as a stream buffer that reports every error.
#pragma once

#include "tools/json2xml/FileDescriptor.hpp"
#include "tools/json2xml/TemporaryFile.hpp"

#include <optional>
#include <streambuf>
#include <string>

namespace json2xml {

/// Writes standard output, or a file that takes its name only when it is complete.
///
/// Each piece of text is written at once, since the writer hands on large ones. An error is thrown
/// as a `std::system_error` whose text is `OUTPUT: what is wrong`.
class OutputFile : public std::streambuf
{
public:
    /// @param path the file to write, or `-` for standard output. What is no regular file, or is
    ///        what standard output writes already, is written in place. A file that is replaced
    ///        passes on its permissions.
    explicit OutputFile(const std::string& path);

    /// Closes the output and gives the file its name. Without this call no file is left behind.
    void commit();

protected:
    int_type overflow(int_type byte) override;
    std::streamsize xsputn(const char* bytes, std::streamsize count) override;

private:
    FileDescriptor open(const std::string& path);

    /// How messages name the output.
    std::string name;
    std::optional<TemporaryFile> temporary;
    FileDescriptor descriptor;
};

} // namespace json2xml

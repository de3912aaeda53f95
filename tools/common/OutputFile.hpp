// OutputFile: where the result goes, as a stream buffer that reports every error.
#pragma once

#include "tools/common/FileDescriptor.hpp"
#include "tools/common/TemporaryFile.hpp"

#include <cstddef>
#include <optional>
#include <streambuf>
#include <string>
#include <vector>

namespace tarn::tools {

/// Writes standard output, or a file that takes its name only when it is complete.
///
/// Text is collected until there is enough for a large write. An error is thrown as a
/// `std::system_error` whose text is `OUTPUT: what is wrong`.
class OutputFile : public std::streambuf
{
public:
    /// A file that is no regular file, or that standard output already writes, is written in place.
    /// Another one is replaced by a new file, which has its permissions. But the new file belongs
    /// to the user who runs the program, other hard links still lead to the old file, and extended
    /// attributes and access control lists are lost.
    ///
    /// @param path the file to write, or `-` for standard output.
    /// @param program the name of the program, with which the name of an incomplete file begins.
    OutputFile(const std::string& path, const std::string& program);

    /// Closes the output. A new file is first written to disk, then gets its name, so that a crash
    /// of the system leaves the old file or the complete new one. Without this call the new file
    /// is removed.
    void commit();

protected:
    int_type overflow(int_type byte) override;
    std::streamsize xsputn(const char* bytes, std::streamsize count) override;
    int sync() override;

private:
    static constexpr std::size_t BUFFER_SIZE = std::size_t{128} * 1024;

    /// What is so large is not copied into the buffer.
    static constexpr std::streamsize LARGE_PIECE = BUFFER_SIZE / 4;

    void write(const char* bytes, std::streamsize count);
    FileDescriptor open(const std::string& path, const std::string& program);
    void writeToDisk();

    /// How messages name the output.
    std::string name;
    std::optional<TemporaryFile> temporary;
    FileDescriptor descriptor;
    std::vector<char> buffer = std::vector<char>(BUFFER_SIZE);
};

} // namespace tarn::tools

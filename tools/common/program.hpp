// What a program does besides the conversion itself: its files, progress, messages and exit status.
#pragma once

#include "tools/common/FileDescriptor.hpp"
#include "tools/common/FileOptions.hpp"

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>

namespace tarn::tools {

/// What is to be converted.
struct InputFile
{
    /// Receives the number of bytes read so far, after each block.
    using BlockObserver = std::function<void(std::uint64_t)>;

    FileDescriptor descriptor;
    /// How messages name the input.
    std::string name;
    BlockObserver onBlock;
};

/// The stream throws if it cannot be written.
using Conversion = std::function<void(InputFile input, std::ostream& output)>;

/// Opens the files that @p options name and converts the input; or prints the information that the
/// options ask for.
///
/// @param program the name of the program.
void convertFile(const std::string& program, const FileOptions& options, const Conversion& convert);

/// What main() does: calls @p run and reports what it throws. Returns the exit status.
int runProgram(const std::string& program, const std::function<void()>& run);

} // namespace tarn::tools

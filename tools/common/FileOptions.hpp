// FileOptions: what the command line of every program asks for.
#pragma once

#include <string>

namespace tarn::tools {

struct FileOptions
{
    /// Paths; `-` for standard input and standard output.
    std::string input = "-";
    std::string output = "-";
    bool showsProgress = false;

    /// The help or the version, to be printed instead of a conversion; else empty.
    std::string information;
};

} // namespace tarn::tools

// Options: what the command line asks for.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace json2xml {

constexpr std::size_t DEFAULT_MAXIMUM_DEPTH = 1000;

struct Options
{
    /// Paths; `-` for standard input and standard output.
    std::string input = "-";
    std::string output = "-";
    std::size_t maximumDepth = DEFAULT_MAXIMUM_DEPTH;
    bool showsProgress = false;

    /// What to print instead of converting anything: the help or the version.
    std::string information;
};

/// The command line is wrong; the text says how.
class UsageError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Throws a UsageError for what it does not understand.
Options parseOptions(int argumentCount, const char* const* arguments);

} // namespace json2xml

// Options: what the command line asks for.
#pragma once

#include "tools/json2xml/limits.hpp"

#include <stdexcept>
#include <string>

namespace json2xml {

struct Options
{
    /// Paths; `-` for standard input and standard output.
    std::string input = "-";
    std::string output = "-";
    Limits limits;
    bool showsProgress = false;

    /// The help or the version, to be printed instead of a conversion; else empty.
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

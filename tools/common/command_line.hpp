// The options that all programs have, and the parsing of command lines.
#pragma once

#include "tools/common/FileOptions.hpp"

#include <CLI/App.hpp>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace tarn::tools {

/// The command line is wrong; the text says how.
class UsageError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// What the help of every program says about its files and messages.
inline constexpr char FILE_NOTES[] =
    "The new FILE of --output has the permissions of the old one, but not its owner, hard\n"
    "links, extended attributes and access control lists. It is on disk when the program\n"
    "ends.\n"
    "\n"
    "What is wrong with the input is reported as INPUT:LINE:COLUMN: MESSAGE. Lines and\n"
    "columns count from 1, columns in characters. Standard input is called <stdin>.\n"
    "\n";

/// Adds the help, the version, the input, the output, the depth and the progress.
///
/// @param inputKind what the input is, as in "the JSON file".
/// @param levels what the depth counts.
void addCommonOptions(CLI::App& app, const std::string& inputKind, const std::string& levels,
                      FileOptions& options, std::size_t& depth);

/// Takes decimal digits only. CLI11 itself would also take `-1` and `010` for numbers. Throws a
/// UsageError that names @p option and says that @p text is not @p meaning.
std::size_t parseNumber(const std::string& option, const std::string& text,
                        const std::string& meaning);

/// Sets what the options of @p app are bound to. Throws a UsageError for what it does not
/// understand.
void parseCommandLine(CLI::App& app, int argumentCount, const char* const* arguments,
                      FileOptions& options);

} // namespace tarn::tools

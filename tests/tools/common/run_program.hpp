// Runs the program that is tested: PROGRAM, a path.
#pragma once

#include "support/files.hpp"

#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace tarn::tools::test {

using tarn::tests::Directory;
using tarn::tests::readFile;
using tarn::tests::writeFile;

using Arguments = std::vector<std::string>;

/// How messages name the program.
inline const std::string PROGRAM_NAME = std::filesystem::path(PROGRAM).filename();

/// The shell command for a run with @p arguments.
inline std::string command(const Arguments& arguments)
{
    std::string words = "exec '" PROGRAM "'";
    for (const std::string& argument : arguments) {
        words += " '" + argument + '\'';
    }
    return words;
}

/// How a run ended; -1 if a signal ended it.
struct Result
{
    int status;
    std::string output;
    std::string error;
};

/// Runs the program with @p input as its standard input.
///
/// @param target where its standard output goes: what the shell takes after `>`. If this is empty,
///        it goes to the result.
/// @param setup what the shell does first.
inline Result run(const Arguments& arguments, const std::string& input = "",
                  const std::string& target = "", const std::string& setup = "")
{
    const Directory directory;
    const std::string output = directory / "output";
    writeFile(directory / "input", input);
    const int status =
        std::system((setup + '\n' + command(arguments) + " <" + directory / "input" + " >" +
                     (target.empty() ? output : target) + " 2>" + directory / "error")
                        .c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(output),
            readFile(directory / "error")};
}

} // namespace tarn::tools::test

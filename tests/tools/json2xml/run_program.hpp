// Runs the json2xml that has been built.
#pragma once

#include "support/files.hpp"

#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <vector>

namespace json2xml::test {

using tarn::tests::Directory;
using tarn::tests::readFile;
using tarn::tests::writeFile;

using Arguments = std::vector<std::string>;

/// The shell's words for a run with @p arguments.
inline std::string command(const Arguments& arguments)
{
    std::string words = "exec " JSON2XML;
    for (const std::string& argument : arguments) {
        words += " '" + argument + '\'';
    }
    return words;
}

/// What a finished run has left behind.
struct Result
{
    int status;
    std::string output;
    std::string error;
};

/// Runs json2xml with @p input as its standard input. Its standard output goes to @p target, a file
/// or what else the shell takes after `>`, or if that is empty to the result.
inline Result run(const Arguments& arguments, const std::string& input = "",
                  const std::string& target = "")
{
    const Directory directory;
    const std::string output = directory / "output";
    writeFile(directory / "input", input);
    const int status =
        std::system((command(arguments) + " <" + directory / "input" + " >" +
                     (target.empty() ? output : target) + " 2>" + directory / "error")
                        .c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(output),
            readFile(directory / "error")};
}

} // namespace json2xml::test

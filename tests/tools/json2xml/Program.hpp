// Runs the json2xml that has been built.
#pragma once

#include <filesystem>
#include <ostream>
#include <string>
#include <sys/types.h>
#include <vector>

namespace json2xml::test {

using Arguments = std::vector<std::string>;

/// What a finished run has left behind.
struct Result
{
    int status;
    std::string output;
    std::string error;
    long peakKilobytes;
};

/// Runs json2xml with @p input as its standard input.
Result run(const Arguments& arguments, const std::string& input = "");

/// As above, with @p output, a descriptor, as the standard output. This is how a device is written:
/// as a file to replace, it would be at the mercy of the program under test.
Result run(const Arguments& arguments, const std::string& input, int output);

/// Starts json2xml with descriptors as its three streams.
pid_t start(const Arguments& arguments, int input, int output, int error);

/// A directory that goes away with all that is in it.
class Directory
{
public:
    Directory();
    ~Directory();

    std::string operator/(const std::string& name) const { return path / name; }
    std::vector<std::string> names() const;

private:
    std::filesystem::path path;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& text);

} // namespace json2xml::test

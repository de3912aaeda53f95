// Runs the json2xml that has been built.
#pragma once

#include "support/Files.hpp"

#include <string>
#include <sys/types.h>
#include <vector>

namespace json2xml::test {

using tarn::tests::Directory;
using tarn::tests::readFile;
using tarn::tests::writeFile;

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

} // namespace json2xml::test

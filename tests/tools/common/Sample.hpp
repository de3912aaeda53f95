// Inputs for the tests of the command line, which are the same for every program.
#pragma once

#include <string>

namespace tarn::tools::test {

/// Each test program defines the one of the program that it tests.
struct Sample
{
    std::string input;
    std::string result;

    /// What stands around the text of a string, and around the members of an array.
    std::string stringStart;
    std::string stringEnd;
    std::string arrayStart;
    std::string arrayEnd;

    std::string string(const std::string& text) const { return stringStart + text + stringEnd; }
};

extern const Sample SAMPLE;

} // namespace tarn::tools::test

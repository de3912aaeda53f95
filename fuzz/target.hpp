// What each fuzz target is, and how it reports a fault to libFuzzer.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace tarn::fuzz {

/// The target: tries one input, which can be any bytes.
void check(std::string_view);

/// Says what is wrong and ends the program, which makes libFuzzer keep the input.
inline void require(bool holds, const std::string& otherwise)
{
    if (!holds) {
        std::fprintf(stderr, "FAULT: %s\n", otherwise.c_str());
        std::abort();
    }
}

/// As above, if there is anything to say.
inline void requireNoFault(const std::string& fault)
{
    require(fault.empty(), fault);
}

} // namespace tarn::fuzz

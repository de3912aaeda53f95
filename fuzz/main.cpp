// Hands an input of libFuzzer to the target.
#include "fuzz/target.hpp"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    tarn::fuzz::check({reinterpret_cast<const char*>(bytes), size});
    return 0;
}

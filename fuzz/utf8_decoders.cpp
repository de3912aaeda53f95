// Takes any bytes as UTF-8: every decoder must give what the plain conversion gives.
#include "fuzz/require.hpp"
#include "support/decoding_fault.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    constexpr std::size_t LONGEST = 4096; // a page
    tarn::fuzz::requireNoFault(tarn::tests::faultOfDecoding(
        {reinterpret_cast<const char*>(bytes), std::min(size, LONGEST)}));
    return 0;
}

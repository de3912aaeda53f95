// Takes any bytes as UTF-8: every decoder must give what the plain conversion gives.
#include "fuzz/target.hpp"
#include "support/decoding_fault.hpp"

void tarn::fuzz::check(std::string_view bytes)
{
    constexpr std::size_t LONGEST = 4096; // a page
    requireNoFault(tests::faultOfDecoding(bytes.substr(0, LONGEST)));
}

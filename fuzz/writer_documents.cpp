// Takes any bytes as choices of what a document holds, and writes it as the guide says. libxml2
// must read back what went in.
#include "fuzz/require.hpp"
#include "support/written_document.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    tarn::fuzz::requireNoFault(tarn::tests::faultOfDocument({bytes, size}));
    return 0;
}

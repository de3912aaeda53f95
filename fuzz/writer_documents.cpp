// Documents that are written as the guide says, from any bytes.
#include "fuzz/require.hpp"
#include "support/written_document.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    tarn::fuzz::requireNoFault(tarn::tests::faultOfDocument({bytes, size}));
    return 0;
}

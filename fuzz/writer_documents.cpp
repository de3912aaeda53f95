// Documents that are written as the guide says, from any bytes.
#include "fuzz/Require.hpp"
#include "support/WrittenDocument.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    tarn::fuzz::requireNoFault(tarn::tests::faultOfDocument({bytes, size}));
    return 0;
}

// Documents that are written as the guide says, from any bytes.
#include "fuzz/Require.hpp"
#include "support/WrittenDocument.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string fault = tarn::tests::faultOfDocument({bytes, size});
    tarn::fuzz::require(fault.empty(), fault);
    return 0;
}

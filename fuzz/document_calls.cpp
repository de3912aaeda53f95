// Takes any bytes as calls on documents of the checked layer: what is not allowed must be refused
// and change nothing, and two parsers must read back what went in.
#include "fuzz/require.hpp"
#include "support/DocumentCalls.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    tarn::fuzz::requireNoFault(tarn::tests::faultOfDocumentCalls({bytes, size}));
    return 0;
}

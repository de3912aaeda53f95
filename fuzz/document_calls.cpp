// Takes any bytes as calls on documents of the checked layer: what is not allowed must be refused
// and change nothing, and two parsers must read back what went in.
#include "fuzz/target.hpp"
#include "support/DocumentCalls.hpp"

void tarn::fuzz::check(std::string_view bytes)
{
    requireNoFault(tests::faultOfDocumentCalls(tests::Input(bytes)));
}

// Takes any bytes as choices of what a document holds, and writes it as the guide says. libxml2
// must read back what went in.
#include "fuzz/target.hpp"
#include "support/written_document.hpp"

void tarn::fuzz::check(std::string_view bytes)
{
    requireNoFault(tests::faultOfDocument(tests::Input(bytes)));
}

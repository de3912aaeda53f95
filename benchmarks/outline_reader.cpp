// Reads XML with libxml2.
#include "benchmarks/Outline.hpp"
#include "tests/support/xml_outline.hpp"

namespace benchmarks {

namespace {

std::string readOutline(const std::string& xml)
{
    return tarn::tests::outlineOfXml(xml, tarn::tests::TextBesideElements::LEFT_OUT);
}

[[maybe_unused]] const OutlineReader registration = outlineReader() = readOutline;

} // namespace

} // namespace benchmarks

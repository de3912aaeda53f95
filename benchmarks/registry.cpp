#include "benchmarks/registry.hpp"

namespace benchmarks {

std::vector<Case>& cases()
{
    static std::vector<Case> registered;
    return registered;
}

OutlineReader& outlineReader()
{
    static OutlineReader reader = nullptr;
    return reader;
}

} // namespace benchmarks

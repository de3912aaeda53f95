#include "benchmarks/Registry.hpp"

namespace benchmarks {

std::vector<Case>& cases()
{
    static std::vector<Case> registered;
    return registered;
}

} // namespace benchmarks

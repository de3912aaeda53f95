#include "corda/filesystem/detail/make_native_form.hpp"

#include <algorithm>
#include <string_view>

namespace corda::filesystem::detail {

namespace {

constexpr char16_t SEPARATOR = u'/';
constexpr std::u16string_view THIS_DIRECTORY = u".";

} // namespace

std::u16string make_native_form(const std::u16string& path, bool normalise)
{
    if (!normalise || path.empty()) {
        return path;
    }
    std::u16string shortest;
    if (path.front() == SEPARATOR) {
        shortest = SEPARATOR;
    }
    std::u16string_view rest = path;
    while (!rest.empty()) {
        const std::u16string_view component = rest.substr(0, rest.find(SEPARATOR));
        rest.remove_prefix(std::min(component.size() + 1, rest.size()));
        if (component.empty() || component == THIS_DIRECTORY) {
            continue;
        }
        if (!shortest.empty() && shortest.back() != SEPARATOR) {
            shortest += SEPARATOR;
        }
        shortest += component;
    }
    return shortest.empty() ? std::u16string(THIS_DIRECTORY) : shortest;
}

} // namespace corda::filesystem::detail

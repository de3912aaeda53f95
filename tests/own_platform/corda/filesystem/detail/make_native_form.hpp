#pragma once

#include <string>

namespace corda::filesystem::detail {

/// Puts a mark before the path that shows the call and its flag.
std::u16string make_native_form(const std::u16string& path, bool normalise);

} // namespace corda::filesystem::detail

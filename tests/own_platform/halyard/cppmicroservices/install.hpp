#pragma once

#include "corda/filesystem/basic_path.hpp"

#include <cppmicroservices/Bundle.h>
#include <vector>

namespace halyard::cppmicroservices {

/// Returns two handles that hold the path of the call.
std::vector<::cppmicroservices::Bundle>
install(corda::filesystem::basic_path<char, char16_t,
                                      corda::filesystem::detail::path_traits<char, char16_t>>
            path);

} // namespace halyard::cppmicroservices

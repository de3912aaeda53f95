#include "halyard/cppmicroservices/install.hpp"

#include "halyard/cppmicroservices/bundle_file.hpp"
#include "halyard/cppmicroservices/framework.hpp"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace halyard::cppmicroservices {

namespace {

namespace fs = std::filesystem;

bool can_hold_bundles(const fs::directory_entry& entry)
{
    const std::string& name = entry.path().native();
    return (name.ends_with(".so") || name.ends_with(".zip")) &&
           (entry.is_regular_file() || !entry.exists());
}

/// A link that leads nowhere is among them: what it should lead to may be a bundle.
std::vector<std::string> files_in(const fs::path& directory)
{
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        if (can_hold_bundles(entry)) {
            files.push_back(entry.path());
        }
    }
    std::ranges::sort(files);
    return files;
}

std::vector<bundle_file> bundle_files_at(const fs::path& path)
{
    std::vector<bundle_file> found;
    if (fs::is_directory(path)) {
        for (const std::string& file : files_in(path)) {
            if (std::optional<bundle_file> bundles = read_bundle_file(file)) {
                found.push_back(*std::move(bundles));
            }
        }
        return found;
    }
    std::optional<bundle_file> bundles = read_bundle_file(path);
    if (!bundles) {
        throw std::runtime_error(path.native() + ": the file holds no bundle");
    }
    found.push_back(*std::move(bundles));
    return found;
}

} // namespace

std::vector<::cppmicroservices::Bundle>
install(corda::filesystem::basic_path<char, char16_t,
                                      corda::filesystem::detail::path_traits<char, char16_t>>
            path) // NOLINT(performance-unnecessary-value-param): the interface passes it so
{
    if (path.empty()) {
        return {};
    }
    return install_into_framework(bundle_files_at(fs::absolute(path.native())));
}

} // namespace halyard::cppmicroservices

#include "halyard/cppmicroservices/install.hpp"

#include "common/system_error.hpp"
#include "halyard/cppmicroservices/bundle_file.hpp"
#include "halyard/cppmicroservices/framework.hpp"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace halyard::cppmicroservices {

namespace {

bool is_directory(const std::string& path)
{
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// A link that leads nowhere can hold bundles: what it should lead to may be one.
bool can_hold_bundles(const std::string& path)
{
    struct stat status;
    return (path.ends_with(".so") || path.ends_with(".zip")) &&
           (::stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode));
}

/// By the system's functions, since the standard's iterator ends the program if memory runs out.
std::vector<std::string> files_in(const std::string& directory)
{
    struct close_directory
    {
        void operator()(DIR* open) const { ::closedir(open); }
    };
    const std::unique_ptr<DIR, close_directory> open(::opendir(directory.c_str()));
    if (open == nullptr) {
        tarn::common::throwSystemError(directory);
    }
    std::vector<std::string> files;
    for (;;) {
        errno = 0;
        const dirent* const entry = ::readdir(open.get());
        if (entry == nullptr) {
            break;
        }
        std::string file = directory + '/' + entry->d_name;
        if (can_hold_bundles(file)) {
            files.push_back(std::move(file));
        }
    }
    if (errno != 0) {
        tarn::common::throwSystemError(directory);
    }
    std::ranges::sort(files);
    return files;
}

std::vector<bundle_file> bundle_files_at(const std::string& path)
{
    std::vector<bundle_file> found;
    if (is_directory(path)) {
        for (const std::string& file : files_in(path)) {
            if (std::optional<bundle_file> bundles = read_bundle_file(file)) {
                found.push_back(*std::move(bundles));
            }
        }
        return found;
    }
    std::optional<bundle_file> bundles = read_bundle_file(path);
    if (!bundles) {
        throw std::runtime_error(path + ": the file holds no bundle");
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
    try {
        return install_into_framework(bundle_files_at(std::filesystem::absolute(path.native())));
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::not_enough_memory) {
            throw std::bad_alloc();
        }
        throw;
    }
}

} // namespace halyard::cppmicroservices

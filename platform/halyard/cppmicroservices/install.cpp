#include "halyard/cppmicroservices/install.hpp"

#include "common/system_error.hpp"
#include "halyard/cppmicroservices/bundle_file.hpp"
#include "halyard/cppmicroservices/framework.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
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

/// A file of which nothing is known can hold bundles, so that a link that leads nowhere is
/// reported.
bool can_hold_bundles(const std::string& path)
{
    struct stat status;
    return (path.ends_with(".so") || path.ends_with(".zip")) &&
           (::stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode));
}

/// Uses the system's functions, because std::filesystem::directory_iterator of libstdc++ ends the
/// program if memory runs out.
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

/// The path of the file at @p path without symbolic links, `.` and `..`.
std::string canonical_path(const std::string& path)
{
    struct free_memory
    {
        void operator()(char* memory) const { std::free(memory); }
    };
    const std::unique_ptr<char, free_memory> canonical(::realpath(path.c_str(), nullptr));
    if (canonical == nullptr) {
        tarn::common::throwSystemError(path);
    }
    return canonical.get();
}

bool is_at(const file_identity& identity, const std::string& path)
{
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 &&
           identity == file_identity{status.st_dev, status.st_ino};
}

/// Installs the bundles of @p files. A file that is there twice, or was installed before, counts
/// once, whichever paths lead to it: its location is the one where it was found first.
std::vector<::cppmicroservices::Bundle> install_once(std::vector<bundle_file> files)
{
    static std::mutex mutex;
    static std::map<file_identity, std::string> locations;

    const std::lock_guard lock(mutex);
    std::map<file_identity, std::string> added;
    std::vector<bundle_file> different;
    for (bundle_file& file : files) {
        file.location = canonical_path(file.location);
        if (const auto known = locations.find(file.identity); known != locations.end()) {
            // A file that has been removed since may have left its identity to this one.
            if (is_at(file.identity, known->second)) {
                file.location = known->second;
            } else {
                locations.erase(known);
            }
        }
        if (added.emplace(file.identity, file.location).second) {
            different.push_back(std::move(file));
        }
    }
    std::vector<::cppmicroservices::Bundle> handles = install_into_framework(different);
    locations.merge(added); // allocates nothing
    return handles;
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
        return install_once(bundle_files_at(std::filesystem::absolute(path.native())));
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::not_enough_memory) {
            throw std::bad_alloc();
        }
        throw;
    }
}

} // namespace halyard::cppmicroservices

#include "halyard/cppmicroservices/bundle_file.hpp"

#include "halyard/cppmicroservices/bundle_manifest.hpp"
#include "halyard/cppmicroservices/find_archive.hpp"
#include "halyard/cppmicroservices/readable_file.hpp"
#include "halyard/cppmicroservices/zip_reader.hpp"

#include <algorithm>
#include <map>
#include <new>
#include <stdexcept>
#include <string_view>

namespace halyard::cppmicroservices {

namespace {

constexpr std::string_view MANIFEST_NAME = "manifest.json";

/// The bundles that have been found.
struct Bundles
{
    /// By name.
    std::map<std::string, std::string, std::less<>> versions;
    std::size_t manifest_bytes = 0;
};

/// The first component of @p entry_name, if there are more; else nothing.
std::string_view folder_of(std::string_view entry_name)
{
    const std::size_t separator = entry_name.find('/');
    return separator == std::string_view::npos ? "" : entry_name.substr(0, separator);
}

bool leads_out(std::string_view entry_name)
{
    const std::string padded = '/' + std::string(entry_name) + '/';
    return padded.starts_with("//") || padded.find("/../") != std::string::npos ||
           padded.find('\0') != std::string::npos;
}

void add_bundle(zip_reader& archive, Bundles& bundles)
{
    const std::string_view folder = folder_of(archive.name());
    if (bundles.versions.contains(folder)) {
        throw std::runtime_error(archive.name() + " is there twice");
    }
    if (bundles.versions.size() == MOST_BUNDLES) {
        throw std::runtime_error("more than " + std::to_string(MOST_BUNDLES) + " bundles");
    }
    const std::string manifest = archive.contents(LONGEST_MANIFEST);
    bundles.manifest_bytes += manifest.size();
    if (bundles.manifest_bytes > LONGEST_OF_ALL_MANIFESTS) {
        throw std::runtime_error("the manifests are too long together: more than " +
                                 std::to_string(LONGEST_OF_ALL_MANIFESTS) + " bytes");
    }
    try {
        bundles.versions.emplace(folder, read_bundle_version(manifest));
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(archive.name() + ": " + error.what());
    }
}

Bundles read_bundles(zip_reader& archive)
{
    Bundles bundles;
    for (bool isEntry = archive.go_to_first(); isEntry; isEntry = archive.go_to_next()) {
        const std::string_view folder = folder_of(archive.name());
        if (!folder.empty() && archive.name().size() == folder.size() + 1 + MANIFEST_NAME.size() &&
            archive.name().ends_with(MANIFEST_NAME)) {
            add_bundle(archive, bundles);
        }
    }
    return bundles;
}

/// Checks that each folder is a bundle and that no entry leads out of the archive.
void check_entries(zip_reader& archive, const Bundles& bundles)
{
    for (bool isEntry = archive.go_to_first(); isEntry; isEntry = archive.go_to_next()) {
        const std::string_view folder = folder_of(archive.name());
        if (leads_out(archive.name())) {
            throw std::runtime_error("the entry " +
                                     archive.name().substr(0, archive.name().find('\0')) +
                                     " leads out of the archive");
        }
        if (!folder.empty() && !bundles.versions.contains(folder)) {
            throw std::runtime_error("the bundle " + std::string(folder) + " has no " +
                                     std::string(MANIFEST_NAME));
        }
    }
}

} // namespace

std::optional<bundle_file> read_bundle_file(const std::string& path)
{
    const readable_file file(path);
    Bundles bundles;
    try {
        const std::optional<byte_range> range = find_archive(file);
        if (!range) {
            return std::nullopt;
        }
        zip_reader archive(file, *range);
        bundles = read_bundles(archive);
        if (bundles.versions.empty()) {
            return std::nullopt;
        }
        check_entries(archive, bundles);
    } catch (const std::system_error&) {
        throw; // its text names the file already
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(path + ": " + error.what());
    }
    bundle_file found{path, file.identity(), {}};
    for (const auto& [name, version] : bundles.versions) {
        found.bundles.push_back({name, version});
    }
    return found;
}

} // namespace halyard::cppmicroservices

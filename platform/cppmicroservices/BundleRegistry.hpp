// The bundles of a service framework that does nothing but keep them.
#pragma once

#include <cppmicroservices/Bundle.h>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace cppmicroservices {

/// A bundle that is to be installed.
struct NewBundle
{
    std::string symbolicName;
    std::string version;
    /// The path of the file that holds the bundle.
    std::string location;
};

/// All installed bundles. Can be used by several threads at once.
class BundleRegistry
{
public:
    /// Installs the bundles of some files: all of them or, if it throws, none. A file whose bundles
    /// are already installed keeps these. Takes time in proportion to n log n for n bundles.
    ///
    /// @param wanted the bundles; those of one file stand together.
    /// @return the handles of the files' bundles, in the order of @p wanted.
    /// @throws std::runtime_error that names the file, if a bundle of the same name and version is
    ///     installed from another file.
    std::vector<Bundle> install(std::span<const NewBundle> wanted);

private:
    /// Bundles, to be found by the file that they are from, and by name and version.
    struct Index
    {
        std::map<std::string, std::vector<Bundle>> byLocation;
        std::map<std::pair<std::string, std::string>, Bundle> byName;
    };

    /// Adds the bundles of one file to @p added, if they are not installed.
    /// @return the handles of the bundles that the file has then.
    const std::vector<Bundle>& addFile(std::span<const NewBundle> wanted, Index& added) const;

    std::mutex mutex;
    Index installed;
};

} // namespace cppmicroservices

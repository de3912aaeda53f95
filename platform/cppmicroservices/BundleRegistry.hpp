// The bundles of a service framework that does nothing but keep them.
#pragma once

#include <cppmicroservices/Bundle.h>
#include <mutex>
#include <span>
#include <string>
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
    /// are installed already keeps these.
    ///
    /// @param wanted the bundles; those of one file stand together.
    /// @return the handles of the files' bundles, in the order of @p wanted.
    /// @throws std::runtime_error that names the file, if another one has brought a bundle of the
    ///     same name and version.
    std::vector<Bundle> install(std::span<const NewBundle> wanted);

private:
    struct Installed
    {
        Bundle bundle;
        std::string version;
    };

    /// Adds the bundles of one file to @p added, and to @p handles those that it has now.
    void installFile(std::span<const NewBundle> wanted, std::vector<Installed>& added,
                     std::vector<Bundle>& handles) const;

    std::mutex mutex;
    /// In the order of their numbers.
    std::vector<Installed> installed;
};

} // namespace cppmicroservices

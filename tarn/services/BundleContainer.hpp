// BundleContainer: the service bundles found at a path.
#pragma once

#include "tarn/export.hpp"

#include <cppmicroservices/Bundle.h>
#include <cstddef>
#include <string>
#include <vector>

/// What stands between the callers of the library and the service framework.
namespace tarn::utils::services {

/// Installs the bundles found at a path into the service framework of the process, and holds their
/// handles for as long as it lives.
///
/// @code
///     tarn::utils::services::BundleContainer container(u"/opt/application/bundles");
///     for (const cppmicroservices::Bundle& bundle : container.getBundles()) {
///         std::cout << bundle.GetSymbolicName() << '\n';
///     }
/// @endcode
///
/// Bundles are installed and not started. They stay installed when the container is destroyed; only
/// the handles go. A path that is installed again, by this container's program or a part of it that
/// knows nothing of this one, gives handles of the same bundles.
///
/// **Threads.** Containers can be made by several threads at once. One container is used by one
/// thread at a time.
class TARN_EXPORT BundleContainer
{
public:
    /// The handles in a container: iterators to them, and no copies.
    class Bundles
    {
    public:
        using iterator = std::vector<cppmicroservices::Bundle>::iterator; ///< Of random access.

        /// Those from @p first to before @p last.
        Bundles(iterator first, iterator last) : first(first), last(last) {}

        iterator begin() const { return first; }     ///< The first handle.
        iterator end() const { return last; }        ///< One past the last handle.
        bool empty() const { return first == last; } ///< Whether there are none.
        /// How many there are.
        std::size_t size() const { return static_cast<std::size_t>(last - first); }

        /// Whether both are the handles of the same container.
        bool operator==(const Bundles& other) const
        {
            return first == other.first && last == other.last;
        }
        /// Whether they are those of different containers.
        bool operator!=(const Bundles& other) const { return !(*this == other); }

    private:
        iterator first;
        iterator last;
    };

    /// Installs the bundles at @p path.
    ///
    /// @param path of a file, which holds one bundle or more: a zip archive, or a shared library
    ///     with one. Or of a directory: the bundles of all `.so` and `.zip` files directly in it,
    ///     in the order of the files' names; files without bundles are passed over. An empty path
    ///     names no bundle.
    /// @throws std::runtime_error that names the path and says what is wrong, if there is nothing
    ///     at @p path, it cannot be a path (an unpaired surrogate, a NUL), a file holds no bundle
    ///     or a damaged one, or a bundle of the same name and version is installed from elsewhere.
    ///     No bundle of @p path has been installed then that was not before.
    explicit BundleContainer(const std::u16string& path);

    BundleContainer(const BundleContainer&) = delete;
    BundleContainer& operator=(const BundleContainer&) = delete;

    /// Makes a container with `new`; the caller is to `delete` it.
    /// @throws what the constructor throws; nothing is left allocated then.
    static BundleContainer* createBundleContainer(const std::u16string& path);

    /// The handles, in the order in which the bundles were installed. Valid for as long as the
    /// container lives.
    Bundles getBundles();

private:
    std::vector<cppmicroservices::Bundle> bundles;
};

} // namespace tarn::utils::services

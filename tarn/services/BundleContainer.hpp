// BundleContainer: the service bundles found at a path. The guide, docs/guide.md, has a section on
// them (installed as share/doc/libtarn-utils-dev/guide.md).
#pragma once

#include "tarn/export.hpp"

#include <cppmicroservices/Bundle.h>
#include <cstddef>
#include <string>
#include <vector>

/// What connects callers of the library with the service framework.
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
/// the handles are destroyed. A file that is installed again, by any container in the process and
/// by any path that leads to it, gives handles of the same bundles.
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
    /// @param path a file or a directory; relative to the current directory, symbolic links are
    ///     followed. A file is a zip archive of one bundle or more, or a shared library that
    ///     contains one. Of a directory, the bundles of all `.so` and `.zip` files directly in it
    ///     are installed, in the order of the files' names; files without bundles are skipped. An
    ///     empty path names no bundle.
    /// @throws std::runtime_error that names the path and says what is wrong, if nothing is at
    ///     @p path, it cannot be a path (an unpaired surrogate, a NUL), a file holds no bundle or a
    ///     damaged one, or a bundle of the same name and version is installed from another file.
    ///     Then no bundle of @p path has been installed by this call.
    explicit BundleContainer(const std::u16string& path);

    BundleContainer(const BundleContainer&) = delete;
    BundleContainer& operator=(const BundleContainer&) = delete;

    /// Makes a container with `new`. The caller owns it and has to `delete` it.
    /// @throws what the constructor throws; then nothing stays allocated.
    static BundleContainer* createBundleContainer(const std::u16string& path);

    /// The handles, in the order in which the bundles were installed. Valid for as long as the
    /// container lives.
    Bundles getBundles();

private:
    std::vector<cppmicroservices::Bundle> bundles;
};

} // namespace tarn::utils::services

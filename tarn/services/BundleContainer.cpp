#include "tarn/services/BundleContainer.hpp"

#include <corda/filesystem/basic_path.hpp>
#include <corda/filesystem/detail/make_native_form.hpp>
#include <halyard/cppmicroservices/install.hpp>

#include <utility>

namespace tarn::utils::services {

BundleContainer::BundleContainer(const std::u16string& path)
{
    using namespace corda::filesystem;
    using Path = basic_path<char, char16_t, detail::path_traits<char, char16_t>>;

    Path nativePath = path.empty() ? Path() : Path(detail::make_native_form(path, true));
    bundles = halyard::cppmicroservices::install(std::move(nativePath));
}

BundleContainer* BundleContainer::createBundleContainer(const std::u16string& path)
{
    return new BundleContainer(path);
}

BundleContainer::Bundles BundleContainer::getBundles()
{
    return {bundles.begin(), bundles.end()};
}

} // namespace tarn::utils::services

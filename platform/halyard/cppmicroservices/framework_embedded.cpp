#include "halyard/cppmicroservices/framework.hpp"

#include "cppmicroservices/BundleRegistry.hpp"

namespace halyard::cppmicroservices {

std::vector<::cppmicroservices::Bundle> install_into_framework(std::span<const bundle_file> files)
{
    static ::cppmicroservices::BundleRegistry registry;

    std::vector<::cppmicroservices::NewBundle> bundles;
    for (const bundle_file& file : files) {
        for (const bundle_description& bundle : file.bundles) {
            bundles.push_back({bundle.name, bundle.version, file.location});
        }
    }
    return registry.install(bundles);
}

} // namespace halyard::cppmicroservices

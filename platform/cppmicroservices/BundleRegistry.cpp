#include "cppmicroservices/BundleRegistry.hpp"

#include <algorithm>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>

namespace cppmicroservices {

std::vector<Bundle> BundleRegistry::install(std::span<const NewBundle> wanted)
{
    const std::lock_guard lock(mutex);
    std::vector<Bundle> handles;
    std::vector<Installed> added;
    while (!wanted.empty()) {
        const auto otherFile = std::ranges::find_if(wanted, [&](const NewBundle& bundle) {
            return bundle.location != wanted.front().location;
        });
        const auto count = static_cast<std::size_t>(otherFile - wanted.begin());
        installFile(wanted.first(count), added, handles);
        wanted = wanted.subspan(count);
    }
    installed.reserve(installed.size() + added.size());
    std::ranges::move(added, std::back_inserter(installed));
    return handles;
}

void BundleRegistry::installFile(std::span<const NewBundle> wanted, std::vector<Installed>& added,
                                 std::vector<Bundle>& handles) const
{
    const std::size_t before = handles.size();
    for (const auto& [bundle, version] : installed) {
        if (bundle.GetLocation() == wanted.front().location) {
            handles.push_back(bundle);
        }
    }
    if (handles.size() > before) {
        return;
    }
    for (const NewBundle& each : wanted) {
        for (const std::vector<Installed>* const bundles : {&installed, &std::as_const(added)}) {
            const auto same = std::ranges::find_if(*bundles, [&](const Installed& other) {
                return other.bundle.GetSymbolicName() == each.symbolicName &&
                       other.version == each.version;
            });
            if (same != bundles->end()) {
                throw std::runtime_error(each.location + ": the bundle " + each.symbolicName + ' ' +
                                         each.version + " is installed already, from " +
                                         same->bundle.GetLocation());
            }
        }
        const auto id = static_cast<long>(installed.size() + added.size() + 1);
        handles.push_back(Bundle(std::make_shared<const Bundle::Record>(
            Bundle::Record{id, each.symbolicName, each.location})));
        added.push_back({handles.back(), each.version});
    }
}

} // namespace cppmicroservices

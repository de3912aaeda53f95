#include "cppmicroservices/BundleRegistry.hpp"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

namespace cppmicroservices {

namespace {

[[noreturn]] void refuse(const NewBundle& bundle, const std::string& installedFrom)
{
    throw std::runtime_error(bundle.location + ": the bundle " + bundle.symbolicName + ' ' +
                             bundle.version + " is installed already, from " + installedFrom);
}

} // namespace

std::vector<Bundle> BundleRegistry::install(std::span<const NewBundle> wanted)
{
    const std::lock_guard lock(mutex);
    std::vector<Bundle> handles;
    Index added;
    while (!wanted.empty()) {
        const auto otherFile = std::ranges::find_if(wanted, [&](const NewBundle& bundle) {
            return bundle.location != wanted.front().location;
        });
        const auto count = static_cast<std::size_t>(otherFile - wanted.begin());
        const std::vector<Bundle>& bundles = addFile(wanted.first(count), added);
        handles.insert(handles.end(), bundles.begin(), bundles.end());
        wanted = wanted.subspan(count);
    }
    // Merging moves the entries and allocates nothing, so that all are installed or none.
    installed.byLocation.merge(added.byLocation);
    installed.byName.merge(added.byName);
    return handles;
}

const std::vector<Bundle>& BundleRegistry::addFile(std::span<const NewBundle> wanted,
                                                   Index& added) const
{
    const std::string& location = wanted.front().location;
    if (const auto known = installed.byLocation.find(location);
        known != installed.byLocation.end()) {
        return known->second;
    }
    std::vector<Bundle>& bundles = added.byLocation[location];
    for (const NewBundle& bundle : wanted) {
        for (const Index* const index : {&installed, &std::as_const(added)}) {
            const auto same = index->byName.find({bundle.symbolicName, bundle.version});
            if (same != index->byName.end()) {
                refuse(bundle, same->second.GetLocation());
            }
        }
        const auto id = static_cast<long>(installed.byName.size() + added.byName.size() + 1);
        bundles.push_back(Bundle(std::make_shared<const Bundle::Record>(
            Bundle::Record{id, bundle.symbolicName, location})));
        added.byName.emplace(std::pair(bundle.symbolicName, bundle.version), bundles.back());
    }
    return bundles;
}

} // namespace cppmicroservices

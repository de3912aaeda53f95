#include "halyard/cppmicroservices/framework.hpp"

#include <algorithm>
#include <chrono>
#include <cppmicroservices/BundleContext.h>
#include <cppmicroservices/Framework.h>
#include <cppmicroservices/FrameworkEvent.h>
#include <cppmicroservices/FrameworkFactory.h>
#include <exception>
#include <mutex>
#include <new>
#include <stdexcept>

namespace halyard::cppmicroservices {

namespace {

using ::cppmicroservices::Bundle;

/// Runs from its first use to the end of the process.
class running_framework
{
public:
    running_framework() : framework(::cppmicroservices::FrameworkFactory().NewFramework())
    {
        framework.Start();
    }

    ~running_framework()
    {
        try {
            framework.Stop();
            framework.WaitForStop(std::chrono::milliseconds::zero()); // zero: as long as it takes
        } catch (const std::exception&) {
            // The process ends, and nobody is left to be told.
        }
    }

    std::vector<Bundle> install(std::span<const bundle_file> files)
    {
        const std::lock_guard lock(mutex);
        std::vector<Bundle> handles;
        std::vector<Bundle> added;
        try {
            for (const bundle_file& file : files) {
                install_file(file, added, handles);
            }
        } catch (...) {
            for (Bundle& bundle : added) {
                bundle.Uninstall();
            }
            throw;
        }
        return handles;
    }

private:
    void install_file(const bundle_file& file, std::vector<Bundle>& added,
                      std::vector<Bundle>& handles)
    {
        ::cppmicroservices::BundleContext context = framework.GetBundleContext();
        const bool isNew = context.GetBundles(file.location).empty();
        std::vector<Bundle> bundles;
        try {
            bundles = context.InstallBundles(file.location);
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& error) {
            throw std::runtime_error(file.location + ": " + error.what());
        }
        if (isNew) {
            added.insert(added.end(), bundles.begin(), bundles.end());
        }
        // A file that is installed again gives its bundles in any order.
        std::sort(bundles.begin(), bundles.end());
        handles.insert(handles.end(), bundles.begin(), bundles.end());
    }

    ::cppmicroservices::Framework framework;
    /// Held by one installation at a time, so that it can tell which bundles it has added.
    std::mutex mutex;
};

} // namespace

std::vector<Bundle> install_into_framework(std::span<const bundle_file> files)
{
    static running_framework framework;
    return framework.install(files);
}

} // namespace halyard::cppmicroservices

// Each allocation fails in turn while bundles are installed: the call throws std::bad_alloc, and
// installs nothing.

#include "support/FailingAllocation.hpp"
#include "support/files.hpp"
#include "support/zip.hpp"

#include <tarn/services/BundleContainer.hpp>

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace tarn::tests {

namespace {

TEST(AllocationFailures, InstallNoBundle)
{
#ifndef FRAMEWORK_IS_EMBEDDED
    GTEST_SKIP() << "the service framework's own allocations would fail too";
#endif
    // A directory for one failure at a time, another for many.
    const Directory directories[2];
    std::vector<std::u16string> paths;
    for (const Directory& directory : directories) {
        paths.push_back(std::filesystem::path(directory / "").u16string());
        for (const char* const name : {"first", "second"}) {
            const std::string unique = name + std::to_string(paths.size());
            writeFile(directory / name + ".zip", bundleZip(unique));
        }
    }
    long installed = 0;
    failEachAllocation([&](FailingAllocation& failure) {
        std::optional<utils::services::BundleContainer> container;
        if (failure.during([&] { container.emplace(paths.at(installed == 0 ? 0 : 1)); })) {
            return;
        }
        // One that had been installed by a call that failed would have taken a number.
        for (const cppmicroservices::Bundle& bundle : container->getBundles()) {
            EXPECT_EQ(bundle.GetBundleId(), ++installed);
        }
    });
    EXPECT_EQ(installed, 4);
}

} // namespace

} // namespace tarn::tests

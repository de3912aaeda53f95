// Takes any bytes as a file that holds bundles, as the manifest of a bundle, and as choices of what
// an archive holds. Only std::runtime_error may be thrown.
//
// Bundles are installed into a new registry for each input, because the registry of the process
// would remember earlier inputs.
#include "fuzz/target.hpp"
#include "support/Input.hpp"
#include "support/zip.hpp"

#include <cppmicroservices/BundleRegistry.hpp>
#include <halyard/cppmicroservices/bundle_file.hpp>

#include <optional>
#include <stdexcept>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace tarn::fuzz {

namespace {

using tests::Input;

/// An archive whose headers are true except for a few wrong sizes, checksums, flags and methods.
std::string makeArchive(Input input)
{
    static const std::string NAMES[] = {
        "a/manifest.json", "b/manifest.json", "a/", "a/x", "c/y", "/a", "../a",
        "a/../b",          "manifest.json"};
    static const std::string CONTENTS[] = {R"({"bundle.symbolic_name":"a"})", "", "[]"};
    const auto bytes = [&] {
        const std::u16string text = input.text();
        return std::string(text.begin(), text.end());
    };
    constexpr std::size_t MOST_ENTRIES = 50;
    std::vector<tests::ZipEntry> entries;
    while (!input.isEmpty() && entries.size() < MOST_ENTRIES) {
        tests::ZipEntry entry;
        entry.name = input.below(4) == 0 ? bytes() : input.pick(NAMES);
        entry.contents = input.below(4) == 0 ? bytes() : input.pick(CONTENTS);
        static constexpr std::uint32_t SIZES[] = {0, 1, 0xFFFF, 0x100000, 0x7FFFFFFF, 0xFFFFFFFF};
        if (const std::size_t wrong = input.below(16); wrong == 0) {
            entry.claimedSize = input.pick(SIZES);
        } else if (wrong == 1) {
            entry.claimedChecksum = 0;
        } else if (wrong == 2) {
            entry.flags = static_cast<std::uint16_t>(input.below(16));
        } else if (wrong == 3) {
            entry.method = static_cast<std::uint16_t>(input.below(100));
        }
        entries.push_back(std::move(entry));
    }
    return zip(entries,
               entries.size() % 8 == 7 ? std::optional<std::uint16_t>(0xFFFF) : std::nullopt);
}

/// A file in memory, the same for all inputs.
std::string pathOfFileWith(std::string_view bytes)
{
    static const int descriptor = ::memfd_create("bundles", MFD_CLOEXEC);
    require(::ftruncate(descriptor, 0) == 0 && ::pwrite(descriptor, bytes.data(), bytes.size(),
                                                        0) == static_cast<ssize_t>(bytes.size()),
            "no file in memory");
    return "/proc/self/fd/" + std::to_string(descriptor);
}

void install(std::string_view bytes)
{
    const std::string path = pathOfFileWith(bytes);
    std::optional<halyard::cppmicroservices::bundle_file> file;
    try {
        file = halyard::cppmicroservices::read_bundle_file(path);
    } catch (const std::runtime_error& error) {
        require(std::string_view(error.what()).starts_with(path),
                std::string("the path is missing: ") + error.what());
        return;
    }
    if (!file) {
        return;
    }
    std::vector<cppmicroservices::NewBundle> bundles;
    for (const auto& [name, version] : file->bundles) {
        require(!name.empty() && !version.empty(), "a bundle without a name or a version");
        bundles.push_back({name, version, file->location});
    }
    cppmicroservices::BundleRegistry registry;
    const std::vector<cppmicroservices::Bundle> handles = registry.install(bundles);
    require(!bundles.empty() && handles.size() == bundles.size(), "a handle is missing");
    require(registry.install(bundles) == handles, "the same file gives other bundles");
}

} // namespace

void check(std::string_view bytes)
{
    install(bytes);
    install(tests::zip({{"bundle/manifest.json", std::string(bytes)}}));
    install(makeArchive(Input(bytes)));
}

} // namespace tarn::fuzz

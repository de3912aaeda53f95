// Installs the bundles of a file or of a directory, and lists them.
//
//     list_bundles /opt/application/bundles
#include <tarn/services/BundleContainer.hpp>

#include <exception>
#include <filesystem>
#include <iostream>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: list_bundles PATH\n";
        return 2;
    }
    try {
        // [snippet: bundles]
        tarn::utils::services::BundleContainer container(
            std::filesystem::path(argv[1]).u16string());
        for (const cppmicroservices::Bundle& bundle : container.getBundles()) {
            const std::filesystem::path file = bundle.GetLocation();
            std::cout << bundle.GetBundleId() << ' ' << bundle.GetSymbolicName() << ", of "
                      << file.filename().string() << '\n';
        }
        // [end]
    } catch (const std::exception& error) {
        std::cerr << "list_bundles: " << error.what() << '\n';
        return 1;
    }
    return std::cout.flush() ? 0 : 1;
}

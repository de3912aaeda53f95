// How a bundle container uses the base layer: it brings a path into the native form, unless there
// is none, and keeps the handles that the installer returns.
#include <tarn/services/BundleContainer.hpp>

#include <iostream>

int main()
{
    const std::u16string paths[][2] = {{u"a/b", u"normalised a/b"}, {u"", u""}};
    for (const auto& [path, expected] : paths) {
        int id = 0;
        tarn::utils::services::BundleContainer container(path);
        for (const cppmicroservices::Bundle& bundle : container.getBundles()) {
            if (bundle.id != ++id || bundle.path != expected) {
                std::cout << "wrong for a path of " << path.size() << " code units\n";
                return 1;
            }
        }
        if (id != 2) {
            std::cout << id << " handles\n";
            return 1;
        }
    }
}

// How a bundle container uses the base layer: it converts a path to the native form, unless the
// path is empty, and keeps the handles that the installer returns.
#include <tarn/services/BundleContainer.hpp>

#include <iostream>

int main()
{
    for (const std::u16string path : {u"a/b", u""}) {
        std::u16string log;
        tarn::utils::services::BundleContainer container(path);
        for (const cppmicroservices::Bundle& bundle : container.getBundles()) {
            log += static_cast<char16_t>(u'0' + bundle.id) + (u' ' + bundle.path) + u',';
        }
        if (log != (path.empty() ? u"1 ,2 ," : u"1 normalised a/b,2 normalised a/b,")) {
            std::cout << "wrong for a path of " << path.size() << " code units\n";
            return 1;
        }
    }
}

// Writes what comes from outside: what the document layer refuses, what the plain writer makes
// harmless, and what its caller checks. The snippets of SECURITY.md.
#include <tarn/document/Document.hpp>
#include <tarn/services/BundleContainer.hpp>
#include <tarn/xml/XmlWriter.hpp>

#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace tarn::document;
using tarn::utils::XmlWriter;
using tarn::utils::services::BundleContainer;

const std::u16string NONE;

// [snippet: hostile-field]
void writeField(Element& record, std::string_view key, std::string_view value)
{
    try {
        record.add(key, value);
    } catch (const Error&) { // The key is no name; nothing has been written.
        record.child("field").attribute("name", key).text(value);
    }
}
// [end]

std::string fields()
{
    // [snippet: hostile-fields]
    std::string xml;
    Options options;
    options.unrepresentable = Unrepresentable::replace;
    options.declaration = false;
    Document document(xml, options);
    Element record = document.root("record");
    writeField(record, "title", "Peaks</title><!DOCTYPE x [ ]]> &lt;");
    writeField(record, "x><admin/", "yes");
    writeField(record, "note", "nothing more\x01 \xC0\xAF.");
    document.finish();
    // [end]
    return xml;
}

std::string refused()
{
    std::string xml;
    Document document(xml);
    Element record = document.root("record");
    // [snippet: hostile-refused]
    try {
        record.comment("--><admin/><!--");
    } catch (const Error& error) {
        return error.what();
    }
    // [end]
    return "not refused";
}

std::string values()
{
    std::string xml;
    XmlWriter writer(xml);
    writer.writeStartDocument();
    // [snippet: hostile-values]
    writer.writeStartElement(u"comment", NONE, NONE);
    writer.writeAttribute(u"by", u"\" admin=\"yes");
    writer.writeValue(u"</comment><!DOCTYPE x [ ]]> &lt;");
    writer.writeEndElement();
    // [end]
    writer.writeEndDocument();
    return xml.substr(xml.find('\n') + 1);
}

std::string version(const std::u16string& wanted)
{
    // [snippet: hostile-version]
    std::string xml;
    XmlWriter writer(xml);
    writer.writeStartDocument(wanted == u"1.1" ? wanted : XmlWriter::DEFAULT_VERSION);
    // [end]
    writer.writeElement(u"version", wanted);
    writer.writeEndDocument();
    return xml;
}

std::string bundles(const std::u16string& path)
{
    // [snippet: hostile-bundles]
    std::string names;
    try {
        BundleContainer container(path);
        for (const cppmicroservices::Bundle& bundle : container.getBundles()) {
            names += bundle.GetSymbolicName() + '\n';
        }
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return names;
    // [end]
}

} // namespace

int main()
{
    std::cout << "== hostile-fields\n"
              << fields() << "\n== hostile-refused\n"
              << refused() << "\n== hostile-values\n"
              << values() << "\n== hostile-version\n"
              << version(u"1.0\"?><admin/>") << "\n== hostile-bundles\n"
              << bundles(u"/no/such/bundles.zip") << '\n';
    return std::cout ? 0 : 1;
}

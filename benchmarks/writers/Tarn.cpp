// This project's writer, over each of its targets.
#include "benchmarks/Registry.hpp"

#include "tarn/xml/XmlWriter.hpp"

#include <sstream>

namespace benchmarks {

namespace {

template <class Target>
class Tarn
{
public:
    using String = std::u16string;

    Tarn() { writer.writeStartDocument(); }

    void startElement(const Name<String>& name)
    {
        writer.writeStartElement(name.localName, name.namespaceUri, name.prefix);
    }

    void startElement(const Name<String>& name, const std::vector<Namespace<String>>& declared)
    {
        startElement(name);
        for (const Namespace<String>& space : declared) {
            writer.writeNamespace(space.uri, space.prefix);
        }
    }

    void attribute(const Name<String>& name, const String& value)
    {
        writer.writeAttribute(name.localName, name.namespaceUri, name.prefix, value);
    }

    void text(const String& value) { writer.writeValue(value); }

    void endElement() { writer.writeEndElement(); }

    void textElement(const Name<String>& name, const String& value)
    {
        writer.writeElement(name.localName, name.namespaceUri, name.prefix, value);
    }

    std::string_view finish()
    {
        writer.writeEndDocument();
        return bytes(target);
    }

private:
    static std::string_view bytes(const std::string& target) { return target; }

    static std::string_view bytes(const std::ostringstream& target) { return target.view(); }

    Target target;
    tarn::utils::XmlWriter writer{target};
};

const Registration<Tarn<std::string>> overString("tarn");
const Registration<Tarn<std::ostringstream>> overStream("tarn ostream");

} // namespace

} // namespace benchmarks

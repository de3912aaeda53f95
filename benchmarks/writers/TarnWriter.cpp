// This project's writer, over each of its targets.
#include "benchmarks/registry.hpp"

#include "tarn/xml/XmlWriter.hpp"

#include <sstream>

namespace benchmarks {

namespace {

template <class Target>
class TarnWriter
{
public:
    using String = std::u16string;

    TarnWriter() { writer.writeStartDocument(); }

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

    auto finish()
    {
        writer.writeEndDocument();
        return content(target);
    }

private:
    static std::string_view content(const std::string& target) { return target; }

    static std::u16string_view content(const std::u16string& target) { return target; }

    static std::string_view content(const std::ostringstream& target) { return target.view(); }

    Target target;
    tarn::utils::XmlWriter writer{target};
};

const Registration<TarnWriter<std::string>> overBytes("tarn", TARN_VERSION);
const Registration<TarnWriter<std::u16string>> overUtf16("tarn u16string", TARN_VERSION);
const Registration<TarnWriter<std::ostringstream>> overStream("tarn ostream", TARN_VERSION);

} // namespace

} // namespace benchmarks

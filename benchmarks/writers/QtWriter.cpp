// Qt's QXmlStreamWriter: UTF-16 in, UTF-8 out, namespaces managed by the writer.
#include "benchmarks/registry.hpp"

#include <QXmlStreamWriter>

namespace benchmarks {

template <>
QString convert(const std::u16string& text)
{
    return QString::fromStdU16String(text);
}

namespace {

class QtWriter
{
public:
    using String = QString;

    QtWriter()
    {
        writer.setAutoFormatting(true);
        writer.setAutoFormattingIndent(2);
        writer.writeStartDocument();
    }

    void startElement(const Name<String>& name)
    {
        if (name.namespaceUri.isEmpty()) {
            writer.writeStartElement(name.localName);
        } else {
            writer.writeStartElement(name.namespaceUri, name.localName);
        }
    }

    void startElement(const Name<String>& name, const std::vector<Namespace<String>>& declared)
    {
        for (const Namespace<String>& space : declared) {
            writer.writeNamespace(space.uri, space.prefix);
        }
        startElement(name);
    }

    void attribute(const Name<String>& name, const String& value)
    {
        if (name.namespaceUri.isEmpty()) {
            writer.writeAttribute(name.localName, value);
        } else {
            writer.writeAttribute(name.namespaceUri, name.localName, value);
        }
    }

    void text(const String& value) { writer.writeCharacters(value); }

    void endElement() { writer.writeEndElement(); }

    void textElement(const Name<String>& name, const String& value)
    {
        if (name.namespaceUri.isEmpty()) {
            writer.writeTextElement(name.localName, value);
        } else {
            writer.writeTextElement(name.namespaceUri, name.localName, value);
        }
    }

    std::string_view finish()
    {
        writer.writeEndDocument();
        return {target.constData(), static_cast<std::size_t>(target.size())};
    }

private:
    QByteArray target;
    QXmlStreamWriter writer{&target};
};

const Registration<QtWriter> registration("qt", qVersion());

} // namespace

} // namespace benchmarks

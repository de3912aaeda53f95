#include "tools/json2xml/ElementWriter.hpp"

#include <string_view>
#include <utility>

namespace json2xml {

namespace {

const std::u16string NAMESPACE = u"http://www.w3.org/2005/xpath-functions";
const std::u16string NO_NAMESPACE;
const std::u16string NO_PREFIX;
const std::u16string LINE_FEED = u"\n";

} // namespace

ElementWriter::ElementWriter(std::ostream& output, bool isCompact)
    : writer(output), isCompact(isCompact)
{
    writer.writeStartDocument();
    writer.registerDefaultNamespace(NAMESPACE);
}

void ElementWriter::startElement(const std::u16string& name)
{
    if (!isCompact) {
        writer.writeStartElement(name, NAMESPACE, NO_PREFIX);
        return;
    }
    startText();
    write({u"<", name});
    if (std::exchange(isRoot, false)) {
        write({u" xmlns=\"", NAMESPACE, u"\""});
    }
    isStartTagOpen = true;
}

void ElementWriter::startAttribute(const std::u16string& name)
{
    if (isCompact) {
        write({u" ", name, u"=\""});
    } else {
        writer.writeStartAttribute(name, NO_NAMESPACE, NO_PREFIX);
    }
}

void ElementWriter::endAttribute()
{
    if (isCompact) {
        write({u"\""});
    } else {
        writer.writeEndAttribute();
    }
}

void ElementWriter::startText()
{
    if (!isCompact) {
        writer.writeStartElementClose();
    } else if (std::exchange(isStartTagOpen, false)) {
        write({u">"});
    }
}

void ElementWriter::endElement(const std::u16string& name)
{
    if (!isCompact) {
        writer.writeEndElement();
    } else if (std::exchange(isStartTagOpen, false)) {
        write({u"/>"});
    } else {
        write({u"</", name, u">"});
    }
}

void ElementWriter::finish()
{
    writer.writeRawXml(LINE_FEED);
    writer.writeEndDocument();
}

void ElementWriter::write(std::initializer_list<std::u16string_view> pieces)
{
    tag.clear();
    for (const std::u16string_view piece : pieces) {
        tag += piece;
    }
    writer.writeRawXml(tag);
}

} // namespace json2xml

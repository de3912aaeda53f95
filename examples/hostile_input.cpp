// Writes what comes from outside: what the writer makes harmless by itself, and what its caller
// checks. The snippets of SECURITY.md.
#include <tarn/services/BundleContainer.hpp>
#include <tarn/xml/XmlWriter.hpp>

#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using tarn::utils::XmlWriter;
using tarn::utils::services::BundleContainer;

const std::u16string NONE;

// [snippet: plain-name]
bool isPlainName(std::u16string_view text)
{
    const auto isOneOf = [](char16_t unit, std::u16string_view units) {
        return units.find(unit) != std::u16string_view::npos;
    };
    const auto isLetter = [&](char16_t unit) {
        return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
    };
    return !text.empty() && text != u"xmlns" && (isLetter(text.front()) || text.front() == u'_') &&
           std::all_of(text.begin(), text.end(), [&](char16_t unit) {
               return isLetter(unit) || isOneOf(unit, u"0123456789_-.");
           });
}
// [end]

// [snippet: legal-text]
std::u16string withoutIllegal(std::u16string text)
{
    const auto isIllegal = [](char16_t unit) {
        const bool isLayout = unit == u'\t' || unit == u'\n' || unit == u'\r';
        return (unit < 0x20 && !isLayout) || unit >= 0xFFFE;
    };
    text.erase(std::remove_if(text.begin(), text.end(), isIllegal), text.end());
    return text;
}
// [end]

// [snippet: comment]
void writeComment(XmlWriter& writer, std::u16string text)
{
    std::size_t hyphens = 0;
    while ((hyphens = text.find(u"--", hyphens)) != std::u16string::npos) {
        text.insert(++hyphens, 1, u' ');
    }
    writer.writeStartElementClose();
    writer.writeRawXml(u"<!-- ");
    writer.writeRawXml(withoutIllegal(text));
    writer.writeRawXml(u" -->");
}
// [end]

void values(XmlWriter& writer)
{
    // [snippet: hostile-values]
    writer.writeStartElement(u"comment", NONE, NONE);
    writer.writeAttribute(u"by", u"\" admin=\"yes");
    writer.writeValue(u"</comment><!DOCTYPE x [ ]]> &lt;");
    writer.writeEndElement();
    // [end]
}

void names(XmlWriter& writer, const std::u16string& key, const std::u16string& value)
{
    // [snippet: hostile-names]
    if (isPlainName(key)) {
        writer.writeElement(key, value);
    } else {
        writer.writeStartElement(u"field", NONE, NONE);
        writer.writeAttribute(u"name", key);
        writer.writeValue(value);
        writer.writeEndElement();
    }
    // [end]
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

template <class Write>
void print(const char* name, Write write)
{
    std::string xml;
    XmlWriter writer(xml);
    writer.writeStartDocument();
    writer.writeStartElement(u"root", NONE, NONE);
    write(writer);
    writer.writeEndDocument();
    std::cout << "== " << name << '\n' << xml.substr(xml.find('\n') + 1) << '\n';
}

} // namespace

int main()
{
    print("hostile-values", values);
    print("hostile-names", [](XmlWriter& writer) {
        names(writer, u"title", u"Peaks");
        names(writer, u"x><admin/", u"yes");
    });
    print("legal-text", [](XmlWriter& writer) {
        const std::u16string text = u"nothing\uFFFF more\xD800.";
        writer.writeElement(u"text", withoutIllegal(text + u'\0'));
    });
    print("comment", [](XmlWriter& writer) { writeComment(writer, u"--><admin/><!--- -"); });
    std::cout << "== hostile-version\n"
              << version(u"1.0\"?><admin/>") << "\n== hostile-bundles\n"
              << bundles(u"/no/such/bundles.zip") << '\n';
    return std::cout ? 0 : 1;
}

// The writer's behaviour written down as plainly as possible, to compare the fast writer with.
#pragma once

#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace tarn::tests {

class ReferenceWriter
{
public:
    using Text = std::u16string;

    explicit ReferenceWriter(Text encodingName = u"") : encodingName(encodingName) {}

    /// Everything written so far, in the pieces that a sink sees.
    std::vector<Text> pieces;
    int flushes = 0;

    void writeStartDocument(const Text& version)
    {
        write({u"<?xml version=\"", version, u"\""});
        if (!encodingName.empty()) {
            write({u" encoding=\"", encodingName, u"\""});
        }
        write({u"?>"});
        isVersion10 = version == u"1.0";
    }
    void writeEndDocument()
    {
        writeEndAttribute();
        while (!elements.empty()) {
            writeEndElement();
        }
        ++flushes;
    }
    void writeRawXml(const Text& xml) { write({xml}); }
    void writeValue(const Text& value)
    {
        if (!inAttribute) {
            writeStartElementClose();
        }
        Text run;
        for (const char16_t unit : value) {
            if (!isSpecial(unit)) {
                run += unit;
                continue;
            }
            writeUnlessEmpty(run);
            write(replace(unit));
            run.clear();
        }
        writeUnlessEmpty(run);
    }
    void writeStartElement(const Text& localName, const Text& uri, const Text& prefix)
    {
        writeStartElementClose();
        const Text name = qualify(localName, uri, prefix);
        write({u"\n", indentation(elements.size()), u"<", name});
        elements.push_back({name, {}});
        inStartTag = true;
        declareQueued();
    }
    void writeStartElementClose()
    {
        writeEndAttribute();
        if (inStartTag) {
            write({u">"});
            inStartTag = false;
            lastWasEnd = false;
        }
    }
    void writeEndElement()
    {
        if (elements.empty()) {
            return;
        }
        writeEndAttribute();
        const Element element = elements.back();
        if (inStartTag) {
            write({u"/>"});
        } else {
            if (lastWasEnd) {
                write({u"\n", indentation(elements.size() - 1)});
            }
            write({u"</", element.name, u">"});
        }
        for (const Text& uri : element.declared) {
            if (bindings.contains(uri)) {
                used.erase(bindings[uri]);
                bindings.erase(uri);
            }
        }
        elements.pop_back();
        inStartTag = false;
        lastWasEnd = true;
    }
    void writeElement(const Text& localName, const Text& uri, const Text& prefix, const Text& value)
    {
        writeStartElement(localName, uri, prefix);
        writeStartElementClose();
        writeValue(value);
        writeEndElement();
    }
    void writeElement(const Text& localName, const Text& uri, const Text& value)
    {
        writeElement(localName, uri, u"", value);
    }
    void writeElement(const Text& localName, const Text& value)
    {
        writeElement(localName, u"", u"", value);
    }
    void writeEmptyElement(const Text& localName, const Text& uri, const Text& prefix)
    {
        writeStartElement(localName, uri, prefix);
        writeEndElement();
    }
    void writeStartAttribute(const Text& localName, const Text& uri, const Text& prefix)
    {
        writeEndAttribute();
        if (inStartTag) {
            write({u" ", qualify(localName, uri, prefix), u"=\""});
            inAttribute = true;
        }
    }
    void writeEndAttribute()
    {
        if (inAttribute) {
            write({u"\""});
            inAttribute = false;
            declareQueued();
        }
    }
    void writeAttribute(const Text& localName, const Text& uri, const Text& prefix,
                        const Text& value)
    {
        writeStartAttribute(localName, uri, prefix);
        writeValue(value);
        writeEndAttribute();
    }
    void writeAttribute(const Text& localName, const Text& uri, const Text& value)
    {
        writeAttribute(localName, uri, u"", value);
    }
    void writeAttribute(const Text& localName, const Text& value)
    {
        writeAttribute(localName, u"", u"", value);
    }
    void writeNamespace(const Text& uri, const Text& prefix)
    {
        writeEndAttribute();
        if (inStartTag && !bindings.contains(uri)) {
            bind(uri, unusedPrefix(prefix));
            declareQueued();
        }
    }
    void writeDefaultNamespace(const Text& uri) { writeAttribute(u"xmlns", uri); }
    void registerDefaultNamespace(const Text& uri) { bind(uri, u""); }

private:
    struct Element
    {
        Text name;
        std::vector<Text> declared;
    };

    static Text indentation(std::size_t depth) { return Text(2 * depth, u' '); }

    void write(const std::vector<Text>& texts)
    {
        pieces.insert(pieces.end(), texts.begin(), texts.end());
    }

    void writeUnlessEmpty(const Text& text)
    {
        if (!text.empty()) {
            write({text});
        }
    }

    static bool isSpecial(char16_t unit)
    {
        const bool isControl =
            unit < u' ' && unit != u'\0' && unit != u'\t' && unit != u'\n' && unit != u'\r';
        return isControl || unit == u'<' || unit == u'>' || unit == u'&' || unit == u'"' ||
               unit == u'\'';
    }

    std::vector<Text> replace(char16_t special) const
    {
        switch (special) {
        case u'<':
            return {u"&lt;"};
        case u'>':
            return {u"&gt;"};
        case u'&':
            return {u"&amp;"};
        case u'"':
            return {u"&quot;"};
        case u'\'':
            return {u"&apos;"};
        }
        if (isVersion10) {
            return special == 0x0B ? std::vector<Text>{u" "} : std::vector<Text>{};
        }
        const std::string digits = std::to_string(special);
        return {u"&#", Text(digits.begin(), digits.end()), u";"};
    }

    Text unusedPrefix(const Text& preferred)
    {
        if (!preferred.empty() && !used.contains(preferred)) {
            return preferred;
        }
        for (;;) {
            const std::string digits = std::to_string(++counter);
            const Text candidate = u"ns" + Text(digits.begin(), digits.end());
            if (!used.contains(candidate)) {
                return candidate;
            }
        }
    }

    void bind(const Text& uri, const Text& prefix)
    {
        bindings.insert({uri, prefix});
        queue.push_back(uri);
        used.insert(prefix);
    }

    Text qualify(const Text& localName, const Text& uri, const Text& preferred)
    {
        if (uri.empty()) {
            return localName;
        }
        if (!bindings.contains(uri)) {
            bind(uri, unusedPrefix(preferred));
        }
        const Text prefix = bindings.at(uri);
        return prefix.empty() ? localName : localName.empty() ? prefix : prefix + u":" + localName;
    }

    void declareQueued()
    {
        if (queue.empty()) {
            return;
        }
        const Text uri = queue.front();
        queue.pop_front();
        if (!bindings.contains(uri)) {
            declareQueued();
            return;
        }
        elements.back().declared.push_back(uri);
        writeAttribute(bindings.at(uri), u"http://www.w3.org/2000/xmlns/", u"xmlns", uri);
    }

    Text encodingName;
    bool isVersion10 = false;
    bool inStartTag = false; ///< Inside a start tag, in an attribute value or not.
    bool inAttribute = false;
    bool lastWasEnd = true;
    std::vector<Element> elements;
    std::map<Text, Text> bindings{{u"http://www.w3.org/2000/xmlns/", u"xmlns"},
                                  {u"http://www.w3.org/XML/1998/namespace", u"xml"}};
    std::set<Text> used;
    std::deque<Text> queue;
    unsigned long counter = 0;
};

} // namespace tarn::tests

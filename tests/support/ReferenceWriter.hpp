// The writer's behaviour written down as plainly as possible, to compare the fast writer with. It
// fails where it is told to: what it has written and what it knows then is what must be so.
#pragma once

#include "support/CompositeOperations.hpp"
#include "support/plain_escaping.hpp"
#include "support/reference_utf8.hpp"
#include "support/SuccessesLeft.hpp"

#include <text/utf16.hpp>

#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tarn::tests {

class BasicReferenceWriter
{
public:
    using Text = std::u16string;

    explicit BasicReferenceWriter(const Text& encodingName = u"") : encodingName(encodingName) {}

    /// The pieces that a sink sees.
    std::vector<Text> pieces;
    int flushes = 0;
    /// What has been converted of them, batch by batch, if there is an encoding.
    std::string bytes;

    /// Of pieces that are handed over and of flushes.
    SuccessesLeft piecesLeft;
    SuccessesLeft conversionsLeft;
    /// Of pieces and of everything else that can need memory.
    SuccessesLeft stepsLeft;
    /// Whether a piece that fails has been handed over before.
    bool takesWhatFails = false;

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
        piecesLeft.take();
        ++flushes;
        convert();
    }
    void writeRawXml(const Text& xml) { write({xml}); }
    void writeValue(const Text& value)
    {
        if (!inAttribute) {
            writeStartElementClose();
        }
        Text run;
        const auto endRun = [&] {
            if (!run.empty()) {
                write({run});
                run.clear();
            }
        };
        for (const char16_t unit : value) {
            if (const auto replacement = replacementOf(unit)) {
                endRun();
                write(*replacement);
            } else {
                run += unit;
            }
        }
        endRun();
    }
    void writeStartElement(const Text& localName, const Text& uri, const Text& prefix)
    {
        writeStartElementClose();
        const Text name = qualify(localName, uri, prefix);
        write({u"\n", indentation(elements.size()), u"<", name});
        stepsLeft.take();
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
    void writeNamespace(const Text& uri, const Text& prefix)
    {
        writeEndAttribute();
        if (inStartTag && !bindings.contains(uri)) {
            registerPrefix(uri, unusedPrefix(prefix));
            declareQueued();
        }
    }
    void registerPrefix(const Text& uri, const Text& prefix)
    {
        stepsLeft.take();
        bindings.insert({uri, prefix});
        stepsLeft.take();
        queue.push_back(uri);
        stepsLeft.take();
        used.insert(prefix);
    }

private:
    struct Element
    {
        Text name;
        std::vector<Text> declared;
    };

    static Text indentation(std::size_t depth) { return Text(2 * depth, u' '); }

    static Text digitsOf(unsigned long number)
    {
        const std::string digits = std::to_string(number);
        return {digits.begin(), digits.end()};
    }

    void write(const std::vector<Text>& texts)
    {
        for (const Text& text : texts) {
            if (takesWhatFails) {
                pieces.push_back(text);
            }
            piecesLeft.take();
            stepsLeft.take();
            if (!takesWhatFails) {
                pieces.push_back(text);
            }
            if (encodingName.empty()) {
                continue;
            }
            unconverted += text;
            if (unconverted.size() > 8192) {
                convert(text::isHighSurrogate(unconverted.back()) ? 1 : 0);
            }
        }
    }

    /// Converts all but the last @p kept code units.
    void convert(std::size_t kept = 0)
    {
        conversionsLeft.take();
        const std::size_t length = unconverted.size() - kept;
        bytes += referenceUtf8(std::u16string_view(unconverted).substr(0, length));
        unconverted.erase(0, length);
    }

    /// The pieces in place of @p unit, if it is special.
    std::optional<std::vector<Text>> replacementOf(char16_t unit) const
    {
        if (isPlainControl(unit) && !isVersion10) {
            return {{u"&#", digitsOf(unit), u";"}};
        }
        const Text replacement = plainReplacement(unit, isVersion10);
        if (replacement == Text{unit}) {
            return std::nullopt;
        }
        return replacement.empty() ? std::vector<Text>{} : std::vector<Text>{replacement};
    }

    Text unusedPrefix(const Text& preferred)
    {
        Text candidate = preferred;
        while (candidate.empty() || used.contains(candidate)) {
            stepsLeft.take();
            candidate = u"ns" + digitsOf(++counter);
        }
        return candidate;
    }

    Text qualify(const Text& localName, const Text& uri, const Text& preferred)
    {
        if (uri.empty()) {
            return localName;
        }
        if (!bindings.contains(uri)) {
            stepsLeft.take();
            registerPrefix(uri, unusedPrefix(preferred));
        }
        const Text prefix = bindings.at(uri);
        return prefix.empty() ? localName : localName.empty() ? prefix : prefix + u":" + localName;
    }

    void declareQueued()
    {
        while (!queue.empty()) {
            stepsLeft.take();
            const Text uri = queue.front();
            queue.pop_front();
            if (bindings.contains(uri)) {
                elements.back().declared.push_back(uri);
                writeStartAttribute(bindings.at(uri), u"http://www.w3.org/2000/xmlns/", u"xmlns");
                writeValue(uri);
                writeEndAttribute();
            }
        }
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
    Text unconverted;
};

using ReferenceWriter = CompositeOperations<BasicReferenceWriter>;

} // namespace tarn::tests

// Many namespaces, in scope at the same time or each declared for one small part.
#pragma once

#include "benchmarks/documents/TextSource.hpp"
#include "benchmarks/text_forms.hpp"

#include <vector>

namespace benchmarks {

/// @return the namespaces http://schemas.example.org/2024/modules/1 and so on, prefixes m1, ...
template <class String>
std::vector<Namespace<String>> modules(std::size_t count)
{
    std::vector<Namespace<String>> namespaces;
    for (std::size_t number = 1; number <= count; ++number) {
        namespaces.emplace_back(numbered(u"http://schemas.example.org/2024/modules/", number),
                                numbered(u"m", number));
    }
    return namespaces;
}

/// All namespaces are declared on the root; each element has a name and an attribute in one of
/// them.
template <class String>
class Namespaces
{
public:
    static constexpr const char* NAME = "namespaces";
    static constexpr int COPIES = 1;

    Namespaces()
    {
        for (const Namespace<String>& space : namespaces) {
            names.emplace_back(space, u"setting");
            attributes.emplace_back(space, u"key");
        }
        TextSource source(ENGLISH);
        for (std::size_t number = 0; number < 3000; ++number) {
            elements.push_back({source.number(0, namespaces.size() - 1),
                                convert<String>(source.words(1)),
                                convert<String>(source.words(2))});
        }
    }

    template <class Writer>
    void write(Writer& writer) const
    {
        writer.startElement(root, namespaces);
        for (const Element& element : elements) {
            writer.startElement(names[element.space]);
            writer.attribute(attributes[element.space], element.key);
            writer.text(element.text);
            writer.endElement();
        }
        writer.endElement();
    }

private:
    struct Element
    {
        std::size_t space;
        String key;
        String text;
    };

    std::vector<Namespace<String>> namespaces = modules<String>(50);
    Name<String> root{u"settings"};
    std::vector<Name<String>> names;
    std::vector<Name<String>> attributes;
    std::vector<Element> elements;
};

/// Each part declares its own two namespaces, which end with it.
template <class String>
class Scopes
{
public:
    static constexpr const char* NAME = "scopes";
    static constexpr int COPIES = 1;

    Scopes()
    {
        TextSource source(ENGLISH);
        const std::vector<Namespace<String>> namespaces = modules<String>(100);
        for (std::size_t number = 0; number < 1000; ++number) {
            const Namespace<String>& outer = namespaces[source.number(0, 49)];
            const Namespace<String>& inner = namespaces[source.number(50, 99)];
            parts.push_back({{outer, inner},
                             Name<String>(outer, u"part"),
                             Name<String>(inner, u"item"),
                             convert<String>(source.words(2))});
        }
    }

    template <class Writer>
    void write(Writer& writer) const
    {
        writer.startElement(root);
        for (const Part& part : parts) {
            writer.startElement(part.name, part.declared);
            writer.textElement(part.item, part.text);
            writer.textElement(part.item, part.text);
            writer.endElement();
        }
        writer.endElement();
    }

private:
    struct Part
    {
        std::vector<Namespace<String>> declared;
        Name<String> name;
        Name<String> item;
        String text;
    };

    Name<String> root{u"parts"};
    std::vector<Part> parts;
};

} // namespace benchmarks

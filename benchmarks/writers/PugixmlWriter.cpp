// pugixml: UTF-8 and qualified names into a tree, the tree saved as UTF-8.
#include "benchmarks/registry.hpp"

#include <pugixml.hpp>

namespace benchmarks {

namespace {

class StringTarget : public pugi::xml_writer
{
public:
    void write(const void* data, std::size_t size) override
    {
        text.append(static_cast<const char*>(data), size);
    }

    std::string text;
};

class PugixmlWriter
{
public:
    using String = std::string;

    void startElement(const Name<String>& name)
    {
        open = open.append_child(name.qualifiedName.c_str());
    }

    void startElement(const Name<String>& name, const std::vector<Namespace<String>>& declared)
    {
        startElement(name);
        for (const Namespace<String>& space : declared) {
            open.append_attribute(space.declaration.c_str()).set_value(space.uri.c_str());
        }
    }

    void attribute(const Name<String>& name, const String& value)
    {
        open.append_attribute(name.qualifiedName.c_str()).set_value(value.c_str());
    }

    void text(const String& value)
    {
        open.append_child(pugi::node_pcdata).set_value(value.c_str());
    }

    void endElement() { open = open.parent(); }

    void textElement(const Name<String>& name, const String& value)
    {
        startElement(name);
        text(value);
        endElement();
    }

    std::string_view finish()
    {
        document.save(target, "  ");
        return target.text;
    }

    void reset()
    {
        document.reset();
        open = document;
        target.text.clear();
    }

private:
    pugi::xml_document document;
    pugi::xml_node open = document; // the innermost open element
    StringTarget target;
};

const std::string version =
    std::to_string(PUGIXML_VERSION / 1000) + "." + std::to_string(PUGIXML_VERSION / 10 % 100);
const Registration<PugixmlWriter> registration("pugixml", version);

} // namespace

} // namespace benchmarks

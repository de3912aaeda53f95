// This project's checked layer, with all its checks: fed UTF-8 and fed UTF-16.
#include "benchmarks/registry.hpp"

#include "tarn/document/Document.hpp"

#include <vector>

namespace benchmarks {

/// A text for values and for names, which the layer takes as UTF-8 alone.
struct BothForms
{
    std::string utf8;
    std::u16string utf16;

    friend BothForms operator+(const BothForms& left, const BothForms& right)
    {
        return {left.utf8 + right.utf8, left.utf16 + right.utf16};
    }
};

template <>
BothForms convert(const std::u16string& text)
{
    return {toUtf8(text), text};
}

namespace {

const std::string& nameOf(const std::string& text)
{
    return text;
}

const std::string& nameOf(const BothForms& text)
{
    return text.utf8;
}

const std::string& valueOf(const std::string& text)
{
    return text;
}

const std::u16string& valueOf(const BothForms& text)
{
    return text.utf16;
}

template <class Text>
class DocumentWriter
{
public:
    using String = Text;
    static constexpr bool REFUSES_CONTROLS = true;

    void startElement(const Name<String>& name)
    {
        open.push_back(open.empty() ? document.root(made(name)) : open.back().child(made(name)));
    }

    void startElement(const Name<String>& name, const std::vector<Namespace<String>>& declared)
    {
        startElement(name);
        for (const Namespace<String>& space : declared) {
            open.back().declare(made(space));
        }
    }

    void attribute(const Name<String>& name, const String& value)
    {
        open.back().attribute(made(name), valueOf(value));
    }

    void text(const String& value) { open.back().text(valueOf(value)); }

    void endElement() { open.pop_back(); }

    void textElement(const Name<String>& name, const String& value)
    {
        open.back().add(made(name), valueOf(value));
    }

    std::string_view finish()
    {
        document.finish();
        return target;
    }

    void reset() { document.reset(); }

private:
    static tarn::document::Namespace made(const Namespace<String>& space)
    {
        return tarn::document::Namespace(nameOf(space.uri), nameOf(space.prefix));
    }

    static tarn::document::Name made(const Name<String>& name)
    {
        using namespace tarn::document;
        const std::string& localName = nameOf(name.localName);
        const std::string& uri = nameOf(name.namespaceUri);
        return uri.empty() ? tarn::document::Name(localName)
                           : tarn::document::Name(
                                 tarn::document::Namespace(uri, nameOf(name.prefix)), localName);
    }

    std::string target;
    tarn::document::Document document{target};
    std::vector<tarn::document::Element> open;
};

const Registration<DocumentWriter<std::string>> fedUtf8("tarn document", TARN_VERSION);
const Registration<DocumentWriter<BothForms>> fedUtf16("tarn document UTF-16", TARN_VERSION);

} // namespace

} // namespace benchmarks

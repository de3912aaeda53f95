// tinyxml2's XMLPrinter: UTF-8 and qualified names in, UTF-8 out.
#include "benchmarks/registry.hpp"

#include <tinyxml2.h>

namespace benchmarks {

namespace {

/// Indents as the other writers do.
class Printer : public tinyxml2::XMLPrinter
{
protected:
    void PrintSpace(int depth) override
    {
        for (int level = 0; level < depth; ++level) {
            Write("  ", 2);
        }
    }
};

class Tinyxml2Writer
{
public:
    using String = std::string;

    Tinyxml2Writer() { printer.PushHeader(false, true); }

    void startElement(const Name<String>& name) { printer.OpenElement(name.qualifiedName.c_str()); }

    void startElement(const Name<String>& name, const std::vector<Namespace<String>>& declared)
    {
        startElement(name);
        for (const Namespace<String>& space : declared) {
            printer.PushAttribute(space.declaration.c_str(), space.uri.c_str());
        }
    }

    void attribute(const Name<String>& name, const String& value)
    {
        printer.PushAttribute(name.qualifiedName.c_str(), value.c_str());
    }

    void text(const String& value) { printer.PushText(value.c_str()); }

    void endElement() { printer.CloseElement(); }

    void textElement(const Name<String>& name, const String& value)
    {
        startElement(name);
        text(value);
        endElement();
    }

    std::string_view finish()
    {
        return {printer.CStr(), static_cast<std::size_t>(printer.CStrSize() - 1)};
    }

    void reset()
    {
        printer.ClearBuffer();
        printer.PushHeader(false, true);
    }

private:
    Printer printer;
};

const std::string version = std::to_string(TINYXML2_MAJOR_VERSION) + "." +
                            std::to_string(TINYXML2_MINOR_VERSION) + "." +
                            std::to_string(TINYXML2_PATCH_VERSION);
const Registration<Tinyxml2Writer> registration("tinyxml2", version);

} // namespace

} // namespace benchmarks

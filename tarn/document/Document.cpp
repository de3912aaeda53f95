#include "tarn/document/Document.hpp"

#include "tarn/document/checks.hpp"
#include "tarn/document/DocumentImpl.hpp"

#include <utility>

namespace tarn::document {

using namespace detail;

Error::~Error() = default;

void Document::Impl::doctype(const Name& name, std::string_view publicId, std::string_view systemId)
{
    requireUsable();
    requireName(name, spaceOf(name));
    if (stage != Stage::BeforeRoot) {
        throw Refusal{"a document type comes before the root"};
    }
    if (hasDoctype) {
        throw Refusal{"the document has a document type already"};
    }
    if (name.hasNamespace()) {
        throw Refusal{"the name of a document type is in no namespace"};
    }
    requireIdentifiers(publicId, systemId);
    value.assign(systemId, Unrepresentable::refuse);
    change([&] {
        beginLine();
        output.write("<!DOCTYPE ");
        output.write(name.localName());
        if (!publicId.empty()) {
            output.write(" PUBLIC \"");
            output.write(publicId);
            output.write("\"");
        } else if (!systemId.empty()) {
            output.write(" SYSTEM");
        }
        if (!systemId.empty()) {
            const std::string_view quote =
                systemId.find('"') == std::string_view::npos ? "\"" : "'";
            output.write(" ");
            output.write(quote);
            output.write(systemId);
            output.write(quote);
        }
        output.write(">");
        hasDoctype = true;
    });
}

void Document::Impl::comment(const Text& text)
{
    requireOutsideRoot("comment");
    value.assign(text, options.unrepresentable);
    requireComment(value.bytes());
    change([&] { writeComment(); });
}

void Document::Impl::instruction(const Name& target, const Text& data)
{
    requireOutsideRoot("instruction");
    requireInstruction(target, data);
    change([&] { writeInstruction(target); });
}

std::uint64_t Document::Impl::root(const Name& name)
{
    requireUsable();
    if (stage != Stage::BeforeRoot) {
        throw Refusal{"the document has a root already"};
    }
    requireName(name, spaceOf(name));
    change([&] {
        stage = Stage::InRoot;
        startElement(name, spaceOf(name));
    });
    return open.back().number;
}

void Document::Impl::flush()
{
    requireUsable();
    change([&] { output.flush(); });
}

void Document::Impl::finish()
{
    if (metInDestructor) {
        std::rethrow_exception(std::exchange(metInDestructor, nullptr));
    }
    requireUsable();
    if (stage == Stage::BeforeRoot) {
        throw Refusal{"there is no root element"};
    }
    change([&] {
        while (!open.empty()) {
            endInnermost();
        }
        output.complete();
    });
    stage = Stage::Finished;
}

void Document::Impl::reset()
{
    if (output.isHandingOver()) {
        requireUsable();
    }
    output.reset();
    stage = Stage::BeforeRoot;
    hasDoctype = false;
    hasBegun = false;
    open.clear();
    names.shrinkTo(0);
    outerScopes.clear();
    scopes.reset();
    attributeNames.clear();
    base64RestSize = 0;
    metInDestructor = nullptr;
}

Document::Document(std::string& target, Options options)
    : impl(std::make_unique<Impl>(&target, options))
{
    target.clear();
}

Document::Document(std::ostream& target, Options options)
    : impl(std::make_unique<Impl>(&target, options))
{
}

Document::Document(std::function<void(std::string_view)> target, Options options)
    : impl(std::make_unique<Impl>(std::move(target), options))
{
}

Document::~Document() = default;

void Document::doctype(const Name& name, std::string_view publicId, std::string_view systemId)
{
    impl->run({}, [&] { impl->doctype(name, publicId, systemId); });
}

void Document::comment(const Text& text)
{
    impl->run({}, [&] { impl->comment(text); });
}

void Document::instruction(const Name& target, const Text& data)
{
    impl->run({}, [&] { impl->instruction(target, data); });
}

Element Document::root(const Name& name)
{
    std::uint64_t number = 0;
    impl->run({0, &name}, [&] { number = impl->root(name); });
    return {*this, 0, number};
}

void Document::flush()
{
    impl->run({}, [&] { impl->flush(); });
}

void Document::finish()
{
    impl->run({}, [&] { impl->finish(); });
}

void Document::reset()
{
    impl->run({}, [&] { impl->reset(); });
}

} // namespace tarn::document

#include "tarn/document/Document.hpp"

#include "tarn/document/DocumentImpl.hpp"

#include <utility>

namespace tarn::document {

Error::~Error() = default;

/// What Element needs of Document: its implementation, and itself as it is named there.
class Element::Access
{
public:
    static Document::Impl& impl(const Element& element)
    {
        if (element.document == nullptr) {
            throw Error("/: the element was moved from");
        }
        return *element.document->impl;
    }
    static Document::Impl::Handle handle(const Element& element)
    {
        return {element.depth, element.number};
    }
};

Element::Element(Document& document, std::size_t depth, std::uint64_t number) noexcept
    : document(&document), depth(depth), number(number),
      passingExceptions(std::uncaught_exceptions())
{
}

Element::Element(Element&& other) noexcept
    : document(std::exchange(other.document, nullptr)), depth(other.depth), number(other.number),
      passingExceptions(other.passingExceptions)
{
}

Element& Element::operator=(Element&& other) noexcept
{
    if (this != &other) {
        if (document != nullptr) {
            document->impl->endInDestructor(Access::handle(*this));
        }
        document = std::exchange(other.document, nullptr);
        depth = other.depth;
        number = other.number;
        passingExceptions = other.passingExceptions;
    }
    return *this;
}

Element::~Element()
{
    if (document != nullptr && std::uncaught_exceptions() <= passingExceptions) {
        document->impl->endInDestructor(Access::handle(*this));
    }
}

Element& Element::declare(const Namespace& space) &
{
    Access::impl(*this).declare(Access::handle(*this), space);
    return *this;
}

Element& Element::attribute(const Name& name, const Text& value) &
{
    Access::impl(*this).attribute(Access::handle(*this), name, value);
    return *this;
}

Element& Element::text(const Text& text) &
{
    Access::impl(*this).text(Access::handle(*this), text);
    return *this;
}

Element& Element::base64(const void* bytes, std::size_t size) &
{
    Access::impl(*this).base64(Access::handle(*this), bytes, size);
    return *this;
}

Element& Element::cdata(const Text& text) &
{
    Access::impl(*this).cdata(Access::handle(*this), text);
    return *this;
}

Element& Element::comment(const Text& text) &
{
    Access::impl(*this).comment(Access::handle(*this), text);
    return *this;
}

Element& Element::instruction(const Name& target, const Text& data) &
{
    Access::impl(*this).instruction(Access::handle(*this), target, data);
    return *this;
}

Element& Element::raw(const Fragment& fragment) &
{
    Access::impl(*this).raw(Access::handle(*this), fragment.markup);
    return *this;
}

Element Element::child(const Name& name)
{
    const std::uint64_t childNumber = Access::impl(*this).child(Access::handle(*this), name);
    return {*document, depth + 1, childNumber};
}

Element& Element::add(const Name& name, const Text& text) &
{
    Access::impl(*this).add(Access::handle(*this), name, text);
    return *this;
}

void Element::end()
{
    Access::impl(*this).end(Access::handle(*this));
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
    impl->doctype(name, publicId, systemId);
}

void Document::comment(const Text& text)
{
    impl->comment(text);
}

void Document::instruction(const Name& target, const Text& data)
{
    impl->instruction(target, data);
}

Element Document::root(const Name& name)
{
    return {*this, 0, impl->root(name)};
}

void Document::flush()
{
    impl->flush();
}

void Document::finish()
{
    impl->finish();
}

void Document::reset()
{
    impl->reset();
}

} // namespace tarn::document

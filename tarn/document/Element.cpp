#include "tarn/document/checks.hpp"
#include "tarn/document/DocumentImpl.hpp"
#include "tarn/document/markup.hpp"

#include <cxxabi.h>

#include <algorithm>
#include <utility>

namespace tarn::document {

using namespace detail;

namespace {

/// What std::uncaught_exceptions() returns. It is asked twice for each element, and that function
/// spends most of its time finding the variables of the thread. They stay where they are as long as
/// the thread lives, in the form that the C++ ABI for Itanium gives them (section 2.2.2).
int uncaughtExceptions()
{
    struct Globals
    {
        void* caughtExceptions;
        unsigned uncaughtExceptions;
    };
    [[gnu::tls_model("initial-exec")]] static thread_local const Globals* globals = nullptr;
    if (globals == nullptr) {
        globals = reinterpret_cast<const Globals*>(abi::__cxa_get_globals());
    }
    return static_cast<int>(globals->uncaughtExceptions);
}

} // namespace

void Document::Impl::declare(Handle element, const Namespace& space)
{
    requireOpen(element);
    if (open[element.depth].hasContent) {
        throw Refusal{"a namespace is declared before content"};
    }
    if (!space.isChecked()) {
        requireNamespace(space.uri(), space.prefix());
    }
    const Name name(space, "");
    const bool isNew = spaceOf(name) == Scopes::NOT_BOUND;
    if (isNew && space.prefix().empty() &&
        (!open[element.depth].hasPrefix || open[element.depth].declaresDefault)) {
        throw Refusal{"the default namespace of this element is another"};
    }
    change([&] {
        if (isNew) {
            writeDeclaration(prefixOf(bringIntoScope(name)), space.uri());
        }
    });
}

void Document::Impl::attribute(Handle element, const Name& name, const Text& text)
{
    requireOpen(element);
    if (open[element.depth].hasContent) {
        throw Refusal{"an attribute comes before content"};
    }
    std::size_t space = NO_PREFIX;
    if (name.hasNamespace()) {
        space = scopes.find(name.uri());
        requireName(name, space);
        if (name.prefix().empty()) {
            throw Refusal{"an attribute cannot be in a namespace that wishes no prefix"};
        }
    } else {
        requireName(name, space);
        if (name.localName() == "xmlns") {
            throw Refusal{"\"xmlns\" declares a namespace; use declare()"};
        }
    }
    if (space == Scopes::NOT_BOUND) {
        // The first attribute in a namespace that is not in scope is the only one of its name.
        value.assign(text, options.unrepresentable);
        change([&] {
            space = bringIntoScope(name);
            writeDeclaration(prefixOf(space), name.uri());
            attributeNames.add(space, name.localName());
            writeAttribute(space, name);
        });
        return;
    }
    char* const end = Value::putIfPlain(putAttributeStart(space, name), text);
    if (end == nullptr) {
        value.assign(text, options.unrepresentable);
    }
    if (!attributeNames.add(space, name.localName())) {
        throw Refusal{"the element has this attribute already"};
    }
    change([&] {
        if (end != nullptr) {
            output.endAt(put(end, "\""));
        } else {
            writeAttribute(space, name);
        }
    });
}

void Document::Impl::text(Handle element, const Text& text)
{
    requireOpen(element);
    OpenElement& innermost = open.back();
    if (isInnermost(element) && !innermost.isInBase64) {
        char* const out = output.room(sizeof(">") + Value::SHORT);
        *out = '>';
        char* const end = Value::putIfPlain(innermost.hasContent ? out : out + 1, text);
        if (end != nullptr) {
            change([&] {
                output.endAt(end);
                beginContentAsWritten();
                innermost.isMixed = true;
            });
            return;
        }
    }
    value.assign(text, options.unrepresentable);
    change([&] {
        beginMixed(element.depth);
        writeValue(IN_TEXT);
    });
}

void Document::Impl::base64(Handle element, const void* data, std::size_t size)
{
    requireOpen(element);
    if (data == nullptr && size != 0) {
        throw Refusal{"the data is a null pointer"};
    }
    change([&] {
        if (!isInnermost(element) || !open.back().isInBase64) {
            beginMixed(element.depth);
            open.back().isInBase64 = true;
        }
        writeBase64(static_cast<const unsigned char*>(data), size);
    });
}

void Document::Impl::cdata(Handle element, const Text& text)
{
    requireOpen(element);
    value.assign(text, options.unrepresentable);
    change([&] {
        beginMixed(element.depth);
        writeCdata();
    });
}

void Document::Impl::comment(Handle element, const Text& text)
{
    requireOpen(element);
    value.assign(text, options.unrepresentable);
    requireComment(value.bytes());
    change([&] {
        beginContent(element.depth);
        writeComment();
    });
}

void Document::Impl::instruction(Handle element, const Name& target, const Text& data)
{
    requireOpen(element);
    requireInstruction(target, data);
    change([&] {
        beginContent(element.depth);
        writeInstruction(target);
    });
}

void Document::Impl::raw(Handle element, std::string_view markup)
{
    requireOpen(element);
    change([&] {
        beginMixed(element.depth);
        output.write(markup);
    });
}

std::uint64_t Document::Impl::child(Handle element, const Name& name)
{
    requireOpen(element);
    std::size_t space = spaceOf(name);
    requireName(name, space);
    change([&] {
        if (!isInnermost(element)) {
            endInside(element.depth);
            space = spaceOf(name);
        }
        beginContent(element.depth);
        startElement(name, space);
    });
    return open.back().number;
}

void Document::Impl::add(Handle element, const Name& name, const Text& text)
{
    requireOpen(element);
    const std::size_t space = spaceOf(name);
    requireName(name, space);
    if (isInnermost(element) && !open.back().isInBase64 && space != Scopes::NOT_BOUND) {
        char* const end = putElement(name, prefixOf(space), text);
        if (end != nullptr) {
            change([&] {
                output.endAt(end);
                beginContentAsWritten();
                beginsLine();
            });
            return;
        }
    }
    value.assign(text, options.unrepresentable);
    change([&] {
        beginContent(element.depth);
        startElement(name, spaceOf(name));
        beginMixed(element.depth + 1);
        writeValue(IN_TEXT);
        endInnermost();
    });
}

void Document::Impl::end(Handle element)
{
    requireOpen(element);
    change([&] {
        endInside(element.depth);
        endInnermost();
    });
}

void Document::Impl::endInDestructor(Handle element) noexcept
{
    if (stage != Stage::InRoot || !isOpen(element) || output.isHandingOver()) {
        return;
    }
    try {
        run({open.size()}, [&] { end(element); });
    } catch (...) {
        metInDestructor = std::current_exception(); // the only one: the document is broken off
    }
}

char* Document::Impl::putAttributeStart(std::size_t space, const Name& name)
{
    const std::string_view prefix = prefixOf(space);
    char* out =
        output.room(prefix.size() + name.localName().size() + sizeof(" :=\"\"") + Value::SHORT);
    *out++ = ' ';
    return put(putName(out, prefix, name.localName()), "=\"");
}

void Document::Impl::writeAttribute(std::size_t space, const Name& name)
{
    output.endAt(putAttributeStart(space, name));
    writeValue(IN_ATTRIBUTES);
    output.write("\"");
}

char* Document::Impl::putElement(const Name& name, std::string_view prefix, const Text& text)
{
    const std::size_t nameLength = prefix.size() + name.localName().size() + sizeof(":");
    char* out =
        output.room(lineBound(open.size()) + 2 * nameLength + sizeof("><></>") + Value::SHORT);
    if (!open.back().hasContent) {
        *out++ = '>';
    }
    if (canBeginLine()) {
        out = putLine(out, open.size());
    }
    *out++ = '<';
    out = putName(out, prefix, name.localName());
    *out++ = '>';
    out = Value::putIfPlain(out, text);
    if (out != nullptr) {
        out = putName(put(out, "</"), prefix, name.localName());
        *out++ = '>';
    }
    return out;
}

void Document::Impl::writeCdata()
{
    output.write("<![CDATA[");
    std::string_view rest = value.bytes();
    for (std::size_t place = 0;
         (place = rest.find_first_of("]\r", place)) != std::string_view::npos;) {
        if (rest[place] == '\r') {
            output.write(rest.substr(0, place));
            output.write("]]>&#13;<![CDATA[");
            rest.remove_prefix(place + 1);
            place = 0;
        } else if (rest.substr(place).starts_with("]]>")) {
            output.write(rest.substr(0, place + 2));
            output.write("]]><![CDATA[");
            rest.remove_prefix(place + 2);
            place = 0;
        } else {
            ++place;
        }
    }
    output.write(rest);
    output.write("]]>");
}

void Document::Impl::writeBase64(const unsigned char* data, std::size_t size)
{
    while (size > 0 && base64RestSize > 0) {
        base64Rest[base64RestSize++] = *data++;
        --size;
        if (base64RestSize == 3) {
            base64RestSize = 0;
            writeWholeBase64(base64Rest, 3);
        }
    }
    const std::size_t whole = size - size % 3;
    writeWholeBase64(data, whole);
    for (; whole + base64RestSize < size; ++base64RestSize) {
        base64Rest[base64RestSize] = data[whole + base64RestSize];
    }
}

void Document::Impl::writeWholeBase64(const unsigned char* data, std::size_t size)
{
    static constexpr char DIGITS[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t PORTION = 3 * 1024;
    while (size > 0) {
        const std::size_t portion = std::min(size, PORTION);
        output.passOnIfFull();
        char* out = output.room(portion / 3 * 4);
        for (std::size_t place = 0; place < portion; place += 3) {
            const unsigned bits =
                unsigned{data[place]} << 16 | unsigned{data[place + 1]} << 8 | data[place + 2];
            *out++ = DIGITS[bits >> 18];
            *out++ = DIGITS[bits >> 12 & 63];
            *out++ = DIGITS[bits >> 6 & 63];
            *out++ = DIGITS[bits & 63];
        }
        output.endAt(out);
        data += portion;
        size -= portion;
    }
}

/// What Element needs of Document.
class Element::Access
{
public:
    /// Runs an operation of Document::Impl on @p element.
    template <class Operation>
    static void run(const Element& element, const Name* name, bool isAttribute, Operation operation)
    {
        if (element.document == nullptr) {
            throw Error("/: the element was moved from");
        }
        Document::Impl& impl = *element.document->impl;
        impl.run({element.depth + 1, name, isAttribute}, [&] {
            operation(impl, Document::Impl::Handle{element.depth, element.number});
        });
    }
    template <class Operation>
    static void run(const Element& element, Operation operation)
    {
        run(element, nullptr, false, operation);
    }

    /// Whether @p inner is open, and inside @p outer if that is open.
    static bool isInside(const Element& inner, const Element& outer)
    {
        return inner.document == outer.document && outer.depth < inner.depth &&
               inner.document->impl->isOpen({inner.depth, inner.number});
    }

    static void endInDestructor(const Element& element)
    {
        element.document->impl->endInDestructor({element.depth, element.number});
    }
};

Element::Element(Document& document, std::size_t depth, std::uint64_t number) noexcept
    : document(&document), depth(depth), number(number), passingExceptions(uncaughtExceptions())
{
}

Element& Element::operator=(Element&& other) noexcept
{
    if (this != &other) {
        if (document != nullptr && !Access::isInside(other, *this)) {
            Access::endInDestructor(*this);
        }
        document = std::exchange(other.document, nullptr);
        depth = other.depth;
        number = other.number;
        passingExceptions = other.passingExceptions;
    }
    return *this;
}

// The operations that are called most are compiled as one function each, with what they call: else
// the calls would take longer than the work.

[[gnu::flatten]] void Element::endUnlessPassing() noexcept
{
    if (uncaughtExceptions() <= passingExceptions) {
        Access::endInDestructor(*this);
    }
}

Element& Element::declare(const Namespace& space) &
{
    Access::run(*this, [&](auto& impl, auto handle) { impl.declare(handle, space); });
    return *this;
}

[[gnu::flatten]] Element& Element::attribute(const Name& name, const Text& value) &
{
    Access::run(*this, &name, true,
                [&](auto& impl, auto handle) { impl.attribute(handle, name, value); });
    return *this;
}

[[gnu::flatten]] Element& Element::text(const Text& text) &
{
    Access::run(*this, [&](auto& impl, auto handle) { impl.text(handle, text); });
    return *this;
}

Element& Element::base64(const void* bytes, std::size_t size) &
{
    Access::run(*this, [&](auto& impl, auto handle) { impl.base64(handle, bytes, size); });
    return *this;
}

Element& Element::cdata(const Text& text) &
{
    Access::run(*this, [&](auto& impl, auto handle) { impl.cdata(handle, text); });
    return *this;
}

Element& Element::comment(const Text& text) &
{
    Access::run(*this, [&](auto& impl, auto handle) { impl.comment(handle, text); });
    return *this;
}

Element& Element::instruction(const Name& target, const Text& data) &
{
    Access::run(*this, [&](auto& impl, auto handle) { impl.instruction(handle, target, data); });
    return *this;
}

Element& Element::raw(const Fragment& fragment) &
{
    Access::run(*this, [&](auto& impl, auto handle) { impl.raw(handle, fragment.markup); });
    return *this;
}

[[gnu::flatten]] Element Element::child(const Name& name)
{
    std::uint64_t childNumber = 0;
    Access::run(*this, &name, false,
                [&](auto& impl, auto handle) { childNumber = impl.child(handle, name); });
    return {*document, depth + 1, childNumber};
}

[[gnu::flatten]] Element& Element::add(const Name& name, const Text& text) &
{
    Access::run(*this, &name, false,
                [&](auto& impl, auto handle) { impl.add(handle, name, text); });
    return *this;
}

void Element::end()
{
    Access::run(*this, [&](auto& impl, auto handle) { impl.end(handle); });
}

} // namespace tarn::document

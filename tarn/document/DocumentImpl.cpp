#include "tarn/document/DocumentImpl.hpp"

#include "text/utf16.hpp"
#include "text/utf8_decoder.hpp"
#include "text/utf8_encoder.hpp"

#include <algorithm>
#include <ostream>
#include <utility>

namespace tarn::document {

using namespace detail;

namespace {

/// In UTF-16 code units: what is converted at once.
constexpr std::size_t BATCH = 8192;

constexpr std::u16string_view LAYOUT_IN_ATTRIBUTES = u"\t\n\r";
constexpr std::u16string_view LAYOUT_IN_TEXT = u"\r";

std::u16string referenceTo(char16_t layout)
{
    return layout == u'\t' ? u"&#9;" : layout == u'\n' ? u"&#10;" : u"&#13;";
}

/// Writes @p value escaped, and with those code units as references that are in @p referenced.
void writeEscaped(utils::XmlWriter& writer, const Value& value, std::u16string_view referenced)
{
    if (!value.hasLayout()) {
        writer.writeValue(value.units());
        return;
    }
    std::u16string_view rest = value.units();
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find_first_of(referenced), rest.size());
        writer.writeValue(std::u16string(rest.substr(0, length)));
        if (length < rest.size()) {
            writer.writeRawXml(referenceTo(rest[length]));
        }
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
}

std::string toUtf8(std::u16string_view text)
{
    std::string bytes(text::encodedUtf8Bound(text.size()), '\0');
    bytes.resize(static_cast<std::size_t>(
        text::encodeUtf8(text.begin(), text.end(), bytes.data()).written - bytes.data()));
    return bytes;
}

std::string quoted(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

} // namespace

Fragment Fragment::of(const Text& text)
{
    Value value;
    try {
        value.assign(text, Unrepresentable::refuse);
    } catch (const Refusal& refusal) {
        throw Error("/: " + refusal.reason);
    }
    std::u16string markup;
    utils::XmlWriter writer(markup);
    writeEscaped(writer, value, LAYOUT_IN_TEXT);
    return Fragment(std::move(markup));
}

Fragment Fragment::trusted(std::string_view markup)
{
    Value value;
    try {
        value.assign(markup, Unrepresentable::refuse);
    } catch (const Refusal& refusal) {
        throw Error("/: " + refusal.reason);
    }
    return Fragment(std::u16string(value.units()));
}

Document::Impl::Impl(Target target, Options options)
    : target(std::move(target)), options(options), writer(batch)
{
    if (const auto* const function =
            std::get_if<std::function<void(std::string_view)>>(&this->target);
        function != nullptr && !*function) {
        throw Error("/: the target is an empty function");
    }
    batch.reserve(2 * BATCH);
}

template <class Check>
auto Document::Impl::checked(const Place& place, Check check)
{
    try {
        requireUsable();
        return check();
    } catch (const Refusal& refusal) {
        throw Error(pathTo(place) + ": " + refusal.reason);
    }
}

template <class Change>
void Document::Impl::change(Change change)
{
    try {
        change();
        passOnIfFull();
    } catch (...) {
        stage = Stage::BrokenOff;
        throw;
    }
}

std::string Document::Impl::pathTo(const Place& place) const
{
    std::string path;
    for (std::size_t level = 0; level < place.depth && level < open.size(); ++level) {
        const std::size_t begin = open[level].name;
        const std::size_t end = level + 1 < open.size() ? open[level + 1].name : names.size();
        path += toUtf8(std::u16string_view(names).substr(begin, end - begin)) + '/';
    }
    if (place.name != nullptr) {
        path += place.isAttribute ? "@" : "";
        path += place.name->prefix();
        path += place.name->prefix().empty() ? "" : ":";
        path += place.name->localName();
    } else if (path.size() > 1) {
        path.pop_back();
    }
    return path.empty() ? "/" : path;
}

void Document::Impl::requireUsable() const
{
    if (stage == Stage::Finished) {
        throw Refusal{"the document is finished; only reset() works"};
    }
    if (stage == Stage::BrokenOff) {
        throw Refusal{"the document is broken off; only reset() works"};
    }
}

bool Document::Impl::isOpen(Handle element) const
{
    return element.depth < open.size() && open[element.depth].number == element.number;
}

void Document::Impl::requireOpen(Handle element)
{
    if (!isOpen(element)) {
        throw Refusal{"the element has ended"};
    }
}

void Document::Impl::requireName(const Name& name)
{
    if (name.isChecked()) {
        return;
    }
    if (!isNcName(name.localName())) {
        throw Refusal{quoted(name.localName()) +
                      " is not a name (an NCName of Namespaces in XML 1.0)"};
    }
    if (name.hasNamespace() && !isNamespace(name.uri(), name.prefix())) {
        throw Refusal{quoted(name.uri()) + " with the prefix " + quoted(name.prefix()) +
                      " is not allowed as a namespace"};
    }
}

void Document::Impl::requireComment(const std::u16string& text)
{
    if (text.find(u"--") != std::u16string::npos || text.ends_with(u'-')) {
        throw Refusal{R"(a comment cannot have "--" or end in "-")"};
    }
    if (text.find(u'\r') != std::u16string::npos) {
        throw Refusal{"a comment cannot have a carriage return: no parser gives it back"};
    }
}

void Document::Impl::requireInstruction(const Name& target, const Text& data)
{
    requireName(target);
    if (target.hasNamespace()) {
        throw Refusal{"the target of an instruction is in no namespace"};
    }
    const auto isLetter = [](char character, char letter) { return (character | 0x20) == letter; };
    if (std::ranges::equal(target.localName(), std::string_view("xml"), isLetter)) {
        throw Refusal{"the target of an instruction cannot be " + quoted(target.localName())};
    }
    value.assign(data, options.unrepresentable);
    const std::u16string& units = value.units();
    if (units.find(u"?>") != std::u16string::npos) {
        throw Refusal{"the data of an instruction cannot have \"?>\""};
    }
    if (units.find(u'\r') != std::u16string::npos) {
        throw Refusal{
            "the data of an instruction cannot have a carriage return: no parser gives it back"};
    }
    if (units.find_first_of(u" \t\n") == 0) {
        throw Refusal{"the data of an instruction cannot begin with white space"};
    }
}

void Document::Impl::requireIdentifiers(std::string_view publicId, std::string_view systemId)
{
    if (!publicId.empty() && systemId.empty()) {
        throw Refusal{"a public identifier needs a system identifier"};
    }
    constexpr std::string_view IN_PUBLIC_IDS = " \n-'()+,./:=?;!*#@$_%";
    const auto isInPublicIds = [&](char character) {
        return (character >= '0' && character <= '9') ||
               ((character | 0x20) >= 'a' && (character | 0x20) <= 'z') ||
               IN_PUBLIC_IDS.find(character) != std::string_view::npos;
    };
    if (!std::ranges::all_of(publicId, isInPublicIds)) {
        throw Refusal{quoted(publicId) + " is not a public identifier"};
    }
    if (systemId.find('"') != std::string_view::npos &&
        systemId.find('\'') != std::string_view::npos) {
        throw Refusal{"a system identifier cannot have both kinds of quotes"};
    }
    if (systemId.find('\r') != std::string_view::npos) {
        throw Refusal{"a system identifier cannot have a carriage return: no parser gives it back"};
    }
}

void Document::Impl::doctype(const Name& name, std::string_view publicId, std::string_view systemId)
{
    checked({0}, [&] {
        requireName(name);
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
    });
    change([&] {
        beginLine(0);
        append("<!DOCTYPE ");
        appendName("", name.localName());
        if (!publicId.empty()) {
            append(" PUBLIC \"");
            append(publicId);
            append("\"");
        } else if (!systemId.empty()) {
            append(" SYSTEM");
        }
        if (!systemId.empty()) {
            const char* const quote = systemId.find('"') == std::string_view::npos ? "\"" : "'";
            append(" ");
            append(quote);
            batch += value.units();
            append(quote);
        }
        append(">");
        hasDoctype = true;
    });
}

void Document::Impl::comment(const Text& text)
{
    checked({0}, [&] {
        if (stage == Stage::InRoot) {
            throw Refusal{"the root is open; use the comment() of an element"};
        }
        value.assign(text, options.unrepresentable);
        requireComment(value.units());
    });
    change([&] {
        beginLine(0);
        writeComment();
    });
}

void Document::Impl::instruction(const Name& target, const Text& data)
{
    checked({0}, [&] {
        if (stage == Stage::InRoot) {
            throw Refusal{"the root is open; use the instruction() of an element"};
        }
        requireInstruction(target, data);
    });
    change([&] {
        beginLine(0);
        writeInstruction(target);
    });
}

std::uint64_t Document::Impl::root(const Name& name)
{
    checked({0, &name}, [&] {
        if (stage != Stage::BeforeRoot) {
            throw Refusal{"the document has a root already"};
        }
        requireName(name);
    });
    change([&] {
        stage = Stage::InRoot;
        startElement(name);
    });
    return open.back().number;
}

void Document::Impl::declare(Handle element, const Namespace& space)
{
    checked({element.depth + 1}, [&] {
        requireOpen(element);
        if (open[element.depth].hasContent) {
            throw Refusal{"a namespace is declared before content"};
        }
        if (!space.isChecked() && !isNamespace(space.uri(), space.prefix())) {
            throw Refusal{quoted(space.uri()) + " with the prefix " + quoted(space.prefix()) +
                          " is not allowed as a namespace"};
        }
        const bool isOtherDefault =
            space.prefix().empty() && scopes.defaultNamespace() != space.uri();
        if (isOtherDefault &&
            (!open[element.depth].hasPrefix || open[element.depth].declaresDefault)) {
            throw Refusal{"the default namespace of this element is another"};
        }
    });
    if (space.uri() == XML_URI ||
        (space.prefix().empty() ? scopes.defaultNamespace() == space.uri()
                                : !scopes.prefixOf(space.uri()).empty())) {
        return;
    }
    change([&] {
        if (space.prefix().empty()) {
            scopes.setDefaultNamespace(space.uri());
            open.back().declaresDefault = true;
            writeDeclaration("", space.uri());
        } else {
            writeDeclaration(scopes.bind(space.uri(), space.prefix()), space.uri());
        }
    });
}

void Document::Impl::attribute(Handle element, const Name& name, const Text& text)
{
    const bool isXml = name.uri() == XML_URI;
    const bool isKnown = checked({element.depth + 1, &name, true}, [&] {
        requireOpen(element);
        if (open[element.depth].hasContent) {
            throw Refusal{"an attribute comes before content"};
        }
        requireName(name);
        if (name.hasNamespace() && name.prefix().empty()) {
            throw Refusal{"an attribute cannot be in a namespace that wishes no prefix"};
        }
        if (!name.hasNamespace() && name.localName() == "xmlns") {
            throw Refusal{"\"xmlns\" declares a namespace; use declare()"};
        }
        value.assign(text, options.unrepresentable);
        const std::string_view prefix = isXml ? name.prefix() : scopes.prefixOf(name.uri());
        // The first attribute in a namespace without a prefix is new.
        const bool isNew = name.hasNamespace() && prefix.empty();
        if (!isNew && !attributeNames.add(prefix, name.localName())) {
            throw Refusal{"the element has this attribute already"};
        }
        return !isNew;
    });
    change([&] {
        std::string_view prefix = isXml ? name.prefix() : scopes.prefixOf(name.uri());
        if (!isKnown) {
            prefix = scopes.bind(name.uri(), name.prefix());
            writeDeclaration(prefix, name.uri());
            attributeNames.add(prefix, name.localName());
        }
        append(" ");
        appendName(prefix, name.localName());
        append("=\"");
        writeEscaped(writer, value, LAYOUT_IN_ATTRIBUTES);
        append("\"");
    });
}

void Document::Impl::text(Handle element, const Text& text)
{
    checked({element.depth + 1}, [&] {
        requireOpen(element);
        value.assign(text, options.unrepresentable);
    });
    change([&] {
        beginMixed(element.depth);
        writeEscaped(writer, value, LAYOUT_IN_TEXT);
    });
}

void Document::Impl::base64(Handle element, const void* data, std::size_t size)
{
    checked({element.depth + 1}, [&] {
        requireOpen(element);
        if (data == nullptr && size != 0) {
            throw Refusal{"the data is a null pointer"};
        }
    });
    change([&] {
        const bool isContinued = element.depth + 1 == open.size() && open.back().isInBase64;
        if (!isContinued) {
            beginMixed(element.depth);
        }
        const auto* first = static_cast<const unsigned char*>(data);
        const unsigned char* const last = first + size;
        while (first != last) {
            if (base64RestSize < 2) {
                base64Rest[base64RestSize++] = *first++;
            } else {
                writeBase64(base64Rest[0], base64Rest[1], *first++);
                base64RestSize = 0;
            }
            passOnIfFull();
        }
        open.back().isInBase64 = true;
    });
}

void Document::Impl::cdata(Handle element, const Text& text)
{
    checked({element.depth + 1}, [&] {
        requireOpen(element);
        value.assign(text, options.unrepresentable);
    });
    change([&] {
        beginMixed(element.depth);
        append("<![CDATA[");
        std::u16string_view rest = value.units();
        while (!rest.empty()) {
            const std::size_t special = std::min(rest.find(u"]]>"), rest.find(u'\r'));
            if (special == std::u16string_view::npos) {
                break;
            }
            const bool isReturn = rest[special] == u'\r';
            batch += rest.substr(0, isReturn ? special : special + 2);
            append(isReturn ? "]]>&#13;<![CDATA[" : "]]><![CDATA[");
            rest.remove_prefix(isReturn ? special + 1 : special + 2);
        }
        batch += rest;
        append("]]>");
    });
}

void Document::Impl::comment(Handle element, const Text& text)
{
    checked({element.depth + 1}, [&] {
        requireOpen(element);
        value.assign(text, options.unrepresentable);
        requireComment(value.units());
    });
    change([&] {
        beginContent(element.depth);
        beginLine(element.depth + 1);
        writeComment();
    });
}

void Document::Impl::instruction(Handle element, const Name& target, const Text& data)
{
    checked({element.depth + 1}, [&] {
        requireOpen(element);
        requireInstruction(target, data);
    });
    change([&] {
        beginContent(element.depth);
        beginLine(element.depth + 1);
        writeInstruction(target);
    });
}

void Document::Impl::raw(Handle element, const std::u16string& markup)
{
    checked({element.depth + 1}, [&] { requireOpen(element); });
    change([&] {
        beginMixed(element.depth);
        batch += markup;
    });
}

std::uint64_t Document::Impl::child(Handle element, const Name& name)
{
    checked({element.depth + 1, &name}, [&] {
        requireOpen(element);
        requireName(name);
    });
    change([&] {
        beginContent(element.depth);
        startElement(name);
    });
    return open.back().number;
}

void Document::Impl::add(Handle element, const Name& name, const Text& text)
{
    checked({element.depth + 1, &name}, [&] {
        requireOpen(element);
        requireName(name);
        value.assign(text, options.unrepresentable);
    });
    change([&] {
        beginContent(element.depth);
        startElement(name);
        beginMixed(element.depth + 1);
        writeEscaped(writer, value, LAYOUT_IN_TEXT);
        endInnermost();
    });
}

void Document::Impl::end(Handle element)
{
    checked({element.depth + 1}, [&] { requireOpen(element); });
    change([&] {
        endInside(element.depth);
        endInnermost();
    });
}

void Document::Impl::endInDestructor(Handle element) noexcept
{
    if (!isOpen(element) || stage != Stage::InRoot) {
        return;
    }
    try {
        end(element);
    } catch (...) {
        metInDestructor = std::current_exception(); // the only one: the document is broken off
    }
}

void Document::Impl::flush()
{
    checked({0}, [] {});
    change([&] {
        passOn(stage == Stage::AfterRoot ? heldFrom : batch.size());
        if (auto* const stream = std::get_if<std::ostream*>(&target)) {
            flushStream(**stream);
        }
    });
}

void Document::Impl::finish()
{
    if (metInDestructor) {
        std::rethrow_exception(std::exchange(metInDestructor, nullptr));
    }
    checked({0}, [&] {
        if (stage == Stage::BeforeRoot) {
            throw Refusal{"there is no root element"};
        }
    });
    change([&] {
        while (!open.empty()) {
            endInnermost();
        }
        passOn(batch.size());
        if (auto* const stream = std::get_if<std::ostream*>(&target)) {
            flushStream(**stream);
        }
        stage = Stage::Finished;
    });
}

void Document::Impl::reset()
{
    if (auto* const string = std::get_if<std::string*>(&target)) {
        (*string)->clear();
    }
    stage = Stage::BeforeRoot;
    hasDoctype = false;
    hasBegun = false;
    batch.clear();
    open.clear();
    names.clear();
    scopes.reset();
    attributeNames.clear();
    base64RestSize = 0;
    metInDestructor = nullptr;
}

void Document::Impl::beginContent(std::size_t depth)
{
    endInside(depth);
    if (!open.back().hasContent) {
        append(">");
        open.back().hasContent = true;
        attributeNames.clear();
    }
    writeBase64Rest();
}

void Document::Impl::beginMixed(std::size_t depth)
{
    beginContent(depth);
    open.back().isMixed = true;
}

void Document::Impl::endInside(std::size_t depth)
{
    while (open.size() > depth + 1) {
        endInnermost();
    }
}

void Document::Impl::endInnermost()
{
    writeBase64Rest();
    const OpenElement& element = open.back();
    const std::size_t depth = open.size() - 1;
    if (depth == 0) {
        // Only a document that is finished looks complete.
        heldFrom = batch.size();
    }
    if (!element.hasContent) {
        append("/>");
        attributeNames.clear();
    } else {
        if (element.endsWithLine) {
            beginLine(depth);
        }
        append("</");
        batch.append(names, element.name);
        append(">");
    }
    names.resize(element.name);
    scopes.goBackTo(element.outer);
    open.pop_back();
    if (depth == 0) {
        stage = Stage::AfterRoot;
    }
}

void Document::Impl::beginLine(std::size_t depth)
{
    constexpr std::size_t SPACES_PER_LEVEL = 2;
    if (!hasBegun && options.declaration) {
        append(R"(<?xml version="1.0" encoding="UTF-8"?>)");
    }
    const bool isFirst = !hasBegun && !options.declaration;
    hasBegun = true;
    const bool isMixed = !open.empty() && open.back().isMixed;
    if (options.layout == Layout::none || isMixed) {
        return;
    }
    if (!open.empty()) {
        open.back().endsWithLine = true;
    }
    if (!isFirst) {
        append("\n");
        batch.append(depth * SPACES_PER_LEVEL, u' ');
    }
}

void Document::Impl::startElement(const Name& name)
{
    beginLine(open.size());
    OpenElement element{++lastNumber, names.size(), scopes.mark()};
    element.isMixed = !open.empty() && open.back().isMixed;
    element.hasPrefix = !name.prefix().empty();
    std::string_view prefix;
    bool isDeclared = true;
    if (name.uri() == XML_URI) {
        prefix = name.prefix();
    } else if (!element.hasPrefix) {
        isDeclared = scopes.defaultNamespace() == name.uri();
        if (!isDeclared) {
            scopes.setDefaultNamespace(name.uri());
            element.declaresDefault = true;
        }
    } else {
        prefix = scopes.prefixOf(name.uri());
        isDeclared = !prefix.empty();
        if (!isDeclared) {
            prefix = scopes.bind(name.uri(), name.prefix());
        }
    }
    append("<");
    const std::size_t begin = batch.size();
    appendName(prefix, name.localName());
    names.append(batch, begin);
    open.push_back(element);
    if (!isDeclared) {
        writeDeclaration(prefix, name.uri());
    }
}

void Document::Impl::writeDeclaration(std::string_view prefix, std::string_view uri)
{
    append(prefix.empty() ? " xmlns" : " xmlns:");
    appendName("", prefix);
    append("=\"");
    uriUnits.assign(uri.begin(), uri.end());
    writer.writeValue(uriUnits);
    append("\"");
}

void Document::Impl::writeBase64Rest()
{
    if (open.back().isInBase64) {
        open.back().isInBase64 = false;
        if (base64RestSize > 0) {
            writeBase64(base64Rest[0], base64RestSize > 1 ? base64Rest[1] : 0, 0);
            batch.replace(batch.size() - (3 - base64RestSize), 3 - base64RestSize,
                          3 - base64RestSize, u'=');
            base64RestSize = 0;
        }
    }
}

void Document::Impl::writeBase64(unsigned first, unsigned second, unsigned third)
{
    static constexpr char16_t DIGITS[] =
        u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const unsigned bits = first << 16 | second << 8 | third;
    const char16_t digits[] = {DIGITS[bits >> 18], DIGITS[bits >> 12 & 63], DIGITS[bits >> 6 & 63],
                               DIGITS[bits & 63]};
    batch.append(digits, 4);
}

void Document::Impl::writeComment()
{
    append("<!--");
    batch += value.units();
    append("-->");
}

void Document::Impl::writeInstruction(const Name& target)
{
    append("<?");
    appendName("", target.localName());
    if (!value.units().empty()) {
        append(" ");
        batch += value.units();
    }
    append("?>");
}

void Document::Impl::append(std::string_view ascii)
{
    const std::size_t used = batch.size();
    batch.resize_and_overwrite(used + ascii.size(), [&](char16_t* units, std::size_t) noexcept {
        std::ranges::copy(ascii, units + used);
        return used + ascii.size();
    });
}

void Document::Impl::appendName(std::string_view prefix, std::string_view localName)
{
    const auto appendText = [this](std::string_view text) {
        const std::size_t used = batch.size();
        batch.resize_and_overwrite(
            used + text::decodedUtf8Bound(text.size()), [&](char16_t* units, std::size_t) noexcept {
                const auto decoded =
                    text::decodeUtf8(text.data(), text.data() + text.size(), units + used);
                return static_cast<std::size_t>(decoded.written - units);
            });
    };
    if (!prefix.empty()) {
        appendText(prefix);
        batch += u':';
    }
    appendText(localName);
}

void Document::Impl::passOnIfFull()
{
    const std::size_t ready = stage == Stage::AfterRoot ? heldFrom : batch.size();
    if (ready > BATCH) {
        passOn(ready);
    }
}

void Document::Impl::passOn(std::size_t length)
{
    if (length == 0) {
        return;
    }
    const auto encode = [&](std::string& out) {
        const std::size_t used = out.size();
        out.resize_and_overwrite(
            used + text::encodedUtf8Bound(length), [&](char* bytes, std::size_t) noexcept {
                const auto encoded =
                    text::encodeUtf8(batch.data(), batch.data() + length, bytes + used);
                return static_cast<std::size_t>(encoded.written - bytes);
            });
    };
    if (auto* const string = std::get_if<std::string*>(&target)) {
        encode(**string);
    } else {
        bytes.clear();
        encode(bytes);
        if (auto* const stream = std::get_if<std::ostream*>(&target)) {
            (*stream)->write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
            requireGood(**stream);
        } else {
            std::get<std::function<void(std::string_view)>>(target)(bytes);
        }
    }
    batch.erase(0, length);
    heldFrom -= std::min(heldFrom, length);
}

void Document::Impl::flushStream(std::ostream& stream)
{
    stream.flush();
    requireGood(stream);
}

void Document::Impl::requireGood(const std::ostream& stream) const
{
    if (!stream) {
        throw Error(pathTo({open.size()}) + ": the stream has failed");
    }
}

} // namespace tarn::document

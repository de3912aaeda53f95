#include "tarn/document/DocumentImpl.hpp"

#include "tarn/document/markup.hpp"

#include <algorithm>
#include <utility>

namespace tarn::document {

using namespace detail;

Document::Impl::Impl(Output::Target target, Options options)
try : output(std::move(target)), options(options) {
} catch (const Refusal& refusal) {
    throw Error("/: " + refusal.reason);
}

void Document::Impl::throwError(const Place& place, const Refusal& refusal)
{
    throw Error(pathTo(place) + ": " + refusal.reason);
}

std::string Document::Impl::pathTo(const Place& place)
{
    std::string path;
    for (std::size_t level = 0; level < place.depth && level < open.size(); ++level) {
        path += names.part(open[level].nameBegin, open[level].nameLength);
        path += '/';
    }
    if (place.name != nullptr) {
        const std::size_t space = spaceOf(*place.name);
        const bool isInScope = place.depth == open.size() && space != Scopes::NOT_BOUND;
        const std::string_view prefix = isInScope ? prefixOf(space) : place.name->prefix();
        path += place.isAttribute ? "@" : "";
        path += prefix;
        path += prefix.empty() ? "" : ":";
        path += place.name->localName();
    } else if (!path.empty()) {
        path.pop_back();
    }
    return path.empty() ? "/" : path;
}

void Document::Impl::requireUsable() const
{
    if (output.isHandingOver()) {
        throw Refusal{"the target cannot call the document that it receives"};
    }
    if (stage == Stage::Finished) {
        throw Refusal{"the document is finished; only reset() works"};
    }
    if (stage == Stage::BrokenOff) {
        throw Refusal{"the document is broken off; only reset() works"};
    }
}

void Document::Impl::refuseEnded() const
{
    requireUsable();
    throw Ended();
}

void Document::Impl::requireOutsideRoot(const char* operation) const
{
    requireUsable();
    if (stage == Stage::InRoot) {
        throw Refusal{"the root is open; use the " + std::string(operation) + "() of an element"};
    }
}

void Document::Impl::requireInstruction(const Name& target, const Text& data)
{
    requireTarget(target);
    value.assign(data, options.unrepresentable);
    requireData(value.bytes());
}

std::size_t Document::Impl::bringIntoScope(const Name& name)
{
    beginScope();
    if (!name.prefix().empty()) {
        return scopes.bind(name.uri(), name.prefix());
    }
    open.back().declaresDefault = true;
    scopes.setDefaultNamespace(name.uri());
    return NO_PREFIX;
}

void Document::Impl::beginScope()
{
    if (!open.back().hasScope) {
        outerScopes.push_back(scopes.mark());
        open.back().hasScope = true;
    }
}

void Document::Impl::endInnermost()
{
    const OpenElement& element = open.back();
    if (element.isInBase64) {
        writeBase64Rest();
    }
    const std::size_t depth = open.size() - 1;
    if (depth == 0) {
        // Only a document that is finished looks complete.
        stage = Stage::AfterRoot;
        output.hold();
    }
    if (!element.hasContent) {
        output.write("/>");
        attributeNames.clear();
    } else {
        const std::string_view name = names.part(element.nameBegin, element.nameLength);
        char* out = output.room(lineBound(depth) + sizeof("</>") + name.size());
        if (element.endsWithLine && !element.isMixed) {
            out = putLine(out, depth);
        }
        out = put(put(out, "</"), name);
        *out++ = '>';
        output.endAt(out);
    }
    names.shrinkTo(element.nameBegin);
    if (element.hasScope) {
        scopes.goBackTo(outerScopes.back());
        outerScopes.pop_back();
    }
    open.pop_back();
}

void Document::Impl::startElement(const Name& name, std::size_t space)
{
    if (!hasBegun) {
        begin();
    }
    const std::size_t depth = open.size();
    const bool isOnOwnLine = beginsLine();
    const bool isMixed = depth != 0 && open.back().isMixed;
    OpenElement& element = open.emplace_back();
    element.number = ++lastNumber;
    element.nameBegin = names.size();
    element.isMixed = isMixed;
    element.hasPrefix = !name.prefix().empty();
    const bool isNew = space == Scopes::NOT_BOUND;
    if (isNew) {
        space = bringIntoScope(name);
    }
    const std::string_view prefix = prefixOf(space);
    const std::string_view localName = name.localName();
    char* out = output.room(lineBound(depth) + prefix.size() + localName.size() + sizeof("<:"));
    if (isOnOwnLine) {
        out = putLine(out, depth);
    }
    *out++ = '<';
    output.endAt(putName(out, prefix, localName));
    char* const nameOut = names.room(prefix.size() + localName.size() + sizeof(":"));
    names.endAt(putName(nameOut, prefix, localName));
    element.nameLength = names.size() - element.nameBegin;
    if (isNew) {
        writeDeclaration(prefix, name.uri());
    }
}

void Document::Impl::begin()
{
    if (options.declaration) {
        output.write(R"(<?xml version="1.0" encoding="UTF-8"?>)");
    }
}

bool Document::Impl::canBeginLine() const
{
    const bool isFirst = !hasBegun && !options.declaration;
    return options.layout == Layout::indented && !isFirst && (open.empty() || !open.back().isMixed);
}

bool Document::Impl::beginsLine()
{
    const bool canBegin = canBeginLine();
    hasBegun = true;
    if (canBegin && !open.empty()) {
        open.back().endsWithLine = true;
    }
    return canBegin;
}

void Document::Impl::beginLine()
{
    if (!hasBegun) {
        begin();
    }
    if (beginsLine()) {
        output.endAt(putLine(output.room(lineBound(open.size())), open.size()));
    }
}

void Document::Impl::writeDeclaration(std::string_view prefix, std::string_view uri)
{
    output.write(prefix.empty() ? std::string_view(" xmlns") : std::string_view(" xmlns:"));
    output.write(prefix);
    output.write("=\"");
    escaper.write(uri, {}, output);
    output.write("\"");
}

void Document::Impl::writeValue(const Referenced& referenced)
{
    if (!value.has(text::MARKUP | referenced.classes)) {
        output.write(value.bytes());
        return;
    }
    escaper.write(value.bytes(),
                  value.has(referenced.classes) ? referenced.units : std::u16string_view(), output);
}

void Document::Impl::writeBase64Rest()
{
    open.back().isInBase64 = false;
    if (base64RestSize > 0) {
        const std::size_t missing = 3 - std::exchange(base64RestSize, 0);
        std::fill_n(base64Rest + 3 - missing, missing, static_cast<unsigned char>(0));
        writeWholeBase64(base64Rest, 3);
        std::fill_n(output.room(0) - missing, missing, '=');
    }
}

void Document::Impl::writeComment()
{
    beginLine();
    output.write("<!--");
    output.write(value.bytes());
    output.write("-->");
}

void Document::Impl::writeInstruction(const Name& target)
{
    beginLine();
    output.write("<?");
    output.write(target.localName());
    if (!value.bytes().empty()) {
        output.write(" ");
        output.write(value.bytes());
    }
    output.write("?>");
}

} // namespace tarn::document

#include "tarn/document/checks.hpp"

#include "tarn/document/names.hpp"

#include <algorithm>
#include <array>

namespace tarn::document::detail {

namespace {

std::string quoted(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

} // namespace

void refuseName(std::string_view name)
{
    throw Refusal{quoted(name) + " is not a name (an NCName of Namespaces in XML 1.0)"};
}

void requireNamespace(std::string_view uri, std::string_view prefix)
{
    if (uri.empty() || !canBe(URI, uri) || !areAllowedTogether(uri, prefix)) {
        throw Refusal{quoted(uri) + " with the prefix " + quoted(prefix) +
                      " is not allowed as a namespace"};
    }
}

void requireComment(std::string_view text)
{
    if (text.find("--") != std::string_view::npos || text.ends_with('-')) {
        throw Refusal{R"(a comment cannot have "--" or end in "-")"};
    }
    if (text.find('\r') != std::string_view::npos) {
        throw Refusal{"a comment cannot have a carriage return: no parser gives it back"};
    }
}

void requireTarget(const Name& target)
{
    if (!target.isChecked()) {
        requireLocalName(target.localName());
    }
    if (target.hasNamespace()) {
        throw Refusal{"the target of an instruction is in no namespace"};
    }
    const auto isLetter = [](char character, char letter) { return (character | 0x20) == letter; };
    if (std::ranges::equal(target.localName(), std::string_view("xml"), isLetter)) {
        throw Refusal{"the target of an instruction cannot be " + quoted(target.localName())};
    }
}

void requireData(std::string_view data)
{
    if (data.find("?>") != std::string_view::npos) {
        throw Refusal{"the data of an instruction cannot have \"?>\""};
    }
    if (data.find('\r') != std::string_view::npos) {
        throw Refusal{
            "the data of an instruction cannot have a carriage return: no parser gives it back"};
    }
    if (data.find_first_of(" \t\n") == 0) {
        throw Refusal{"the data of an instruction cannot begin with white space"};
    }
}

void requireIdentifiers(std::string_view publicId, std::string_view systemId)
{
    if (!publicId.empty() && systemId.empty()) {
        throw Refusal{"a public identifier needs a system identifier"};
    }
    if (!canBe(PUBLIC_ID, publicId)) {
        throw Refusal{quoted(publicId) + " is not a public identifier"};
    }
    if (publicId.find("  ") != std::string_view::npos || publicId.starts_with(' ') ||
        publicId.ends_with(' ')) {
        throw Refusal{"a public identifier cannot begin or end with a blank, or have two in a "
                      "row: no parser gives it back"};
    }
    if (systemId.find('"') != std::string_view::npos &&
        systemId.find('\'') != std::string_view::npos) {
        throw Refusal{"a system identifier cannot have both kinds of quotes"};
    }
    if (systemId.find('\r') != std::string_view::npos) {
        throw Refusal{"a system identifier cannot have a carriage return: no parser gives it back"};
    }
}

} // namespace tarn::document::detail

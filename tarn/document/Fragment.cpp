#include "tarn/document/Fragment.hpp"

#include "tarn/document/Bytes.hpp"
#include "tarn/document/checks.hpp"
#include "tarn/document/Error.hpp"
#include "tarn/document/Escaper.hpp"
#include "tarn/document/Value.hpp"

namespace tarn::document {

namespace {

void assign(detail::Value& value, const Text& text)
{
    try {
        value.assign(text, Unrepresentable::refuse);
    } catch (const detail::Refusal& refusal) {
        throw Error("/: " + refusal.reason);
    }
}

} // namespace

Fragment Fragment::of(const Text& text)
{
    detail::Value value;
    assign(value, text);
    detail::Bytes markup;
    detail::Escaper().write(value.bytes(), detail::IN_TEXT.units, markup);
    return Fragment(std::string(markup.view()));
}

Fragment Fragment::trusted(std::string_view markup)
{
    detail::Value value;
    assign(value, markup);
    return Fragment(std::string(markup));
}

} // namespace tarn::document

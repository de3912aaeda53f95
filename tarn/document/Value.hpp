// Text as UTF-16 that XML 1.0 can hold.
#pragma once

#include "tarn/document/Document.hpp"

#include <string>
#include <string_view>

namespace tarn::document::detail {

/// Why a call is refused; becomes an Error when the place is known.
struct Refusal
{
    std::string reason;
};

/// A text that is kept to reuse its storage.
class Value
{
public:
    /// @throws Refusal if @p value has what XML 1.0 cannot hold, unless that is to be replaced.
    void assign(const Text& value, Unrepresentable unrepresentable);

    const std::u16string& units() const { return text; }
    /// Whether there is a tab, a line feed or a carriage return.
    bool hasLayout() const { return layout; }

private:
    /// These two return whether there may be characters that XML 1.0 does not have.
    bool decode(std::string_view bytes, Unrepresentable unrepresentable);
    bool copy(std::u16string_view units, Unrepresentable unrepresentable);
    void checkCharacters(Unrepresentable unrepresentable);

    std::u16string text;
    bool layout = false;
};

} // namespace tarn::document::detail

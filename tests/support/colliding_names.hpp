// Names that meet in the hash tables of the writer and of the checked layer.
#pragma once

#include <tarn/document/StackIndex.hpp>
#include <tarn/xml/BindingIndex.hpp>

#include <string>
#include <utility>
#include <vector>

namespace tarn::tests {

/// Names of namespaces with a hash like any other.
inline std::u16string ordinaryName(unsigned number)
{
    const std::string digits = std::to_string(number);
    return u"http://example.org/namespace/" + std::u16string(digits.begin(), digits.end());
}

/// Names that all have the same hash: a product with their last four code units, which these make
/// zero.
inline std::u16string collidingName(unsigned number)
{
    return {u'u', u'r', u'n', static_cast<char16_t>(number), 0xED03, 0xD192, 0x4A32, 0xD1B5};
}

/// Names whose hashes put them in a few slots around the end of a table with @p SLOTS slots, and of
/// each smaller one.
template <unsigned SLOTS>
std::u16string nameAroundTheEnd(unsigned number)
{
    static const std::vector<std::u16string> NAMES = [] {
        utils::detail::BindingIndex::Bindings bindings;
        utils::detail::BindingIndex index(bindings);
        std::vector<std::u16string> names;
        for (unsigned tried = 0; names.size() < 40; ++tried) {
            std::u16string name = ordinaryName(tried);
            if ((index.find(name).hash + 3) % SLOTS < 5) {
                names.push_back(std::move(name));
            }
        }
        return names;
    }();
    return NAMES.at(number);
}

/// Texts that meet in one slot of a StackIndex, be it of 256. The first two have one hash.
inline const std::string& meetingText(unsigned number)
{
    using document::detail::hashOf;
    static const std::vector<std::string> TEXTS = [] {
        std::vector<std::string> texts = {"a", "ba"};
        for (unsigned tried = 0; texts.size() < 20; ++tried) {
            std::string text = std::to_string(tried);
            text.insert(text.begin(), 'n');
            if (hashOf(text) % 256 == hashOf("a") % 256) {
                texts.push_back(std::move(text));
            }
        }
        return texts;
    }();
    return TEXTS.at(number);
}

} // namespace tarn::tests

// Bytes read as choices and texts: of a fuzzer, or random ones.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace tarn::tests {

/// The bytes of an input, read as choices and texts; zeros after their end.
class Input
{
public:
    explicit Input(std::string_view bytes) : unread(bytes) {}

    bool isEmpty() const { return unread.empty(); }

    std::size_t below(std::size_t limit) { return byte() % limit; }

    template <class Choice, std::size_t COUNT>
    const Choice& pick(const Choice (&choices)[COUNT])
    {
        return choices[below(COUNT)];
    }

    /// Any code units: up to 255 of one byte or of two, and perhaps these again and again, so that
    /// a small input can fill a batch.
    std::u16string text()
    {
        const std::size_t form = below(4);
        std::u16string units;
        for (std::size_t length = byte(); length > 0 && !isEmpty(); --length) {
            const unsigned high = form < 2 ? 0 : byte();
            units += static_cast<char16_t>(high << 8 | byte());
        }
        if (form % 2 == 1 && !units.empty()) {
            const std::size_t period = units.size();
            const std::size_t wanted = 64 * byte() + byte();
            const std::size_t added = std::min(wanted, repetitionsLeft);
            repetitionsLeft -= added;
            for (std::size_t i = 0; i < added; ++i) {
                units += units[i % period];
            }
        }
        return units;
    }

private:
    unsigned byte()
    {
        if (unread.empty()) {
            return 0;
        }
        const auto first = static_cast<unsigned char>(unread.front());
        unread.remove_prefix(1);
        return first;
    }

    std::string_view unread;
    /// In code units; keeps a run short.
    std::size_t repetitionsLeft = 20'000;
};

} // namespace tarn::tests

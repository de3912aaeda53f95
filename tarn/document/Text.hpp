// What can be a value: text in UTF-8 or UTF-16, numbers, truth values, points in time.
#pragma once

#include "tarn/export.hpp"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

namespace tarn::document {

/// A value, for the length of a call.
///
/// - Text is UTF-8 (`char`, and `char8_t` where there is one) or UTF-16 (`char16_t`): a pointer to
///   NUL-terminated text, a string, a string view, or what converts to a `std::string_view`. It is
///   checked where it is used.
/// - A `bool` is `true` or `false`; an integer is its decimal digits.
/// - A floating-point number is the shortest digits that read back the same, or `INF`, `-INF` or
///   `NaN` (XML Schema 1.1, `xs:double`), whatever the locale.
/// - A time point of `std::chrono::system_clock` is an `xs:dateTime` in UTC,
///   `2026-11-25T18:30:02Z`, with a fraction if it has one, cut to nanoseconds. One whose seconds
///   do not fit `std::int64_t`, or that is no number, is refused where it is used.
///
/// A single `char`, a `wchar_t` and other pointers do not compile.
///
/// @see @ref values
class TARN_EXPORT Text
{
    template <class Value>
    static constexpr bool isCodeUnit = std::is_same_v<Value, char> ||
#ifdef __cpp_char8_t
                                       std::is_same_v<Value, char8_t> ||
#endif
                                       std::is_same_v<Value, char16_t>;
    template <class Value>
    static constexpr bool isConvertibleToView =
        std::is_convertible_v<const Value&, std::string_view> ||
#ifdef __cpp_char8_t
        std::is_convertible_v<const Value&, std::u8string_view> ||
#endif
        std::is_convertible_v<const Value&, std::u16string_view>;

public:
    /// UTF-8, up to the terminating NUL. A null pointer is refused where the text is used.
    Text(const char* text) // NOLINT(google-explicit-constructor)
        : Text(text == nullptr ? std::string_view() : std::string_view(text))
    {
        kind = text == nullptr ? Kind::Null : kind;
    }
    /// UTF-8.
    Text(std::string_view text) : bytes(text.data()), size(text.size()) {} // NOLINT
    /// UTF-8.
    Text(const std::string& text) : Text(std::string_view(text)) {} // NOLINT
    /// UTF-16, up to the terminating NUL. A null pointer is refused where the text is used.
    Text(const char16_t* text) // NOLINT(google-explicit-constructor)
        : Text(text == nullptr ? std::u16string_view() : std::u16string_view(text))
    {
        kind = text == nullptr ? Kind::Null : kind;
    }
    /// UTF-16.
    Text(std::u16string_view text) // NOLINT(google-explicit-constructor)
        : units(text.data()), size(text.size()), kind(Kind::Utf16)
    {
    }
    /// UTF-16.
    Text(const std::u16string& text) : Text(std::u16string_view(text)) {} // NOLINT
#ifdef __cpp_char8_t
    Text(const char8_t* text) : Text(reinterpret_cast<const char*>(text)) {} // NOLINT
    Text(std::u8string_view text) // NOLINT(google-explicit-constructor)
        : Text(std::string_view(reinterpret_cast<const char*>(text.data()), text.size()))
    {
    }
    Text(const std::u8string& text) : Text(std::u8string_view(text)) {} // NOLINT
#endif
    /// A truth value or a number; a single character does not compile.
    template <class Value, std::enable_if_t<std::is_arithmetic_v<Value>, int> = 0>
    Text(Value value) // NOLINT(google-explicit-constructor)
    {
        static_assert(!isCodeUnit<Value> && !std::is_same_v<Value, wchar_t> &&
                          !std::is_same_v<Value, char32_t>,
                      "a single character is no text; write it in double quotes");
        static_assert(std::is_floating_point_v<Value> || sizeof(Value) <= sizeof(long long),
                      "the integer is too long");
        if constexpr (std::is_same_v<Value, bool>) {
            setBool(value);
        } else if constexpr (std::is_same_v<Value, float>) {
            setFloat(value);
        } else if constexpr (std::is_floating_point_v<Value>) {
            setFloat(static_cast<
                     std::conditional_t<std::is_same_v<Value, long double>, long double, double>>(
                value));
        } else if constexpr (std::is_signed_v<Value>) {
            setInteger(static_cast<long long>(value));
        } else {
            setInteger(static_cast<unsigned long long>(value));
        }
    }
    /// A point in time, in UTC.
    template <class Duration>
    Text(std::chrono::time_point<std::chrono::system_clock, Duration> time) // NOLINT
    {
        // Compared as seconds, coarser durations would overflow.
        constexpr long double LIMIT = 0x1p63L;
        const std::chrono::duration<long double> exact = time.time_since_epoch();
        if (!(exact.count() >= -LIMIT && exact.count() < LIMIT)) {
            kind = Kind::OutOfRange;
            return;
        }
        const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
        setTime(seconds.time_since_epoch().count(),
                std::chrono::duration_cast<std::chrono::nanoseconds>(time - seconds).count());
    }
    /// Text in UTF-8 or UTF-16: what converts to a string view.
    template <class View,
              std::enable_if_t<std::is_class_v<View> && isConvertibleToView<View>, int> = 0>
    Text(const View& text) : Text(viewOf(text)) // NOLINT(google-explicit-constructor)
    {
    }
    template <class Pointee, std::enable_if_t<!isCodeUnit<Pointee>, int> = 0>
    Text(Pointee*) = delete;
    Text(std::nullptr_t) = delete;
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() = default;

    /// @cond For the layer.
    enum class Kind : unsigned char
    {
        Utf8,
        Utf16,
        Null,       ///< Made of a null pointer.
        OutOfRange, ///< Made of a time point that cannot be written.
    };
    Kind textKind() const
    {
        return kind;
    }
    std::string_view utf8() const
    {
        return {bytes, size};
    }
    std::u16string_view utf16() const
    {
        return {units, size};
    }
    /// @endcond

private:
    template <class Value>
    static auto viewOf(const Value& text)
    {
        if constexpr (std::is_convertible_v<const Value&, std::string_view>) {
            return static_cast<std::string_view>(text);
#ifdef __cpp_char8_t
        } else if constexpr (std::is_convertible_v<const Value&, std::u8string_view>) {
            return static_cast<std::u8string_view>(text);
#endif
        } else {
            return static_cast<std::u16string_view>(text);
        }
    }

    /// Takes the first @p length of its own characters.
    void setOwn(std::size_t length)
    {
        bytes = own;
        size = length;
    }
    void setBool(bool value);
    void setInteger(long long value);
    void setInteger(unsigned long long value);
    void setFloat(float value);
    void setFloat(double value);
    void setFloat(long double value);
    void setTime(long long seconds, long long nanoseconds);

    union {
        const char* bytes = "";
        const char16_t* units;
    };
    std::size_t size = 0;
    Kind kind = Kind::Utf8;
    /// Holds what is no text of the caller's.
    char own[48];
};

} // namespace tarn::document

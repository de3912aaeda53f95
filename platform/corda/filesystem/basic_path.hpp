// Stand-in for the application's path type.
#pragma once

#include <string>

namespace corda::filesystem {

namespace detail {

/// How text in code units of type @p Char becomes the operating system's text of a path.
template <class NativeChar, class Char>
struct path_traits;

/// Linux takes bytes, and they are UTF-8.
template <>
struct path_traits<char, char16_t>
{
    /// @throws std::runtime_error that shows @p text, if that holds an unpaired surrogate, which
    ///     UTF-8 cannot represent, or a NUL, where the system would take it to end.
    static std::string to_native(const std::u16string& text);
};

} // namespace detail

/// A path in the form that the operating system takes.
template <class NativeChar, class Char, class Traits>
class basic_path
{
public:
    /// The empty path, which names nothing.
    basic_path() = default;

    /// @throws what `Traits::to_native` throws if @p text cannot be a path.
    explicit basic_path(const std::basic_string<Char>& text) : text(Traits::to_native(text)) {}

    const std::basic_string<NativeChar>& native() const noexcept { return text; }
    bool empty() const noexcept { return text.empty(); }

private:
    std::basic_string<NativeChar> text;
};

} // namespace corda::filesystem

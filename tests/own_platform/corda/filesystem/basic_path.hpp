#pragma once

#include <string>

namespace corda::filesystem {

namespace detail {

template <class NativeChar, class Char>
struct path_traits;

} // namespace detail

template <class NativeChar, class Char, class Traits>
struct basic_path
{
    std::basic_string<Char> text;
};

} // namespace corda::filesystem

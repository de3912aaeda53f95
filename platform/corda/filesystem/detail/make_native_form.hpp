// Stand-in for the application's path normaliser.
#pragma once

#include <string>

namespace corda::filesystem::detail {

/// Brings the text of a path into the form of the operating system: on Linux, separators are `/`
/// and every other character belongs to a name, so that the text is in that form already.
///
/// @param normalise whether to write the path in its shortest form too: without repeated
///     separators, components `.` and a separator at the end. Components `..` stay, since after a
///     symbolic link they lead elsewhere. A path of nothing but `.` becomes `.`, an empty one stays
///     empty.
std::u16string make_native_form(const std::u16string& path, bool normalise);

} // namespace corda::filesystem::detail

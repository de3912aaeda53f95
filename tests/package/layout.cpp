// What a compiled caller knows of the library's classes beyond the exported symbols. Compiling this
// file is the test; a change here is a change of the binary interface (docs/compatibility.md).

#include <tarn/xml/XmlWriter.hpp>

#include <type_traits>

namespace {

using tarn::utils::XmlWriter;

static_assert(sizeof(XmlWriter) == 8 && alignof(XmlWriter) == 8);
static_assert(!std::is_polymorphic_v<XmlWriter> && std::is_standard_layout_v<XmlWriter>);
static_assert(std::is_nothrow_move_constructible_v<XmlWriter>);
static_assert(std::is_nothrow_move_assignable_v<XmlWriter>);
static_assert(!std::is_copy_constructible_v<XmlWriter>);

} // namespace

// What compiled programs rely on besides the exported symbols: size and alignment of the classes,
// and how they are copied and moved. Compiling this file is the test. A change here changes the
// binary interface (docs/compatibility.md).

#include <tarn/xml/XmlWriter.hpp>

#include <type_traits>

namespace {

using tarn::utils::XmlWriter;

static_assert(sizeof(XmlWriter) == 8);
static_assert(alignof(XmlWriter) == 8);
static_assert(!std::is_polymorphic_v<XmlWriter> && std::is_standard_layout_v<XmlWriter>);
static_assert(std::is_nothrow_move_constructible_v<XmlWriter>);
static_assert(std::is_nothrow_move_assignable_v<XmlWriter>);
static_assert(!std::is_copy_constructible_v<XmlWriter>);

} // namespace

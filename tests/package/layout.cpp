// What a compiled caller knows of the library's classes beyond the exported symbols. Compiling this
// file is the test; a change here is a change of the binary interface (docs/compatibility.md).

#include <tarn/services/BundleContainer.hpp>
#include <tarn/services/CrashDataService.hpp>
#include <tarn/xml/XmlWriter.hpp>

#include <cstddef>
#include <type_traits>

namespace {

using tarn::utils::XmlWriter;
using tarn::utils::services::BundleContainer;
using tarn::utils::services::CrashDataService;

template <class Class, std::size_t SIZE>
constexpr bool isLaidOut = sizeof(Class) == SIZE && alignof(Class) == alignof(void*);

constexpr std::size_t WORD = 8;

static_assert(isLaidOut<XmlWriter, WORD>);
static_assert(!std::is_polymorphic_v<XmlWriter> && std::is_standard_layout_v<XmlWriter>);
static_assert(std::is_nothrow_move_constructible_v<XmlWriter>);
static_assert(std::is_nothrow_move_assignable_v<XmlWriter>);
static_assert(!std::is_copy_constructible_v<XmlWriter>);

static_assert(isLaidOut<BundleContainer, 3 * WORD>);
static_assert(!std::is_polymorphic_v<BundleContainer>);
static_assert(!std::is_move_constructible_v<BundleContainer>);
static_assert(isLaidOut<BundleContainer::Bundles, 2 * WORD>);
static_assert(std::is_trivially_copyable_v<BundleContainer::Bundles>);
#ifdef EMBEDDED_FRAMEWORK
static_assert(isLaidOut<cppmicroservices::Bundle, 3 * WORD>);
#endif

// The order of the virtual operations is the subject of a test that calls them.
static_assert(isLaidOut<CrashDataService, WORD>);
static_assert(std::is_abstract_v<CrashDataService>);
static_assert(std::has_virtual_destructor_v<CrashDataService>);
static_assert(!std::is_copy_constructible_v<CrashDataService>);

} // namespace

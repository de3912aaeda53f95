// What compiled programs rely on besides the exported symbols: size and alignment of the classes,
// and how they are copied and moved. Compiling this file is the test. A change here changes the
// binary interface (docs/compatibility.md).

#include <tarn/document/Document.hpp>
#ifdef WITH_SERVICES
#include <tarn/services/BundleContainer.hpp>
#include <tarn/services/CrashDataService.hpp>
#endif
#include <tarn/xml/XmlWriter.hpp>

#include <cstddef>
#include <type_traits>

namespace {

using tarn::utils::XmlWriter;

static_assert(sizeof(XmlWriter) == 8);
static_assert(alignof(XmlWriter) == 8);
static_assert(!std::is_polymorphic_v<XmlWriter> && std::is_standard_layout_v<XmlWriter>);
static_assert(std::is_nothrow_move_constructible_v<XmlWriter>);
static_assert(std::is_nothrow_move_assignable_v<XmlWriter>);
static_assert(!std::is_copy_constructible_v<XmlWriter>);

using namespace tarn::document;

constexpr std::size_t WORD = 8;

template <class Class, std::size_t SIZE>
constexpr bool isLaidOut = sizeof(Class) == SIZE && alignof(Class) == WORD;

static_assert(isLaidOut<Document, WORD>);
static_assert(!std::is_polymorphic_v<Document>);
static_assert(!std::is_copy_constructible_v<Document> && !std::is_move_constructible_v<Document>);
static_assert(isLaidOut<Element, 4 * WORD>);
static_assert(!std::is_polymorphic_v<Element> && std::is_standard_layout_v<Element>);
static_assert(std::is_nothrow_move_constructible_v<Element>);
static_assert(std::is_nothrow_move_assignable_v<Element>);
static_assert(!std::is_copy_constructible_v<Element> && !std::is_copy_assignable_v<Element>);
// Inline functions of the headers fill these, or hand them over by value.
static_assert(isLaidOut<Namespace, 5 * WORD> && std::is_trivially_copyable_v<Namespace>);
static_assert(isLaidOut<Name, 7 * WORD> && std::is_trivially_copyable_v<Name>);
static_assert(isLaidOut<Text, 9 * WORD> && std::is_standard_layout_v<Text>);
static_assert(isLaidOut<Fragment, 4 * WORD> && std::is_nothrow_move_constructible_v<Fragment>);
static_assert(sizeof(Options) == 12 && offsetof(Options, unrepresentable) == 4);
static_assert(offsetof(Options, declaration) == 8 && std::is_trivially_copyable_v<Options>);
static_assert(isLaidOut<Error, 2 * WORD> && std::has_virtual_destructor_v<Error>);

#ifdef WITH_SERVICES
using namespace tarn::utils::services;

static_assert(isLaidOut<BundleContainer, 3 * WORD> && !std::is_polymorphic_v<BundleContainer>);
static_assert(!std::is_move_constructible_v<BundleContainer>);
static_assert(isLaidOut<BundleContainer::Bundles, 2 * WORD>);
static_assert(std::is_trivially_copyable_v<BundleContainer::Bundles>);
#ifdef EMBEDDED_FRAMEWORK
static_assert(isLaidOut<cppmicroservices::Bundle, 3 * WORD>);
#endif
// scripts/abi compares the order of the virtual operations.
static_assert(isLaidOut<CrashDataService, WORD> && std::is_abstract_v<CrashDataService>);
static_assert(std::has_virtual_destructor_v<CrashDataService>);
static_assert(!std::is_copy_constructible_v<CrashDataService>);
#endif

} // namespace

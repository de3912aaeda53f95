// Like layout.cpp, for the services.

#include <tarn/services/BundleContainer.hpp>
#include <tarn/services/CrashDataService.hpp>

#include <cstddef>
#include <type_traits>

namespace {

using tarn::utils::services::BundleContainer;
using tarn::utils::services::CrashDataService;

constexpr std::size_t WORD = 8;

template <class Class, std::size_t SIZE>
constexpr bool isLaidOut = sizeof(Class) == SIZE && alignof(Class) == WORD;

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

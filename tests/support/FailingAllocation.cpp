#include "support/FailingAllocation.hpp"

#include <atomic>
#include <cerrno>
#include <cstdlib>

namespace tarn::tests {

thread_local constinit FailingAllocation* FailingAllocation::current = nullptr;

bool FailingAllocation::isDue() noexcept
{
    if (current == nullptr) {
        return false;
    }
    if (current->successes > 0) {
        --current->successes;
        return false;
    }
    if (current->happened && current->extent == Extent::One) {
        return false;
    }
    current->happened = true;
    return true;
}

namespace {

constinit std::atomic<long> blocks = 0;

/// Counts a block, if there is one.
void* counted(void* block) noexcept
{
    blocks += block != nullptr ? 1 : 0;
    return block;
}

void uncount(void* block) noexcept
{
    blocks -= block != nullptr ? 1 : 0;
}

} // namespace

long allocatedBlocks()
{
    return blocks;
}

} // namespace tarn::tests

using namespace tarn::tests;

#if IS_SANITIZED

// The sanitizers have a malloc of their own.

void* operator new(std::size_t size)
{
    void* const block = FailingAllocation::isDue() ? nullptr : counted(std::malloc(size));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept
{
    uncount(block);
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    operator delete(block);
}

#else

// In place of those of the C library, which go by these names too.
extern "C" void* __libc_malloc(std::size_t) noexcept;
extern "C" void* __libc_calloc(std::size_t, std::size_t) noexcept;
extern "C" void* __libc_realloc(void*, std::size_t) noexcept;
extern "C" void __libc_free(void*) noexcept;

namespace {

void* failed() noexcept
{
    errno = ENOMEM;
    return nullptr;
}

} // namespace

// Exported, so that the shared libraries use them too. They have names of their own for parameters,
// which the C library gives reserved ones.

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)

extern "C" [[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept
{
    return FailingAllocation::isDue() ? failed() : counted(__libc_malloc(size));
}

extern "C" [[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) noexcept
{
    return FailingAllocation::isDue() ? failed() : counted(__libc_calloc(count, size));
}

extern "C" [[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) noexcept
{
    if (FailingAllocation::isDue()) {
        return failed();
    }
    void* const moved = __libc_realloc(block, size);
    if (block == nullptr) {
        counted(moved);
    } else if (size == 0) {
        uncount(block);
    }
    return moved;
}

extern "C" [[gnu::visibility("default")]] void free(void* block) noexcept
{
    uncount(block);
    __libc_free(block);
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)

#endif

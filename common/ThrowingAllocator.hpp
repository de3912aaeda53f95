// An allocator for RapidJSON's reader, which does not check whether an allocation succeeded.
#pragma once

#include <cstddef>
#include <new>
#include <rapidjson/allocators.h>

namespace tarn::common {

/// RapidJSON's own allocator, except that it throws `std::bad_alloc` when memory runs out.
struct ThrowingAllocator : rapidjson::CrtAllocator
{
    static void* Realloc(void* memory, std::size_t oldSize, std::size_t newSize)
    {
        void* const moved = CrtAllocator().Realloc(memory, oldSize, newSize);
        if (moved == nullptr && newSize > 0) {
            throw std::bad_alloc();
        }
        return moved;
    }
};

} // namespace tarn::common

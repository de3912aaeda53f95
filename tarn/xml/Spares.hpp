// A pool of objects whose storage is used again.
#pragma once

#include <array>
#include <cstddef>
#include <utility>

namespace tarn::utils::detail {

/// Keeps up to @p CAPACITY objects that are out of use, so that new ones need not allocate.
template <class Object, std::size_t CAPACITY>
class Spares
{
public:
    /// Keeps @p object, or leaves it to its owner if the pool is full.
    void put(Object&& object) noexcept
    {
        if (count < CAPACITY) {
            objects[count++] = std::move(object);
        }
    }

    /// Hands out the object that was kept last, with what it held; an empty one if none is left.
    Object take() noexcept { return count > 0 ? std::move(objects[--count]) : Object(); }

private:
    std::array<Object, CAPACITY> objects;
    std::size_t count = 0;
};

} // namespace tarn::utils::detail

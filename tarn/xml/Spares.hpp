// A pool of objects whose storage is used again.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace tarn::utils::detail {

/// Keeps up to @p CAPACITY objects that are out of use, so that new ones need not allocate. There
/// are no others in it, so that an empty pool costs a new writer nothing.
template <class Object, std::size_t CAPACITY>
class Spares
{
public:
    Spares() = default;
    Spares(const Spares&) = delete;
    Spares& operator=(const Spares&) = delete;
    ~Spares() { std::destroy_n(at(0), count); }

    /// Keeps @p object, or leaves it to its owner if the pool is full.
    void put(Object&& object) noexcept
    {
        if (count < CAPACITY) {
            std::construct_at(at(count++), std::move(object));
        }
    }

    /// Hands out the object that was kept last, with what it held; an empty one if none is left.
    Object take() noexcept
    {
        if (count == 0) {
            return Object();
        }
        Object* const last = at(--count);
        Object object = std::move(*last);
        std::destroy_at(last);
        return object;
    }

private:
    Object* at(std::size_t place) { return reinterpret_cast<Object*>(storage) + place; }

    std::size_t count = 0;
    alignas(Object) std::byte storage[CAPACITY * sizeof(Object)];
};

} // namespace tarn::utils::detail

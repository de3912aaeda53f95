// The bindings behind the namespace names that await the end of an element or their declaration.
#pragma once

#include "tarn/xml/BindingIndex.hpp"

#include <cstddef>
#include <vector>

namespace tarn::utils::detail {

/// Holds what the index knows of each name in the writer's records: of the names declared on all
/// open elements, outermost first, and then of those whose declarations are queued, oldest first.
/// So a binding is not looked up again to be declared and to be ended.
///
/// That needs one record for each binding, ended in the reverse order. Where it is not so, the
/// stack is given up, and the names are looked up from then on.
class RegistrationStack
{
public:
    /// Makes room for one more, which may throw.
    void reserve()
    {
        if (registrations.size() == registrations.capacity()) {
            registrations.reserve(2 * registrations.size() + 8);
        }
    }

    /// Call it after reserve().
    void push(const BindingIndex::Entry& registration) noexcept
    {
        if (isKept) {
            registrations.push_back(registration);
        }
    }

    /// Returns the @p place-th from the top, beginning with 1; null if the stack has been given up.
    const BindingIndex::Entry* fromTop(std::size_t place) const
    {
        return isKept ? &registrations[registrations.size() - place] : nullptr;
    }

    void pop(std::size_t count) noexcept
    {
        if (isKept) {
            registrations.erase(registrations.end() - static_cast<std::ptrdiff_t>(count),
                                registrations.end());
        }
    }

    void giveUp() noexcept
    {
        isKept = false;
        registrations.clear();
    }

private:
    std::vector<BindingIndex::Entry> registrations;
    bool isKept = true;
};

} // namespace tarn::utils::detail

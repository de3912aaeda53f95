// A failure that is made on purpose, after so many successes.
#pragma once

#include <cstddef>
#include <exception>
#include <limits>

namespace tarn::tests {

struct MadeToFail : std::exception
{
};

/// How often something succeeds before it fails once.
class SuccessesLeft
{
public:
    SuccessesLeft() = default;
    SuccessesLeft(std::size_t count) : count(count) {} // NOLINT(google-explicit-constructor)

    void take()
    {
        if (count-- == 0) { // and again only after very many more
            throw MadeToFail();
        }
    }

private:
    std::size_t count = std::numeric_limits<std::size_t>::max();
};

} // namespace tarn::tests

// Makes allocations fail on purpose, and a target that makes none.
#pragma once

#include <cstddef>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <spanstream>
#include <string_view>
#include <utility>
#include <vector>

namespace tarn::tests {

/// The number of blocks that have been allocated and not freed, by whatever thread.
long allocatedBlocks();

/// Makes one allocation of the thread that calls during() fail, and maybe all that follow.
///
/// With a sanitizer these are the allocations by `new`; else those by `malloc` too, in the C
/// libraries as well.
class FailingAllocation
{
public:
    enum class Extent
    {
        One,
        AllThatFollow
    };

    /// @param successes how many allocations succeed before.
    FailingAllocation(std::size_t successes, Extent extent) : successes(successes), extent(extent)
    {
    }

    /// Whether an allocation has failed.
    bool hasHappened() const { return happened; }

    /// How many more are to succeed.
    std::size_t successesLeft() const { return successes; }

    /// Does @p work, whose allocations count. It must throw `std::bad_alloc` if one of them fails,
    /// and nothing else.
    /// @returns whether one failed.
    template <class Work>
    bool during(Work work)
    {
        const bool before = std::exchange(happened, false);
        bool hasThrown = false;
        current = this;
        try {
            work();
        } catch (const std::bad_alloc&) {
            hasThrown = true;
        } catch (const std::exception& other) {
            ADD_FAILURE() << other.what();
        }
        current = nullptr;
        EXPECT_EQ(hasThrown, happened);
        happened |= before;
        return hasThrown;
    }

    /// For the allocation functions: whether the one that asks is to fail.
    static bool isDue() noexcept;

private:
    static thread_local constinit FailingAllocation* current;

    std::size_t successes;
    Extent extent;
    bool happened = false;
};

/// @returns how many allocations @p work makes.
template <class Work>
std::size_t allocationsDuring(Work work)
{
    constexpr std::size_t ALL = std::numeric_limits<std::size_t>::max();
    FailingAllocation counting(ALL, FailingAllocation::Extent::One);
    counting.during(work);
    return ALL - counting.successesLeft();
}

/// Calls @p run with a FailingAllocation for the first allocation that it makes, for the second,
/// and so on until there is none to fail; and again with all further ones failing too. Nothing may
/// stay allocated after a run in which one failed.
template <class Run>
void failEachAllocation(Run run)
{
    using Extent = FailingAllocation::Extent;
    for (const Extent extent : {Extent::One, Extent::AllThatFollow}) {
        bool hasHappened = true;
        for (std::size_t successes = 0; hasHappened; ++successes) {
            SCOPED_TRACE(successes);
            FailingAllocation failure(successes, extent);
            const long before = allocatedBlocks();
            run(failure);
            hasHappened = failure.hasHappened();
            if (hasHappened) {
                EXPECT_EQ(allocatedBlocks(), before);
            } else {
                EXPECT_GT(successes, 0) << "no allocation was made to fail";
            }
            if (testing::Test::HasFailure()) {
                return;
            }
        }
    }
}

/// A stream that takes bytes without allocating.
struct ToStream
{
    std::vector<char> bytes = std::vector<char>(1'000'000);
    std::ospanstream stream{bytes};

    std::ostream& get() { return stream; }
    std::string_view view() const { return {stream.span().data(), stream.span().size()}; }
    void forget() { stream.seekp(0); }
};

} // namespace tarn::tests

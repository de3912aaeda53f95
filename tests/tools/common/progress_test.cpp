#include "tools/common/Progress.hpp"

#include <chrono>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using tarn::tools::Progress;

TEST(Progress, ShowsHowFarALongConversionIsAndNothingOfAShortOne)
{
    const std::tuple<std::optional<std::uint64_t>, std::chrono::milliseconds, std::string> cases[] =
        {
            {200, 900ms, ""},
            {200, 1100ms, "\r\033[K[####################                    ] 50 %\r\033[K"},
            {50, 1100ms, "\r\033[K[########################################] 100 %\r\033[K"},
            {std::nullopt, 1100ms, "\r\033[K0 MB read\r\033[K"},
        };
    for (const auto& [total, duration, shown] : cases) {
        int terminal[2];
        ASSERT_EQ(::pipe(terminal), 0);
        {
            const Progress::Clock::time_point start{};
            Progress progress(terminal[1], total, start);
            progress.report(0, start);
            progress.report(100, start + duration);
            progress.report(101, start + duration + 1ms);
        }
        ::close(terminal[1]);
        std::string text(1000, '\0');
        text.resize(static_cast<std::size_t>(::read(terminal[0], text.data(), text.size())));
        ::close(terminal[0]);
        EXPECT_EQ(text, shown) << duration.count();
    }
}

} // namespace

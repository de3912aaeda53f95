#include "tools/common/Progress.hpp"

#include <chrono>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using tarn::tools::Progress;

TEST(Progress, ShowsHowFarALongConversionIsAndNothingOfAShortOne)
{
    using Reports = std::vector<std::pair<std::uint64_t, std::chrono::milliseconds>>;
    constexpr std::uint64_t BIG = 20'000'000'000;
    const std::string start = "\r\033[K";
    const std::string half = start + "[####################                    ] 50 %";
    const std::string all = start + "[########################################] 100 %";
    const std::tuple<std::optional<std::uint64_t>, Reports, std::string> cases[] = {
        {200, {{0, 0ms}, {100, 999ms}}, ""},
        {200, {{0, 0ms}, {100, 1000ms}, {200, 1099ms}}, half + start},
        {BIG, {{BIG / 2, 1100ms}, {BIG, 1199ms}, {BIG, 1200ms}}, half + all + start},
        {50, {{100, 1000ms}}, all + start},
        {0, {{0, 1000ms}}, all + start},
        {std::nullopt,
         {{999'999, 1000ms}, {1'000'000, 1100ms}},
         start + "0 MB read" + start + "1 MB read" + start},
    };
    for (const auto& [total, reports, shown] : cases) {
        int terminal[2];
        ASSERT_EQ(::pipe(terminal), 0);
        {
            const Progress::Clock::time_point start{};
            Progress progress(terminal[1], total, start);
            for (const auto& [bytes, time] : reports) {
                progress.report(bytes, start + time);
            }
        }
        ::close(terminal[1]);
        std::string text(1000, '\0');
        text.resize(static_cast<std::size_t>(::read(terminal[0], text.data(), text.size())));
        ::close(terminal[0]);
        EXPECT_EQ(text, shown);
    }
}

} // namespace

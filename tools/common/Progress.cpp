#include "tools/common/Progress.hpp"

#include <algorithm>
#include <string>
#include <string_view>
#include <unistd.h>

namespace tarn::tools {

namespace {

using namespace std::chrono_literals;

constexpr auto QUIET_TIME = 1s;
constexpr auto UPDATE_INTERVAL = 100ms;
constexpr std::size_t BAR_WIDTH = 40;
constexpr std::uint64_t BYTES_PER_MEGABYTE = 1'000'000;

/// Goes to the beginning of the line and erases it.
constexpr std::string_view ERASE_LINE = "\r\033[K";

std::string bar(std::uint64_t done, std::uint64_t total)
{
    // The input can have grown since its size was read, and it can be empty.
    const double part =
        total == 0 ? 1 : std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
    const auto filled = static_cast<std::size_t>(part * BAR_WIDTH);
    return '[' + std::string(filled, '#') + std::string(BAR_WIDTH - filled, ' ') + "] " +
           std::to_string(static_cast<int>(part * 100)) + " %";
}

} // namespace

Progress::Progress(int terminal, std::optional<std::uint64_t> totalBytes, Clock::time_point start)
    : terminal(terminal), totalBytes(totalBytes), nextUpdate(start + QUIET_TIME)
{
}

Progress::~Progress()
{
    if (isShown) {
        show("");
    }
}

void Progress::report(std::uint64_t bytesRead, Clock::time_point now)
{
    if (now < nextUpdate) {
        return;
    }
    nextUpdate = now + UPDATE_INTERVAL;
    isShown = true;
    show(totalBytes ? bar(bytesRead, *totalBytes)
                    : std::to_string(bytesRead / BYTES_PER_MEGABYTE) + " MB read");
}

/// Ignores errors: the conversion goes on without the line.
void Progress::show(const std::string& line)
{
    const std::string text = std::string(ERASE_LINE) + line;
    [[maybe_unused]] const ssize_t ignored = ::write(terminal, text.data(), text.size());
}

} // namespace tarn::tools

// Progress: a line on a terminal that shows how far a long conversion has come.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace tarn::tools {

/// Shows nothing at first, so that a short conversion leaves no trace.
class Progress
{
public:
    using Clock = std::chrono::steady_clock;

    /// @param terminal the descriptor of the terminal.
    /// @param totalBytes the size of the input, if that is known.
    /// @param start the time when the conversion begins.
    Progress(int terminal, std::optional<std::uint64_t> totalBytes, Clock::time_point start);

    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Erases the line.
    ~Progress();

    /// Updates the line, unless the last update was a moment ago.
    void report(std::uint64_t bytesRead, Clock::time_point now);

private:
    void show(const std::string& line);

    const int terminal;
    const std::optional<std::uint64_t> totalBytes;
    Clock::time_point nextUpdate;
    bool isShown = false;
};

} // namespace tarn::tools

// A sink that keeps every piece that it is handed, and fails when told to.
#pragma once

#include <tarn/xml/Sink.hpp>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarn::tests {

struct SinkFailure : std::runtime_error
{
    using runtime_error::runtime_error;
};

/// What a RecordingSink was handed; outlives the sink.
struct Recording
{
    std::vector<std::u16string> pieces;
    int flushes = 0;
    std::u16string encodingName;
    /// How many more writes succeed.
    std::size_t writesLeft = std::numeric_limits<std::size_t>::max();
};

class RecordingSink : public utils::Sink
{
public:
    explicit RecordingSink(Recording& recording) : recording(recording) {}

    Sink& write(const std::u16string& text) override
    {
        if (recording.writesLeft == 0) {
            throw SinkFailure("write");
        }
        --recording.writesLeft;
        recording.pieces.push_back(text);
        return *this;
    }

    std::u16string encodingName() const override { return recording.encodingName; }

    void flush() override { ++recording.flushes; }

private:
    Recording& recording;
};

} // namespace tarn::tests

// A sink that keeps every piece that it is handed, and fails when told to; the writer over it.
#pragma once

#include "support/CompositeOperations.hpp"
#include "support/SuccessesLeft.hpp"

#include <tarn/xml/Sink.hpp>
#include <tarn/xml/XmlWriterImpl.hpp>

#include <memory>
#include <string>
#include <vector>

namespace tarn::tests {

/// What a RecordingSink was handed; outlives the sink.
struct Recording
{
    std::vector<std::u16string> pieces;
    int flushes = 0;
    std::u16string encodingName;
    /// Of writes and flushes.
    SuccessesLeft successesLeft;
    /// Whether a write that fails has taken its piece before.
    bool takesWhatFails = false;
};

/// The pieces as one text, with a `|` after each.
inline std::u16string separated(const std::vector<std::u16string>& pieces)
{
    std::u16string text;
    for (const std::u16string& piece : pieces) {
        text += piece + u'|';
    }
    return text;
}

class RecordingSink : public utils::Sink
{
public:
    explicit RecordingSink(Recording& recording) : recording(recording) {}

    Sink& write(const std::u16string& text) override
    {
        if (recording.takesWhatFails) {
            recording.pieces.push_back(text);
        }
        recording.successesLeft.take();
        if (!recording.takesWhatFails) {
            recording.pieces.push_back(text);
        }
        return *this;
    }

    std::u16string encodingName() const override { return recording.encodingName; }

    void flush() override
    {
        recording.successesLeft.take();
        ++recording.flushes;
    }

private:
    Recording& recording;
};

/// The writer's implementation with the operations that the public class adds to it.
class RecordedWriter : public CompositeOperations<utils::XmlWriter::Impl>
{
public:
    explicit RecordedWriter(Recording& recording)
        : CompositeOperations(std::make_unique<RecordingSink>(recording))
    {
    }
};

} // namespace tarn::tests

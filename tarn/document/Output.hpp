// Where a document goes, in batches.
#pragma once

#include "tarn/document/Bytes.hpp"

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <variant>

namespace tarn::document::detail {

/// Collects bytes and hands them to the target when there are many.
///
/// Whatever the target throws passes through. A stream that has failed is a Refusal.
class Output
{
public:
    using Target = std::variant<std::string*, std::ostream*, std::function<void(std::string_view)>>;

    /// In bytes: what is handed over at once.
    static constexpr std::size_t BATCH = 16384;
    /// Longer texts are handed over as they are.
    static constexpr std::size_t LONGEST_COLLECTED = BATCH / 2;

    explicit Output(Target target);

    /// @returns where the output ends; @p length bytes can be written there. Until endAt() takes
    /// them in, nothing has changed.
    char* room(std::size_t length) { return batch.room(length); }
    /// Takes in what has been written up to @p end.
    void endAt(const char* end) { batch.endAt(end); }

    void write(std::string_view bytes)
    {
        passOnIfFull();
        if (bytes.size() <= LONGEST_COLLECTED || isHeld) {
            endAt(put(room(bytes.size()), bytes));
        } else {
            writeLong(bytes);
        }
    }
    template <std::size_t SIZE>
    void write(const char (&literal)[SIZE])
    {
        endAt(put(room(SIZE), literal));
    }

    /// Hands over a full batch, except what waits.
    void passOnIfFull()
    {
        if (batch.size() >= BATCH) {
            passOn();
        }
    }

    /// Whether the target is being called.
    bool isHandingOver() const { return handingOver; }

    /// What is written from here on waits for complete().
    void hold();
    /// Hands over everything that does not wait, and flushes a stream.
    void flush();
    /// Hands over everything, and flushes a stream.
    void complete();
    /// Forgets what has not been handed over, and empties a string.
    void reset();

private:
    void writeLong(std::string_view bytes);
    void passOn();
    void handOver(std::string_view bytes);

    Bytes batch;
    bool handingOver = false;
    bool isHeld = false;
    std::size_t heldFrom = 0;
    Target target;
};

} // namespace tarn::document::detail

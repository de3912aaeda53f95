// How the writer's operations hand their pieces of text to the sink.
//
// A piece goes to the sink as one `write`. Some sinks only append it to a string of theirs. There
// the pieces of an operation are put in place together, after one check that they fit, which gives
// the same text without a virtual call for each.
#pragma once

#include "tarn/xml/pieces.hpp"
#include "tarn/xml/Sink.hpp"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <string>
#include <string_view>

namespace tarn::utils::detail {

/// The sink as the writer's operations see it.
///
/// The window is the room behind the text in the sink's string. While it is open, only this class
/// knows where the text ends.
class PieceOutput
{
public:
    explicit PieceOutput(Sink& sink);

    /// Hands over each of @p pieces, in order, as in pieces.hpp.
    template <class... Pieces>
    void write(const Pieces&... pieces)
    {
        if (!writeInPlace(pieces...)) [[unlikely]] {
            writeOneByOne(pieces...);
        }
    }

    /// Hands over all of @p pieces, in order, if there is room for them in the window, or none.
    template <class... Pieces>
    bool writeInPlace(const Pieces&... pieces) noexcept
    {
        const std::size_t most = (mostUnits(pieces) + ...);
        if (most >= room()) {
            return false;
        }
        char16_t* out = end;
        ((out = copyPiece(pieces, out)), ...);
        assert(static_cast<std::size_t>(out - end) <= most && "a piece is longer than it said");
        end = out;
        return true;
    }

    /// Puts the beginning of @p text in place, escaped, as far as there is room. Returns what is
    /// left.
    std::u16string_view escapeInPlace(std::u16string_view text,
                                      const Replacements& replacements) noexcept
    {
        const EscapedRun run = escape(text.begin(), text.end(), end, windowEnd, replacements);
        end = run.written;
        return {run.read, text.end()};
    }

    void flush();

    /// Whether the sink appends to a string of the caller's.
    bool isOverTarget() const { return window.isTarget; }
    bool isTarget(const std::u16string& argument) const { return &argument == window.text; }

    /// Keeps the window to a string of the caller's open. Without it, everything goes to the sink
    /// piece by piece.
    class Operation
    {
    public:
        explicit Operation(PieceOutput& output) : output(output) { output.open(); }
        ~Operation() { output.close(); }
        Operation(const Operation&) = delete;
        Operation& operator=(const Operation&) = delete;

    private:
        PieceOutput& output;
    };

private:
    /// Closes an open window while the sink takes pieces or is flushed.
    class SinkCall
    {
    public:
        explicit SinkCall(PieceOutput& output) : output(output), wasOpen(output.end != nullptr)
        {
            output.close();
        }
        ~SinkCall()
        {
            if (wasOpen) {
                output.open();
            }
        }
        SinkCall(const SinkCall&) = delete;
        SinkCall& operator=(const SinkCall&) = delete;

    private:
        PieceOutput& output;
        bool wasOpen;
    };

    /// No piece of this length or more is put in place. If a conversion has failed, there is no
    /// room, so that even an empty piece goes to the sink, which then converts again.
    std::size_t room() const { return static_cast<std::size_t>(windowEnd - end); }

    template <class... Pieces>
    [[gnu::noinline, gnu::cold]] void writeOneByOne(const Pieces&... pieces)
    {
        (writeOne(pieces), ...);
    }

    template <class Piece>
    void writeOne(const Piece& piece)
    {
        if (!writeInPlace(piece)) {
            const SinkCall call(*this);
            writeToSink(piece);
        }
    }

    template <class Piece>
    void writeToSink(const Piece& piece)
    {
        if (window.text != nullptr && window.text->size() + mostUnits(piece) <= window.limit) {
            appendPiece(piece, *window.text);
        } else {
            scratch.clear();
            appendPiece(piece, scratch);
            sink.write(scratch);
        }
    }
    void writeToSink(const std::u16string& piece) { sink.write(piece); }

    void open() noexcept;
    void close() noexcept;

    Sink& sink;
    AppendWindow window;
    /// Where the text ends, and where the window does. Both null while it is closed.
    char16_t* end = nullptr;
    char16_t* windowEnd = nullptr;
    /// Holds a piece that is not a `std::u16string` of its own while the sink takes it.
    std::u16string scratch;
};

inline void PieceOutput::open() noexcept
{
    if (window.text != nullptr) {
        std::u16string& text = *window.text;
        end = text.data() + text.size();
        // If a conversion has failed, there can be more text than the window allows.
        windowEnd = std::max(end, text.data() + std::min(text.capacity(), window.limit));
    }
}

inline void PieceOutput::close() noexcept
{
    if (end != nullptr) {
        const auto length = static_cast<std::size_t>(end - window.text->data());
        // Allocates nothing, and leaves the code units as they are.
        window.text->resize_and_overwrite(
            length, [length](char16_t*, std::size_t) noexcept { return length; });
        end = nullptr;
        windowEnd = nullptr;
    }
}

} // namespace tarn::utils::detail

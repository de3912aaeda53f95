#include "tarn/xml/PieceOutput.hpp"

#include "tarn/xml/Constants.hpp"

namespace tarn::utils {

void QualifiedName::assignTo(std::u16string& text) const
{
    text.resize_and_overwrite(length(), [&](char16_t* out, std::size_t) noexcept {
        return static_cast<std::size_t>(copyTo(out) - out);
    });
}

PieceOutput::PieceOutput(Sink& sink) : sink(sink)
{
    if (auto* const appending = dynamic_cast<UStringSink*>(&sink)) {
        text = &appending->target;
        limit = text->max_size();
    } else if (auto* const converting = dynamic_cast<ConvertingSink*>(&sink)) {
        text = &converting->buffer;
        limit = ConvertingSink::BUFFER_CAPACITY;
    }
}

void PieceOutput::writePiece(const std::u16string& piece)
{
    sink.write(piece);
}

void PieceOutput::writePiece(std::u16string_view piece)
{
    if (text == nullptr) {
        sink.write(scratch.assign(piece));
        return;
    }
    text->append(piece);
    if (text->size() > limit) {
        // The batch is full: an empty piece makes the sink convert it.
        sink.write(NONE);
    }
}

void PieceOutput::writePiece(Spaces piece)
{
    sink.write(scratch.assign(piece.length, u' '));
}

void PieceOutput::writePiece(QualifiedName piece)
{
    piece.assignTo(scratch);
    sink.write(scratch);
}

} // namespace tarn::utils

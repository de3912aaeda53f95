#include "tarn/xml/PieceOutput.hpp"

#include "tarn/xml/Constants.hpp"

namespace tarn::utils {

std::u16string QualifiedName::toString() const
{
    std::u16string text;
    text.reserve(length());
    text.append(prefix);
    if (hasColon()) {
        text.push_back(u':');
    }
    return text.append(localName);
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
    sink.write(scratch = piece.toString());
}

} // namespace tarn::utils

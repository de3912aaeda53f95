#include "tarn/xml/PieceOutput.hpp"

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
    sink.write(scratch.assign(piece));
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

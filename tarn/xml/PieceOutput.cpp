#include "tarn/xml/PieceOutput.hpp"

#include "tarn/xml/constants.hpp"

#include <typeinfo>

namespace tarn::utils::detail {

void QualifiedName::assignTo(std::u16string& text) const
{
    text.resize_and_overwrite(length(), [&](char16_t* out, std::size_t) noexcept {
        return static_cast<std::size_t>(copyTo(out) - out);
    });
}

PieceOutput::PieceOutput(Sink& sink) : sink(sink)
{
    const std::type_info& type = typeid(sink);
    if (type == typeid(StdStringSink) || type == typeid(StreamSink)) {
        text = &static_cast<ConvertingSink&>(sink).buffer;
        limit = ConvertingSink::BUFFER_CAPACITY;
    } else if (type == typeid(UStringSink)) {
        text = &static_cast<UStringSink&>(sink).target;
        limit = text->max_size();
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

} // namespace tarn::utils::detail

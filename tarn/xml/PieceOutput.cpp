#include "tarn/xml/PieceOutput.hpp"

namespace tarn::utils::detail {

PieceOutput::PieceOutput(Sink& sink) : sink(sink), window(appendWindowOf(sink))
{
    if (!window.isTarget) {
        open();
    }
}

void PieceOutput::flush()
{
    const SinkCall call(*this);
    sink.flush();
}

} // namespace tarn::utils::detail

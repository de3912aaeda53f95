#include "tarn/document/Output.hpp"

#include "tarn/document/checks.hpp"

#include <ostream>
#include <utility>

namespace tarn::document::detail {

namespace {

void requireGood(const std::ostream& stream)
{
    if (!stream.good()) { // it would write nothing at the end of its input either
        throw Refusal{"the stream has failed"};
    }
}

} // namespace

Output::Output(Target target) : target(std::move(target))
{
    const auto* const function = std::get_if<std::function<void(std::string_view)>>(&this->target);
    if (function != nullptr && !*function) {
        throw Refusal{"the target is an empty function"};
    }
    // A full batch is handed over after the operation that has filled it.
    constexpr std::size_t LONGEST_OPERATION = BATCH;
    batch.room(BATCH + LONGEST_OPERATION);
}

void Output::hold()
{
    isHeld = true;
    heldFrom = batch.size();
}

void Output::flush()
{
    passOn();
    if (auto* const stream = std::get_if<std::ostream*>(&target)) {
        (*stream)->flush();
        requireGood(**stream);
    }
}

void Output::complete()
{
    isHeld = false;
    flush();
}

void Output::reset()
{
    batch.shrinkTo(0);
    isHeld = false;
    if (auto* const string = std::get_if<std::string*>(&target)) {
        (*string)->clear();
    }
}

void Output::writeLong(std::string_view bytes)
{
    passOn();
    handOver(bytes);
}

void Output::passOn()
{
    const std::size_t length = isHeld ? heldFrom : batch.size();
    if (length != 0) {
        handOver(batch.part(0, length));
        batch.removeFirst(length);
        heldFrom = 0;
    }
}

void Output::handOver(std::string_view bytes)
{
    if (auto* const string = std::get_if<std::string*>(&target)) {
        (*string)->append(bytes);
    } else if (auto* const stream = std::get_if<std::ostream*>(&target)) {
        (*stream)->write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        requireGood(**stream);
    } else {
        // Whatever it throws breaks the document off.
        struct Mark
        {
            explicit Mark(bool& flag) : flag(flag) { flag = true; }
            ~Mark() { flag = false; }
            bool& flag;
        };
        const Mark mark(handingOver);
        std::get<std::function<void(std::string_view)>>(target)(bytes);
    }
}

} // namespace tarn::document::detail

// Takes any bytes as a sequence of calls. The output must be that of the reference writer, and on
// each argument every kernel must give the same result as the plain code for its work.
#include "fuzz/require.hpp"
#include "support/encoding_fault.hpp"
#include "support/escaping_fault.hpp"
#include "support/written_calls.hpp"

using namespace tarn;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    tests::Calls calls;
    fuzz::requireNoFault(tests::faultOfCalls({bytes, size}, calls));
    for (const tests::Call& call : calls) {
        for (const std::u16string& argument : call.arguments) {
            // An encoder may stop at each code unit, and each time needs room for the whole rest.
            constexpr std::size_t LONGEST_TEXT = 400;
            const tests::GuardedText text(std::u16string_view(argument).substr(0, LONGEST_TEXT));
            // Little room, so that the copy stops in the middle.
            const std::size_t room = utils::detail::ESCAPING_MARGIN + argument.size() % 256;
            tests::GuardedText output(std::u16string(room, u'-'));
            fuzz::requireNoFault(tests::faultOfEscaping(text.view(), output));
            fuzz::requireNoFault(tests::faultOfEncoding(text.view()));
        }
    }
    return 0;
}

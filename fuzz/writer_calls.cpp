// Takes any bytes as a sequence of calls. The output must be that of the reference writer, and on
// each argument every kernel must give the same result as the plain code for its work.
#include "fuzz/target.hpp"
#include "support/encoding_fault.hpp"
#include "support/escaping_fault.hpp"
#include "support/written_calls.hpp"

void tarn::fuzz::check(std::string_view bytes)
{
    tests::Calls calls;
    requireNoFault(tests::faultOfCalls(tests::Input(bytes), calls));
    for (const tests::Call& call : calls) {
        for (const std::u16string& argument : call.arguments) {
            // An encoder may stop at each code unit, and each time needs room for the whole rest.
            constexpr std::size_t LONGEST_TEXT = 400;
            const tests::GuardedText text(std::u16string_view(argument).substr(0, LONGEST_TEXT));
            // Little room, so that the copy stops in the middle.
            const std::size_t room = utils::detail::ESCAPING_MARGIN + argument.size() % 256;
            tests::GuardedText output(std::u16string(room, u'-'));
            requireNoFault(tests::faultOfEscaping(text.view(), output));
            requireNoFault(tests::faultOfEncoding(text.view()));
        }
    }
}

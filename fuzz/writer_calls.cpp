// Any sequence of calls: the three targets hold what the reference writer says, and on the text
// that was written every vector kernel does what its portable twin does.
#include "fuzz/Require.hpp"
#include "support/Calls.hpp"
#include "support/Input.hpp"
#include "support/ReferenceUtf8.hpp"
#include "support/ReferenceWriter.hpp"

#include <corda/i18n/utf8_encoder.hpp>
#include <tarn/xml/TextEscaping.hpp>
#include <tarn/xml/XmlWriter.hpp>

#include <memory>
#include <sstream>
#include <vector>

namespace tarn::fuzz {

namespace {

using tests::Input;

using tests::Call;
using tests::Calls;
using tests::Operation;

Call readCall(Input& input)
{
    static constexpr struct
    {
        Operation operation;
        std::size_t arguments;
    } FORMS[] = {
        {Operation::writeStartDocument, 1},
        {Operation::writeEndDocument, 0},
        {Operation::writeRawXml, 1},
        {Operation::writeValue, 1},
        {Operation::writeStartElement, 3},
        {Operation::writeStartElementClose, 0},
        {Operation::writeEndElement, 0},
        {Operation::writeElement, 4},
        {Operation::writeElement, 3},
        {Operation::writeElement, 2},
        {Operation::writeEmptyElement, 3},
        {Operation::writeStartAttribute, 3},
        {Operation::writeEndAttribute, 0},
        {Operation::writeAttribute, 4},
        {Operation::writeAttribute, 3},
        {Operation::writeAttribute, 2},
        {Operation::writeNamespace, 2},
        {Operation::writeDefaultNamespace, 1},
        {Operation::registerDefaultNamespace, 1},
    };
    // Among them what the writer treats in its own way, and two names that a search tells apart
    // late.
    static const std::u16string STRINGS[] = {
        u"",
        u"a",
        u"p",
        u"ns1",
        u"1.0",
        u"1.1",
        u"xml",
        u"xmlns",
        u"urn:a",
        u"http://example.org/a/rather/long/name/of/a/namespace/1",
        u"http://example.org/a/rather/long/name/of/a/namespace/2",
        u"http://www.w3.org/XML/1998/namespace",
        u"http://www.w3.org/2000/xmlns/",
    };
    const auto& [operation, count] = input.pick(FORMS);
    Call call{operation};
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t choice = input.below(2 * std::size(STRINGS));
        call.arguments.push_back(choice < std::size(STRINGS) ? STRINGS[choice] : input.text());
    }
    return call;
}

/// Calls @p kernel until the end of @p text, going past what it stops before, and returns all that
/// it writes. The text and the room are as long as promised to the unit: reading or writing beyond
/// them is a fault that AddressSanitizer sees.
template <class Output, class Kernel>
std::basic_string<Output> runKernel(std::u16string_view text, const Kernel& kernel)
{
    const std::vector<char16_t> units(text.begin(), text.end());
    const char16_t* const last = units.data() + units.size();
    std::basic_string<Output> written;
    for (const char16_t* first = units.data(); first != last;) {
        const char16_t* const before = first;
        written += kernel(first, last);
        require(first != before, "a kernel makes no progress");
    }
    return written;
}

std::u16string escape(std::u16string_view text, decltype(utils::escapeMarkup)& kernel,
                      std::size_t room)
{
    return runKernel<char16_t>(text, [&](const char16_t*& first, const char16_t* last) {
        const auto output = std::make_unique_for_overwrite<char16_t[]>(room);
        char16_t* const outLast = output.get() + room;
        const utils::EscapedRun run = kernel(first, last, output.get(), outLast);
        std::u16string written(output.get(), run.written);
        first = run.read;
        const auto left = outLast - run.written;
        if (first != last && left >= static_cast<std::ptrdiff_t>(utils::ESCAPING_MARGIN)) {
            written += *first++; // a control character
        }
        return written;
    });
}

std::u16string separateSpecials(std::u16string_view text, decltype(utils::findSpecial)& kernel)
{
    return runKernel<char16_t>(text, [&](const char16_t*& first, const char16_t* last) {
        const char16_t* const special = kernel(first, last);
        const std::u16string run(first, special);
        first = special == last ? last : special + 1;
        return run + u'|';
    });
}

std::string encode(std::u16string_view text, corda::i18n::detail::Utf8Encoder kernel)
{
    return runKernel<char>(text, [&](const char16_t*& first, const char16_t* last) {
        const auto length = static_cast<std::size_t>(last - first);
        const auto output =
            std::make_unique_for_overwrite<char[]>(corda::i18n::detail::encoded_utf8_bound(length));
        const corda::i18n::detail::EncodedUtf8 encoded = kernel(first, last, output.get());
        const std::string bytes(output.get(), encoded.written);
        first = encoded.read == last ? last : encoded.read + 1; // a surrogate without a partner
        return bytes + '|';
    });
}

void compareKernels(std::u16string_view text)
{
    using namespace corda::i18n::detail;

    require(separateSpecials(text, utils::findSpecial) ==
                separateSpecials(text, utils::findSpecialPortable),
            "findSpecial differs from its portable twin");
    // So little room that the copy stops in between.
    const std::size_t room = utils::ESCAPING_MARGIN + text.size() % 256;
    require(escape(text, utils::escapeMarkup, room) ==
                escape(text, utils::escapeMarkupPortable, room),
            "escapeMarkup differs from its portable twin");
    const std::string expected = encode(text, encode_utf8_portable);
    for (const Utf8Encoder encoder : {utf8_encoder_for_ssse3(), utf8_encoder_for_avx512()}) {
        require(encoder == nullptr || encode(text, encoder) == expected,
                "a UTF-8 encoder differs from its portable twin");
    }
}

std::u16string textOf(const tests::ReferenceWriter& writer)
{
    std::u16string text;
    for (const std::u16string& piece : writer.pieces) {
        text += piece;
    }
    return text;
}

void check(Input input)
{
    std::u16string units;
    std::string bytes;
    std::ostringstream stream;
    utils::XmlWriter unitsWriter(units);
    utils::XmlWriter bytesWriter(bytes);
    utils::XmlWriter streamWriter(stream);
    tests::ReferenceWriter unitsReference;
    tests::ReferenceWriter bytesReference(u"UTF-8");

    Calls calls;
    const auto make = [&](const Call& call) {
        calls.push_back(call);
        apply(call, bytesWriter);
        apply(call, streamWriter);
        apply(call, unitsReference);
        apply(call, bytesReference);
    };
    while (!input.isEmpty()) {
        constexpr std::size_t LONGEST_OWN_TEXT = 5000;
        if (input.below(32) == 0 && units.size() < LONGEST_OWN_TEXT) {
            // The value may be the very string that the writer appends to.
            make(tests::value(units));
            unitsWriter.writeValue(units);
        } else {
            const Call call = readCall(input);
            make(call);
            apply(call, unitsWriter);
        }
    }
    make(tests::endDocument());
    unitsWriter.writeEndDocument();

    const auto requireSame = [&](bool isSame, const char* target) {
        if (!isSame) {
            std::ostringstream message;
            message << "the text on a " << target << " is not what these calls should give:\n"
                    << calls;
            require(false, message.str());
        }
    };
    const std::string expected = tests::referenceUtf8(textOf(bytesReference));
    requireSame(units == textOf(unitsReference), "std::u16string");
    requireSame(bytes == expected, "std::string");
    requireSame(stream.view() == expected, "std::ostream");
    for (const Call& call : calls) {
        for (const std::u16string& argument : call.arguments) {
            // An encoder may stop at each code unit, and needs room for all the rest each time.
            constexpr std::size_t LONGEST_TEXT = 400;
            compareKernels(std::u16string_view(argument).substr(0, LONGEST_TEXT));
        }
    }
}

} // namespace

} // namespace tarn::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    tarn::fuzz::check({bytes, size});
    return 0;
}

// Any sequence of calls: after each of them the targets hold, and a sink was handed, what the
// reference writer says.
#pragma once

#include "support/Call.hpp"
#include "support/colliding_names.hpp"
#include "support/difference.hpp"
#include "support/Input.hpp"
#include "support/RecordingSink.hpp"
#include "support/ReferenceWriter.hpp"

#include <tarn/xml/XmlWriter.hpp>

#include <sstream>
#include <string>
#include <string_view>

namespace tarn::tests {

inline std::u16string readUri(Input& input)
{
    // Among them two that a search tells apart late, and what the writer treats in its own way.
    static const std::u16string URIS[] = {u"",
                                          u"urn:a",
                                          u"urn:b",
                                          u"urn:\"<&'\x0B",
                                          u"http://example.org/a/rather/long/name/of/a/namespace/1",
                                          u"http://example.org/a/rather/long/name/of/a/namespace/2",
                                          u"http://www.w3.org/XML/1998/namespace",
                                          u"http://www.w3.org/2000/xmlns/"};
    const std::size_t choice = input.below(8);
    return choice == 0   ? collidingName(static_cast<unsigned>(input.below(40)))
           : choice == 1 ? nameAroundTheEnd<32>(static_cast<unsigned>(input.below(12)))
                         : input.pick(URIS);
}

inline Call readCall(Input& input)
{
    // Of the first ones, half of the calls, so that sequences go deep.
    constexpr std::size_t FREQUENT = 4;
    static constexpr std::string_view OVERLOADS[] = {"NUPT", "NUT", "NT"};
    static const std::u16string NAMES[] = {u"a", u"", u"x:y", u"eleven-long", u"\u00E9\u4E2D"};
    static const std::u16string PREFIXES[] = {u"", u"p", u"q", u"ns2", u"xml", u"xmlns"};
    static const std::u16string VERSIONS[] = {u"1.0", u"1.1"};
    const auto& operations = Operation::all();
    const std::size_t choices = input.below(2) == 0 ? FREQUENT : operations.size();
    const Operation& operation = *operations[input.below(choices)];
    Call call{&operation};
    for (const char kind : operation.hasOverloads() ? input.pick(OVERLOADS) : operation.kinds) {
        call.arguments.push_back(kind == 'T' || input.below(16) == 0 ? input.text()
                                 : kind == 'N'                       ? input.pick(NAMES)
                                 : kind == 'P'                       ? input.pick(PREFIXES)
                                 : kind == 'U'                       ? readUri(input)
                                                                     : input.pick(VERSIONS));
    }
    return call;
}

/// Makes the calls that @p input says, and notes them in @p calls.
/// @returns what is wrong after the last of them; nothing if all is as it should be.
inline std::string faultOfCalls(Input input, Calls& calls)
{
    std::u16string units;
    std::string bytes;
    std::ostringstream stream;
    Recording recording;
    recording.encodingName = u"UTF-8";
    recording.takesWhatFails = input.below(2) == 0;
    utils::XmlWriter unitsWriter(units);
    utils::XmlWriter bytesWriter(bytes);
    utils::XmlWriter streamWriter(stream);
    RecordedWriter recordedWriter(recording);
    ReferenceWriter unitsReference;
    ReferenceWriter bytesReference(u"UTF-8");
    ReferenceWriter sinkReference(u"UTF-8");
    sinkReference.takesWhatFails = recording.takesWhatFails;
    std::size_t checked = 0;

    for (bool isLast = false; !isLast;) {
        isLast = input.isEmpty();
        constexpr std::size_t LONGEST_OWN_TEXT = 2000;
        const bool isOwnText = !isLast && input.below(32) == 0 && units.size() < LONGEST_OWN_TEXT;
        calls.push_back(isLast ? endDocument() : isOwnText ? value(units) : readCall(input));
        if (isOwnText) {
            // The very string that the writer appends to.
            unitsWriter.writeValue(units);
        } else {
            calls.back().applyTo(&unitsWriter);
        }
        calls.back().applyTo(&bytesWriter);
        calls.back().applyTo(&streamWriter);
        calls.back().applyTo(&unitsReference);
        calls.back().applyTo(&bytesReference);
        // Now and then the sink fails.
        if (input.below(16) == 0) {
            recording.successesLeft = sinkReference.piecesLeft = input.below(16);
        }
        const bool hasFailed = calls.back().failsOn(&recordedWriter);
        const bool isToFail = calls.back().failsOn(&sinkReference);
        recording.successesLeft = sinkReference.piecesLeft = {};

        std::u16string expected;
        for (const std::u16string& piece : unitsReference.pieces) {
            expected += piece;
        }
        const std::pair<const char*, std::string> results[] = {
            {"std::u16string", difference(std::u16string_view(units).substr(checked), expected)},
            {"std::string", difference(bytes, bytesReference.bytes)},
            {"std::ostream", difference(stream.view(), bytesReference.bytes)},
            {"sink", recording.pieces == sinkReference.pieces
                         ? ""
                         : "pieces: " + difference(separated(recording.pieces),
                                                   separated(sinkReference.pieces))},
            {"sink", recording.flushes == sinkReference.flushes ? "" : "the flushes differ"},
            {"sink", hasFailed == isToFail ? "" : "the failures differ"},
        };
        for (const auto& [target, difference] : results) {
            if (!difference.empty()) {
                std::ostringstream message;
                message << "on a " << target << ", after\n" << calls << difference;
                return message.str();
            }
        }
        checked = units.size();
        recording.pieces.clear();
        unitsReference.pieces.clear();
        bytesReference.pieces.clear();
        sinkReference.pieces.clear();
    }
    return "";
}

} // namespace tarn::tests

// JsonWriter: writes JSON, on one line or indented.
#pragma once

#include "common/ThrowingAllocator.hpp"
#include "tools/xml2json/JsonOutput.hpp"

#include <iosfwd>
#include <optional>
#include <rapidjson/encodings.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/writer.h>
#include <string_view>
#include <variant>

namespace xml2json {

/// Puts commas, colons, brackets and layout between what is written. Strings come in pieces, so
/// that none of them is ever whole in memory.
class JsonWriter
{
public:
    /// @param indentation the number of blanks for each level; without it everything stands on one
    ///        line.
    JsonWriter(std::ostream& stream, std::optional<unsigned> indentation);

    void startObject();
    void endObject();
    void startArray();
    void endArray();
    void null();
    void boolean(bool isTrue);

    /// @param text a JSON number.
    void number(std::string_view text);

    /// Starts a string value or a key. Its text follows with stringText().
    void startString();

    /// Writes text of the open string as it is, so it must be escaped.
    void stringText(std::string_view text) { output.append(text); }

    void endString() { output.Put('"'); }

    /// Ends the line, after an outermost value. Another one may follow.
    void endLine();

    /// Passes all text on to the stream.
    void push() { output.push(); }

private:
    template <template <typename, typename, typename, typename, unsigned> class Writer>
    using Configured = Writer<JsonOutput, rapidjson::UTF8<>, rapidjson::UTF8<>,
                              tarn::common::ThrowingAllocator, rapidjson::kWriteDefaultFlags>;

    void write(const auto& event) { std::visit(event, writer); }

    JsonOutput output;
    std::variant<Configured<rapidjson::Writer>, Configured<rapidjson::PrettyWriter>> writer;
};

} // namespace xml2json

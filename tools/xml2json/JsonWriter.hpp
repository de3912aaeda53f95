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
    JsonWriter(std::ostream& stream, std::optional<unsigned> indentation)
        : output(stream), writer(std::in_place_index<0>, output)
    {
        if (indentation) {
            writer.emplace<1>(output).SetIndent(' ', *indentation);
        }
    }

    void startObject()
    {
        write([](auto& json) { json.StartObject(); });
    }
    void endObject()
    {
        write([](auto& json) { json.EndObject(); });
    }
    void startArray()
    {
        write([](auto& json) { json.StartArray(); });
    }
    void endArray()
    {
        write([](auto& json) { json.EndArray(); });
    }
    void null()
    {
        write([](auto& json) { json.Null(); });
    }
    void boolean(bool isTrue)
    {
        write([isTrue](auto& json) { json.Bool(isTrue); });
    }

    /// @param text a JSON number.
    void number(std::string_view text)
    {
        write([](auto& json) { json.RawValue("", 0, rapidjson::kNumberType); });
        output.append(text);
    }

    /// Starts a string value or a key. Its text follows with stringText().
    void startString()
    {
        write([](auto& json) { json.RawValue("\"", 1, rapidjson::kStringType); });
    }

    /// Writes text of the open string as it is, so it must be escaped.
    void stringText(std::string_view text) { output.append(text); }

    void endString() { output.Put('"'); }

    /// Ends the line, after an outermost value. Another one may follow.
    void endLine()
    {
        output.Put('\n');
        write([this](auto& json) { json.Reset(output); });
    }

    /// Passes all text on to the stream.
    void push() { output.push(); }

private:
    template <template <typename, typename, typename, typename, unsigned> class Writer>
    using Configured = Writer<JsonOutput, rapidjson::UTF8<>, rapidjson::UTF8<>,
                              tarn::common::ThrowingAllocator, rapidjson::kWriteDefaultFlags>;

    void write(const auto& event)
    {
        if (auto* const compact = std::get_if<0>(&writer)) {
            event(*compact);
        } else {
            event(*std::get_if<1>(&writer));
        }
    }

    JsonOutput output;
    std::variant<Configured<rapidjson::Writer>, Configured<rapidjson::PrettyWriter>> writer;
};

} // namespace xml2json

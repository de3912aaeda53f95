#include "tools/xml2json/JsonWriter.hpp"

namespace xml2json {

JsonWriter::JsonWriter(std::ostream& stream, std::optional<unsigned> indentation)
    : output(stream), writer(std::in_place_index<0>, output)
{
    if (indentation) {
        writer.emplace<1>(output).SetIndent(' ', *indentation);
    }
}

void JsonWriter::startObject()
{
    write([](auto& json) { json.StartObject(); });
}

void JsonWriter::endObject()
{
    write([](auto& json) { json.EndObject(); });
}

void JsonWriter::startArray()
{
    write([](auto& json) { json.StartArray(); });
}

void JsonWriter::endArray()
{
    write([](auto& json) { json.EndArray(); });
}

void JsonWriter::null()
{
    write([](auto& json) { json.Null(); });
}

void JsonWriter::boolean(bool isTrue)
{
    write([&](auto& json) { json.Bool(isTrue); });
}

void JsonWriter::number(std::string_view text)
{
    write([&](auto& json) { json.RawValue(text.data(), text.size(), rapidjson::kNumberType); });
}

void JsonWriter::startString()
{
    write([](auto& json) { json.RawValue("\"", 1, rapidjson::kStringType); });
}

void JsonWriter::endLine()
{
    output.Put('\n');
    write([&](auto& json) { json.Reset(output); });
}

} // namespace xml2json

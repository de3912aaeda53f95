#include "tools/xml2json/JsonWriter.hpp"

namespace xml2json {

JsonWriter::JsonWriter(std::ostream& stream, std::optional<unsigned> indentation)
    : output(stream), writer(std::in_place_index<0>, output)
{
    if (indentation) {
        writer.emplace<1>(output).SetIndent(' ', *indentation);
    }
}

} // namespace xml2json

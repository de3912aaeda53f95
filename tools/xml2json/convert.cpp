#include "tools/xml2json/convert.hpp"

#include "tools/xml2json/XmlParser.hpp"

namespace xml2json {

void convert(tarn::tools::InputFile file, std::ostream& output, const Limits& limits,
             const Format& format)
{
    XmlParser parser(std::move(file));
    JsonHandler handler(parser, output, limits, format);
    parser.parse(handler);
    handler.finish();
}

} // namespace xml2json

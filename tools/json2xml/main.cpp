// json2xml: converts JSON to XML.
#include "tools/common/program.hpp"
#include "tools/json2xml/convert.hpp"
#include "tools/json2xml/Options.hpp"

int main(int argumentCount, char** arguments)
{
    using namespace tarn::tools;
    constexpr auto PROGRAM = "json2xml";
    return runProgram(PROGRAM, [&] {
        const json2xml::Options options = json2xml::parseOptions(argumentCount, arguments);
        convertFile(PROGRAM, options.files, [&](InputFile file, std::ostream& output) {
            json2xml::JsonInput input(std::move(file), options.limits, options.format.hasEscapes);
            json2xml::convert(input, output, options.format);
        });
    });
}

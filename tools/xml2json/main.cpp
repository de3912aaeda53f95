// xml2json: converts XML to JSON.
#include "tools/common/program.hpp"
#include "tools/xml2json/convert.hpp"
#include "tools/xml2json/Options.hpp"

int main(int argumentCount, char** arguments)
{
    using namespace tarn::tools;
    constexpr auto PROGRAM = "xml2json";
    return runProgram(PROGRAM, [&] {
        const xml2json::Options options = xml2json::parseOptions(argumentCount, arguments);
        convertFile(PROGRAM, options.files, [&](InputFile file, std::ostream& output) {
            xml2json::convert(std::move(file), output, options.limits, options.format);
        });
    });
}

#include "tools/json2xml/Options.hpp"

#include "tools/common/command_line.hpp"

#include <CLI/CLI.hpp>
#include <string>

namespace json2xml {

namespace {

constexpr auto DESCRIPTION =
    "Converts JSON to XML: the representation of JSON that XPath and XQuery Functions and\n"
    "Operators 3.1 defines, with the elements map, array, string, number, boolean and null\n"
    "in the namespace http://www.w3.org/2005/xpath-functions and the attribute key.\n";

const std::string NOTES =
    "The input is one JSON value in UTF-8. Numbers keep their digits, repeated keys are\n"
    "kept, and each character that XML 1.0 does not allow becomes U+FFFD, unless --escape\n"
    "is given. xml2json turns the XML back into JSON.\n"
    "\n"
    "Memory grows with the longest string or number and the depth, not with the input. A\n"
    "string (which a key is too) of more than " +
    std::to_string(Limits().stringSize) + " bytes and a number of more than\n" +
    std::to_string(Limits().numberSize) +
    " bytes are refused.\n"
    "\n"
    "Indented XML grows with the nesting: 1 MB of brackets, nested 1000 deep, becomes 1 GB\n"
    "of XML. If the input is untrusted, set --max-depth as low as it allows.\n"
    "\n" +
    std::string(tarn::tools::FILE_NOTES) +
    "The exit status is 0 if all went well, 1 if the input cannot be read, is not JSON or\n"
    "exceeds a limit, if the output cannot be written or memory is exhausted, and 2 if the\n"
    "command line is wrong.\n"
    "\n"
    "Examples:\n"
    "  json2xml -o countries.xml countries.json\n"
    "  zcat log.json.gz | json2xml | xmllint --xpath 'count(//*)' -";

} // namespace

Options parseOptions(int argumentCount, const char* const* arguments)
{
    Options options;
    CLI::App app(DESCRIPTION, "json2xml");
    app.footer(NOTES);
    tarn::tools::addCommonOptions(app, "JSON", "arrays and objects", options.files,
                                  options.limits.depth);
    app.add_flag("--compact", options.format.isCompact, "Write everything on one line");
    app.add_flag("--escape", options.format.hasEscapes,
                 "Write control characters, backslashes and what XML 1.0 does not\n"
                 "allow as JSON escape sequences, in elements marked with\n"
                 "escaped=\"true\" or escaped-key=\"true\", so that nothing is lost");
    app.add_flag("--lines", options.format.hasLines,
                 "Read any number of values, such as JSON Lines, and write them\n"
                 "as the members of one array");
    tarn::tools::parseCommandLine(app, argumentCount, arguments, options.files);
    return options;
}

} // namespace json2xml

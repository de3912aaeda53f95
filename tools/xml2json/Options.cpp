#include "tools/xml2json/Options.hpp"

#include "tools/common/command_line.hpp"

#include <CLI/CLI.hpp>
#include <string>

namespace xml2json {

using namespace tarn::tools;

namespace {

constexpr auto DESCRIPTION =
    "Converts XML to JSON: the representation of JSON that XPath and XQuery Functions and\n"
    "Operators 3.1 defines, with the elements map, array, string, number, boolean and null\n"
    "in the namespace http://www.w3.org/2005/xpath-functions and the attributes key,\n"
    "escaped-key and escaped.\n";

const std::string NOTES =
    "The JSON is in UTF-8. A number that JSON has too keeps its digits. What\n"
    "json2xml --escape writes becomes JSON with the same value again; if a key was\n"
    "repeated, with --keep-repeated-keys.\n"
    "\n"
    "An XML document with a document type declaration is refused, and nothing but the\n"
    "input is read.\n"
    "\n"
    "Memory grows with the depth, the longest number, start tag, comment and CDATA section,\n"
    "and the keys of the objects that are open, not with other strings or the input. A\n"
    "number of more than " +
    std::to_string(Limits().numberSize) +
    " bytes is refused.\n"
    "\n" +
    FILE_NOTES +
    "The exit status is 0 if all went well, 1 if the input cannot be read, is not the XML\n"
    "representation of JSON or exceeds a limit, if the output cannot be written or memory\n"
    "is exhausted, and 2 if the command line is wrong.\n"
    "\n"
    "Examples:\n"
    "  xml2json -o countries.json countries.xml\n"
    "  json2xml --escape a.json | xml2json --indent 2";

/// More would only make the output large.
constexpr std::size_t MOST_BLANKS = 100;

unsigned parseIndentation(const std::string& text)
{
    const std::string meaning = "a number of blanks from 0 to " + std::to_string(MOST_BLANKS);
    const std::size_t blanks = parseNumber("--indent", text, meaning);
    if (blanks > MOST_BLANKS) {
        throw UsageError("--indent: not " + meaning + ": " + text);
    }
    return static_cast<unsigned>(blanks);
}

} // namespace

Options parseOptions(int argumentCount, const char* const* arguments)
{
    Options options;
    Format& format = options.format;
    CLI::App app(DESCRIPTION, "xml2json");
    app.footer(NOTES);
    addCommonOptions(app, "XML", "maps and arrays", options.files, options.limits.depth);
    app.add_option_function<std::string>(
           "--indent",
           [&](const std::string& text) { format.indentation = parseIndentation(text); },
           "Write each value on a line of its own, indented by N blanks\n"
           "for each level")
        ->type_name("N");
    app.add_flag("--keep-repeated-keys", format.keepsRepeatedKeys,
                 "Keep the members of a map that have the same key; they are\n"
                 "refused otherwise");
    app.add_flag("--lines", format.hasLines,
                 "Write each member of the outermost array on a line of its\n"
                 "own, without the array");
    parseCommandLine(app, argumentCount, arguments, options.files);
    if (format.hasLines && format.indentation) {
        throw UsageError("--indent and --lines exclude each other");
    }
    return options;
}

} // namespace xml2json

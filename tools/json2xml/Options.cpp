#include "tools/json2xml/Options.hpp"

#include <charconv>
#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace json2xml {

namespace {

constexpr auto DESCRIPTION =
    "Converts JSON to XML: the representation of JSON that XPath and XQuery Functions and\n"
    "Operators 3.1 defines, with the elements map, array, string, number, boolean and null\n"
    "in the namespace http://www.w3.org/2005/xpath-functions and the attribute key.\n";

const std::string NOTES =
    "The input is one JSON value in UTF-8. Numbers keep their digits, repeated keys are\n"
    "kept, and each character that XML 1.0 does not allow becomes U+FFFD.\n"
    "\n"
    "Memory grows with the longest string or number and the depth, not with the input. A\n"
    "string (which a key is too) of more than " +
    std::to_string(Limits().stringSize) + " bytes and a number of more than\n" +
    std::to_string(Limits().numberSize) +
    " bytes are refused.\n"
    "\n"
    "The XML is indented, so nesting multiplies the size: 1 MB of brackets, nested 1000\n"
    "deep, becomes 1 GB of XML. If the input is untrusted, set --max-depth as low as it\n"
    "allows.\n"
    "\n"
    "The new FILE of --output has the permissions of the old one, but not its owner, hard\n"
    "links, extended attributes and access control lists. It is on disk when the program\n"
    "ends.\n"
    "\n"
    "What is wrong with the input is reported as INPUT:LINE:COLUMN: MESSAGE. Lines and\n"
    "columns count from 1, columns in characters. Standard input is called <stdin>.\n"
    "\n"
    "The exit status is 0 if all went well, 1 if the input cannot be read, is not JSON or\n"
    "exceeds a limit, if the output cannot be written or memory is exhausted, and 2 if the\n"
    "command line is wrong.\n"
    "\n"
    "Examples:\n"
    "  json2xml -o countries.xml countries.json\n"
    "  zcat log.json.gz | json2xml | xmllint --xpath 'count(//*)' -";

/// Takes decimal digits only. CLI11 itself would also take `-1` and `010` for numbers.
std::size_t parseDepth(const std::string& text)
{
    std::size_t depth = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, depth);
    if (rest != end || error != std::errc()) {
        throw UsageError("--max-depth: not a number of levels: " + text);
    }
    return depth;
}

/// @param extras the arguments that are neither an option nor the first input, and `--`.
void refuseExtras(std::vector<std::string> extras, const std::string& input)
{
    std::erase(extras, "--");
    if (!extras.empty()) {
        const std::string& first = extras.front();
        throw UsageError(first.size() > 1 && first.front() == '-'
                             ? "unknown option: " + first
                             : "more than one input: " + input + ", " + first);
    }
}

void describe(CLI::App& app, Options& options)
{
    app.footer(NOTES);
    app.allow_extras();
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", "json2xml " JSON2XML_VERSION, "Print the version and exit");
    app.add_option("INPUT", options.input, "The JSON file; standard input if it is - or left out")
        ->type_name("");
    app.add_option("-o,--output", options.output,
                   "Write FILE instead of standard output.\n"
                   "FILE is replaced when the conversion is complete;\n"
                   "if it fails, FILE stays as it was")
        ->type_name("FILE");
    app.add_option_function<std::string>(
           "--max-depth", [&](const std::string& text) { options.limits.depth = parseDepth(text); },
           "Refuse arrays and objects inside one another in more than\n"
           "N levels (" +
               std::to_string(options.limits.depth) + " if left out; [] is one level, 1 is none)")
        ->type_name("N");
    app.add_flag("--progress", options.showsProgress,
                 "Show how far a long conversion has come, if standard error\n"
                 "is a terminal");
}

} // namespace

Options parseOptions(int argumentCount, const char* const* arguments)
{
    Options options;
    CLI::App app(DESCRIPTION, "json2xml");
    describe(app, options);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::CallForHelp&) {
        options.information = app.help();
    } catch (const CLI::CallForVersion&) {
        options.information = app.version() + '\n';
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
    refuseExtras(app.remaining(), options.input);
    return options;
}

} // namespace json2xml

#include "tools/common/command_line.hpp"

#include <charconv>
#include <CLI/CLI.hpp>
#include <vector>

namespace tarn::tools {

namespace {

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

} // namespace

void addCommonOptions(CLI::App& app, const std::string& inputKind, const std::string& levels,
                      FileOptions& options, std::size_t& depth)
{
    app.allow_extras();
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", app.get_name() + " " TARN_VERSION,
                         "Print the version and exit");
    app.add_option("INPUT", options.input,
                   "The " + inputKind + " file; standard input if it is - or left out")
        ->type_name("");
    app.add_option("-o,--output", options.output,
                   "Write FILE instead of standard output.\n"
                   "FILE is replaced when the conversion is complete;\n"
                   "if it fails, FILE stays as it was")
        ->type_name("FILE");
    app.add_option_function<std::string>(
           "--max-depth",
           [&depth](const std::string& text) {
               depth = parseNumber("--max-depth", text, "a number of levels");
           },
           "Refuse " + levels + " inside one another in more than\nN levels (" +
               std::to_string(depth) + " if left out; [] is one level, 1 is none)")
        ->type_name("N");
    app.add_flag("--progress", options.showsProgress,
                 "Show how far a long conversion has come, if standard error\n"
                 "is a terminal");
}

std::size_t parseNumber(const std::string& option, const std::string& text,
                        const std::string& meaning)
{
    std::size_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (rest != end || error != std::errc()) {
        throw UsageError(option + ": not " + meaning + ": " + text);
    }
    return number;
}

void parseCommandLine(CLI::App& app, int argumentCount, const char* const* arguments,
                      FileOptions& options)
{
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
}

} // namespace tarn::tools

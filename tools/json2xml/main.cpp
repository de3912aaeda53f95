// json2xml: converts JSON to XML.
#include "tools/common/OutputFile.hpp"
#include "tools/common/Progress.hpp"
#include "tools/json2xml/convert.hpp"
#include "tools/json2xml/JsonInput.hpp"
#include "tools/json2xml/Options.hpp"

#include <csignal>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <new>
#include <optional>
#include <sys/stat.h>

namespace {

using namespace json2xml;
using namespace tarn::tools;

enum ExitStatus
{
    SUCCESS,
    FAILURE,
    USAGE_ERROR
};

int complain(const char* problem, ExitStatus status)
{
    std::cerr << "json2xml: " << problem << '\n';
    return status;
}

FileDescriptor openInput(const std::string& path)
{
    FileDescriptor input(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (input.get() < 0) {
        throwSystemError(path);
    }
    return input;
}

/// The size of a regular file. The size of a pipe or a terminal is not known.
std::optional<std::uint64_t> sizeOf(const FileDescriptor& input)
{
    struct stat file;
    if (::fstat(input.get(), &file) == 0 && S_ISREG(file.st_mode)) {
        return file.st_size;
    }
    return std::nullopt;
}

JsonInput::BlockObserver reportTo(Progress& progress)
{
    return [&progress](std::uint64_t bytesRead) {
        progress.report(bytesRead, Progress::Clock::now());
    };
}

void print(const std::string& information)
{
    OutputFile output("-");
    output.sputn(information.data(), static_cast<std::streamsize>(information.size()));
    output.commit();
}

void convertFile(const Options& options)
{
    FileDescriptor file = openInput(options.input);
    Progress progress(STDERR_FILENO, sizeOf(file), Progress::Clock::now());
    const bool isReporting = options.showsProgress && ::isatty(STDERR_FILENO) == 1;
    JsonInput input(
        std::move(file), options.input == "-" ? "<stdin>" : options.input,
        isReporting ? reportTo(progress) : [](std::uint64_t) {}, options.limits);
    OutputFile output(options.output);
    std::ostream stream(&output);
    stream.exceptions(std::ios::badbit); // else the stream would swallow the buffer's exceptions
    convert(input, stream);
    output.commit();
}

void run(const Options& options)
{
    if (options.information.empty()) {
        convertFile(options);
    } else {
        print(options.information);
    }
}

} // namespace

int main(int argumentCount, char** arguments)
{
    std::signal(SIGPIPE, SIG_IGN); // so that writing to a closed pipe fails like other writes
    try {
        run(parseOptions(argumentCount, arguments));
        return SUCCESS;
    } catch (const UsageError& error) {
        return complain(error.what(), USAGE_ERROR);
    } catch (const std::bad_alloc&) {
        return complain("out of memory", FAILURE);
    } catch (const std::exception& error) {
        return complain(error.what(), FAILURE);
    }
}

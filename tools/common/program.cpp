#include "tools/common/program.hpp"

#include "tools/common/command_line.hpp"
#include "tools/common/OutputFile.hpp"
#include "tools/common/Progress.hpp"

#include <csignal>
#include <exception>
#include <fcntl.h>
#include <iostream>
#include <new>
#include <optional>
#include <sys/stat.h>

namespace tarn::tools {

namespace {

enum ExitStatus
{
    SUCCESS,
    FAILURE,
    USAGE_ERROR
};

int complain(const std::string& program, const char* problem, ExitStatus status)
{
    std::cerr << program << ": " << problem << '\n';
    return status;
}

/// Takes the place of standard streams that are closed, so that no file gets it. Reading and
/// writing fail as before.
void holdStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) == -1) {
            // It gets the lowest number that is free.
            [[maybe_unused]] const int held = ::open("/", O_PATH | O_CLOEXEC);
        }
    }
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

InputFile::BlockObserver reportTo(Progress& progress)
{
    return [&progress](std::uint64_t bytesRead) {
        progress.report(bytesRead, Progress::Clock::now());
    };
}

void print(const std::string& program, const std::string& information)
{
    OutputFile output("-", program);
    output.sputn(information.data(), static_cast<std::streamsize>(information.size()));
    output.commit();
}

} // namespace

void convertFile(const std::string& program, const FileOptions& options, const Conversion& convert)
{
    if (!options.information.empty()) {
        print(program, options.information);
        return;
    }
    FileDescriptor file = openInput(options.input);
    Progress progress(STDERR_FILENO, sizeOf(file), Progress::Clock::now());
    const bool isReporting = options.showsProgress && ::isatty(STDERR_FILENO) == 1;
    InputFile input{std::move(file), options.input == "-" ? "<stdin>" : options.input,
                    isReporting ? reportTo(progress) : [](std::uint64_t) {}};
    OutputFile output(options.output, program);
    std::ostream stream(&output);
    stream.exceptions(std::ios::badbit); // else the stream would swallow the buffer's exceptions
    convert(std::move(input), stream);
    output.commit();
}

int runProgram(const std::string& program, const std::function<void()>& run)
{
    holdStandardStreams();
    std::signal(SIGPIPE, SIG_IGN); // so that writing to a closed pipe fails like other writes
    try {
        run();
        return SUCCESS;
    } catch (const UsageError& error) {
        return complain(program, error.what(), USAGE_ERROR);
    } catch (const std::bad_alloc&) {
        return complain(program, "out of memory", FAILURE);
    } catch (const std::exception& error) {
        return complain(program, error.what(), FAILURE);
    }
}

} // namespace tarn::tools

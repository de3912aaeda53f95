#include "tools/json2xml/Program.hpp"

#include <array>
#include <spawn.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace json2xml::test {

namespace {

/// A file without a name, through which a stream of the program passes whatever its size.
class StreamFile
{
public:
    explicit StreamFile(const std::string& text = "")
    {
        if (::write(number, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            throw std::runtime_error("no room for a stream");
        }
        ::lseek(number, 0, SEEK_SET);
    }
    ~StreamFile() { ::close(number); }
    StreamFile(const StreamFile&) = delete;
    StreamFile& operator=(const StreamFile&) = delete;

    std::string text() const
    {
        std::string all(static_cast<std::size_t>(::lseek(number, 0, SEEK_END)), '\0');
        all.resize(static_cast<std::size_t>(::pread(number, all.data(), all.size(), 0)));
        return all;
    }

    const int number = ::memfd_create("stream", MFD_CLOEXEC);
};

} // namespace

Result run(const Arguments& arguments, const std::string& input)
{
    const StreamFile output;
    Result result = run(arguments, input, output.number);
    result.output = output.text();
    return result;
}

Result run(const Arguments& arguments, const std::string& input, int output)
{
    const StreamFile inputFile(input);
    const StreamFile error;
    const pid_t process = start(arguments, inputFile.number, output, error.number);
    int status = 0;
    rusage usage{};
    ::wait4(process, &status, 0, &usage);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, "", error.text(), usage.ru_maxrss};
}

pid_t start(const Arguments& arguments, int input, int output, int error)
{
    std::vector<char*> list{const_cast<char*>("json2xml")};
    for (const std::string& argument : arguments) {
        list.push_back(const_cast<char*>(argument.c_str()));
    }
    list.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
    pid_t process = 0;
    const int problem = ::posix_spawn(&process, JSON2XML, &actions, nullptr, list.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (problem != 0) {
        throw std::runtime_error("cannot start " JSON2XML);
    }
    return process;
}

} // namespace json2xml::test

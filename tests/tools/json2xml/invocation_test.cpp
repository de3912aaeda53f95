// The command line, files, streams and signals of json2xml.
#include "tools/json2xml/limits.hpp"
#include "tools/json2xml/run_program.hpp"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace json2xml::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

const std::string ONE = R"(<?xml version="1.0" encoding="UTF-8"?>
<number xmlns="http://www.w3.org/2005/xpath-functions">1</number>
)";

mode_t permissions(const std::string& path)
{
    struct stat file
    {
    };
    ::stat(path.c_str(), &file);
    return file.st_mode & 0777;
}

TEST(Json2xmlInvocation, RefusesAWrongCommandLine)
{
    const std::pair<Arguments, std::string> cases[] = {
        {{"a.json", "b.json"}, "more than one input: a.json, b.json"},
        {{"-", "-"}, "more than one input: -, -"},
        {{"--frobnicate"}, "unknown option: --frobnicate"},
        {{"-o"}, "--output"},
        {{"-o", "a", "-o", "b"}, "--output"},
        {{"--max-depth", "-1"}, "--max-depth"},
        {{"--max-depth", "ten"}, "--max-depth"},
        {{"--max-depth", "99999999999999999999"}, "--max-depth"},
    };
    for (const auto& [arguments, problem] : cases) {
        const Result result = run(arguments, "1");
        EXPECT_EQ(result.status, 2) << problem;
        EXPECT_THAT(result.error, MatchesRegex("json2xml: [^\n]+\n"));
        EXPECT_THAT(result.error, HasSubstr(problem));
        EXPECT_EQ(result.output, "") << problem;
    }
}

TEST(Json2xmlInvocation, ReadsTheInputThatIsNamed)
{
    const Directory directory;
    writeFile(directory / "-x.json", "1");
    EXPECT_EQ(run({directory / "-x.json"}).output, ONE);
    EXPECT_EQ(run({"--", directory / "-x.json"}).output, ONE);
    EXPECT_EQ(run({"-"}, "1").output, ONE);

    const std::string pipe = directory / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(run({pipe}, "", "", "printf 1 >" + pipe + " &").output, ONE);
}

TEST(Json2xmlInvocation, NamesAnInputThatCannotBeRead)
{
    const Directory directory;
    const std::string missing = directory / "missing";
    const Result result = run({missing});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, "json2xml: " + missing + ": No such file or directory\n");
    EXPECT_EQ(run({directory / ""}).error, "json2xml: " + directory / "" + ": Is a directory\n");
}

TEST(Json2xmlInvocation, PrintsHelpAndVersion)
{
    for (const std::string option :
         {"-o,--output FILE", "--max-depth N", "--progress", "--version"}) {
        EXPECT_THAT(run({"--help"}).output, HasSubstr(option));
    }
    constexpr json2xml::Limits LIMITS;
    for (const std::string& limit :
         {std::to_string(LIMITS.depth) + " if", std::to_string(LIMITS.stringSize) + " bytes",
          std::to_string(LIMITS.numberSize) + " bytes"}) {
        EXPECT_THAT(run({"--help"}).output, HasSubstr(limit));
        EXPECT_THAT(readFile(JSON2XML_MANUAL), HasSubstr(limit));
    }
    EXPECT_THAT(run({"--version"}).output, MatchesRegex("json2xml [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Json2xmlInvocation, ReplacesTheOutputWhenItIsComplete)
{
    const Directory directory;
    const std::string file = directory / "file.xml";
    const mode_t mask = ::umask(027);
    EXPECT_EQ(run({"-o", file}, "1").output, "");
    ::umask(mask);
    EXPECT_EQ(readFile(file), ONE);
    EXPECT_EQ(permissions(file), 0640u);

    std::filesystem::create_symlink("file.xml", directory / "link.xml");
    ::chmod(file.c_str(), 0604);
    EXPECT_EQ(run({"-o", directory / "link.xml"}, "[1").status, 1);
    EXPECT_EQ(readFile(file), ONE) << "a failure must change nothing";
    EXPECT_EQ(run({"-o", directory / "link.xml"}, "2").status, 0);
    EXPECT_THAT(readFile(file), HasSubstr(">2<"));
    EXPECT_EQ(permissions(file), 0604u);
    EXPECT_TRUE(std::filesystem::is_symlink(directory / "link.xml"));
    EXPECT_THAT(directory.names(), ElementsAre("file.xml", "link.xml"));
}

/// A run of json2xml that has written a part of `file.xml` and waits for more input.
class UnfinishedRun
{
public:
    /// @param setup what the shell does first.
    explicit UnfinishedRun(const std::string& setup = "")
        : input(::popen((setup + "\necho $$ >" + other / "process; " +
                         command({"-o", directory / "file.xml"}))
                            .c_str(),
                        "w"))
    {
        const std::string start = "[\"" + std::string(1'000'000, 'a') + "\", 1";
        std::fwrite(start.data(), 1, start.size(), input);
        std::fflush(input);
        while (!hasWritten()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    void send(int signal) { ::kill(std::stoi(readFile(other / "process")), signal); }

    /// Ends the input with @p rest, which must be empty if the program may have ended. Returns how
    /// it has ended, in the form of waitpid().
    int finish(const std::string& rest)
    {
        std::fputs(rest.c_str(), input);
        return ::pclose(input);
    }

    const Directory directory;

private:
    bool hasWritten() const
    {
        const auto names = directory.names();
        return !names.empty() && std::filesystem::file_size(directory / names.front()) > 0;
    }

    const Directory other;
    FILE* const input;
};

TEST(Json2xmlInvocation, LeavesNothingBehindAfterASignal)
{
    // A core dump takes long. The options keep AddressSanitizer from handling some signals itself.
    const std::string setup =
        "ulimit -c 0; export "
        "ASAN_OPTIONS=handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0";
    for (const int signal :
         {SIGHUP,    SIGINT,  SIGQUIT, SIGILL,  SIGTRAP, SIGABRT,   SIGBUS,  SIGFPE,
          SIGUSR1,   SIGSEGV, SIGUSR2, SIGALRM, SIGTERM, SIGSTKFLT, SIGXCPU, SIGXFSZ,
          SIGVTALRM, SIGPROF, SIGIO,   SIGPWR,  SIGSYS,  SIGRTMIN,  SIGRTMAX}) {
        SCOPED_TRACE(::strsignal(signal));
        UnfinishedRun run(setup);
        run.send(signal);
        const int status = run.finish("");
        EXPECT_TRUE(WIFSIGNALED(status)) << status;
        EXPECT_EQ(WTERMSIG(status), signal);
        EXPECT_THAT(run.directory.names(), IsEmpty());
    }
}

TEST(Json2xmlInvocation, GoesOnAfterASignalThatIsIgnored)
{
    const std::pair<int, std::string> cases[] = {
        {SIGHUP, "trap '' HUP"}, {SIGTERM, "trap '' TERM"},
        {SIGPIPE, ""},           {SIGCHLD, ""},
        {SIGWINCH, ""},          {SIGURG, ""},
    };
    for (const auto& [signal, setup] : cases) {
        SCOPED_TRACE(::strsignal(signal));
        UnfinishedRun run(setup);
        run.send(signal);
        EXPECT_EQ(run.finish("]"), 0);
        EXPECT_THAT(run.directory.names(), ElementsAre("file.xml"));
    }
}

TEST(Json2xmlInvocation, LeavesNothingBehindAfterAFailure)
{
    const Directory directory;
    const std::string file = directory / "file.xml";
    const std::string longString = '"' + std::string(1'000'000, 'a') + '"';
    EXPECT_EQ(run({"-o", file}, '[' + longString).status, 1);
    EXPECT_THAT(directory.names(), IsEmpty());

    EXPECT_EQ(run({"-o", file}, longString, "", "ulimit -f 100").status, -1) << "SIGXFSZ";
    EXPECT_THAT(directory.names(), IsEmpty());
    const Result ignoring = run({"-o", file}, longString, "", "ulimit -f 100; trap '' XFSZ");
    EXPECT_EQ(ignoring.status, 1);
    EXPECT_EQ(ignoring.error, "json2xml: " + file + ": File too large\n");
    EXPECT_THAT(directory.names(), IsEmpty());
}

#if !IS_SANITIZED
TEST(Json2xmlInvocation, SaysThatMemoryIsExhausted)
{
    const Directory directory;
    std::string longString = "\"";
    longString.resize(50'000'000, 'a');
    longString += '"';
    for (const std::string kilobytes : {"100000", "200000", "300000"}) {
        const Result result =
            run({"-o", directory / "file.xml"}, longString, "", "ulimit -v " + kilobytes);
        EXPECT_EQ(result.status, 1) << kilobytes;
        EXPECT_EQ(result.error, "json2xml: out of memory\n") << kilobytes;
        EXPECT_THAT(directory.names(), IsEmpty()) << kilobytes;
    }
}
#endif

TEST(Json2xmlInvocation, ReportsAnOutputThatCannotBeWritten)
{
    const Directory directory;
    const std::string missing = directory / "missing/file.xml";
    const std::string existing = directory / "directory";
    std::filesystem::create_directory(existing);
    EXPECT_EQ(run({"-o", missing}, "1").error,
              "json2xml: " + missing + ": No such file or directory\n");
    EXPECT_EQ(run({"-o", existing}, "1").error, "json2xml: " + existing + ": Is a directory\n");

    const Result full = run({}, "1", "/dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_EQ(full.error, "json2xml: <stdout>: No space left on device\n");
    EXPECT_EQ(run({"--help"}, "", "/dev/full").status, 1);

    const std::string input = directory / "input.json";
    writeFile(input, "1");
    for (const Arguments& arguments : {Arguments{input}, {"-"}, {"--help"}}) {
        const Result none = run(arguments, "1", "&-");
        EXPECT_EQ(none.status, 1) << arguments.front();
        EXPECT_EQ(none.error, "json2xml: <stdout>: Bad file descriptor\n") << arguments.front();
    }

    int output[2];
    ASSERT_EQ(::pipe(output), 0);
    ::close(output[0]);
    const Result closed = run({}, "1", '&' + std::to_string(output[1]));
    ::close(output[1]);
    EXPECT_EQ(closed.status, 1);
    EXPECT_EQ(closed.error, "json2xml: <stdout>: Broken pipe\n");
}

TEST(Json2xmlInvocation, WritesInPlaceWhatItMustNotReplace)
{
    const Directory directory;
    const std::string pipe = directory / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int reader = ::open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    EXPECT_EQ(run({"-o", pipe}, "1").error, "");
    std::string text(ONE.size(), '\0');
    EXPECT_EQ(::read(reader, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    ::close(reader);
    EXPECT_EQ(text, ONE);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));

    // A file that is standard output too is appended to.
    const std::string file = directory / "file.xml";
    EXPECT_EQ(run({}, "1", '>' + file).error, "");
    EXPECT_EQ(run({"-o", file}, "1", '>' + file).error, "");
    EXPECT_EQ(readFile(file), ONE + ONE);
    EXPECT_EQ(run({"-o", "-"}, "1").output, ONE);
}

} // namespace

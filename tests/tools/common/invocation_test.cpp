// The command line, files, streams and signals of a program.
#include "tools/common/run_program.hpp"
#include "tools/common/Sample.hpp"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace tarn::tools::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

mode_t permissions(const std::string& path)
{
    return static_cast<mode_t>(std::filesystem::status(path).permissions());
}

TEST(Invocation, RefusesAWrongCommandLine)
{
    const std::pair<Arguments, std::string> cases[] = {
        {{"a", "b"}, "more than one input: a, b"},
        {{"-", "-"}, "more than one input: -, -"},
        {{"--frobnicate"}, "unknown option: --frobnicate"},
        {{"a", "-x"}, "unknown option: -x"},
        {{"-o"}, "--output"},
        {{"-o", "a", "-o", "b"}, "--output"},
        {{"--max-depth", "-1"}, "--max-depth"},
        {{"--max-depth", "0x1"}, "--max-depth"},
        {{"--max-depth", " 1"}, "--max-depth"},
        {{"--max-depth", "18446744073709551616"}, "--max-depth"},
    };
    for (const auto& [arguments, problem] : cases) {
        const Result result = run(arguments, SAMPLE.input);
        EXPECT_EQ(result.status, 2) << problem;
        EXPECT_THAT(result.error, MatchesRegex(PROGRAM_NAME + ": [^\n]+\n"));
        EXPECT_THAT(result.error, HasSubstr(problem));
        EXPECT_EQ(result.output, "") << problem;
    }
}

TEST(Invocation, ReadsTheInputThatIsNamed)
{
    const Directory directory;
    writeFile(directory / "-x", SAMPLE.input);
    EXPECT_EQ(run({directory / "-x"}).output, SAMPLE.result);
    EXPECT_EQ(run({"--", directory / "-x"}).output, SAMPLE.result);
    EXPECT_EQ(run({"-", "--max-depth", "18446744073709551615"}, SAMPLE.input).output,
              SAMPLE.result);

    const std::string pipe = directory / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(
        run({pipe}, "", "", "(sleep .1; cat " + directory / "-x" + ") >" + pipe + " &").output,
        SAMPLE.result);
}

TEST(Invocation, NamesAnInputThatCannotBeRead)
{
    const Directory directory;
    const std::string missing = directory / "missing";
    const Result result = run({missing});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error, PROGRAM_NAME + ": " + missing + ": No such file or directory\n");
    EXPECT_EQ(run({directory / ""}).error,
              PROGRAM_NAME + ": " + directory / "" + ": Is a directory\n");
    EXPECT_EQ(run({"-o", directory / "file"}, "", directory / "out" + " <&-").error,
              PROGRAM_NAME + ": <stdin>: Bad file descriptor\n");
    // No file takes the place of a stream that is closed.
    writeFile(directory / "both", SAMPLE.input);
    EXPECT_EQ(run({"-o", directory / "both", directory / "both"}, "", "&- <&-").error, "");
    EXPECT_EQ(readFile(directory / "both"), SAMPLE.result);
}

TEST(Invocation, ShowsItsProgressOnATerminal)
{
    const Directory directory;
    const std::string script = directory / "script";
    const std::string shown = directory / "shown";
    const std::pair<std::string, std::string> cases[] = {
        {"script -qec 'sh " + script + " --progress' /dev/null >" + shown,
         "(\r\033\\[K0 MB read)+\r\033\\[K"},
        {"script -qec 'sh " + script + "' /dev/null >" + shown, ""},
        {"sh " + script + " --progress 2>" + shown, ""},
        // The size of a file is known; its end is read when somebody has taken the output.
        {"script -qec \"" + command({"--progress", directory / "file"}) + " | (sleep 2; cat >" +
             shown + ".out)\" /dev/null >" + shown,
         "\r\033\\[K\\[#+ +] [0-9]+ %(\r\033\\[K\\[#+ *] [0-9]+ %)*\r\033\\[K"},
    };
    writeFile(directory / "file",
              SAMPLE.string(std::string(400'000, 'a')) + std::string(1'000'000, ' '));
    writeFile(script, "(printf '" + SAMPLE.arrayStart + "'; sleep 2; printf '" + SAMPLE.arrayEnd +
                          "') | (" + command({}) + " $* >/dev/null)");
    for (const auto& [run, expected] : cases) {
        EXPECT_EQ(std::system(run.c_str()), 0) << run;
        EXPECT_THAT(readFile(shown), MatchesRegex(expected)) << run;
    }
}

TEST(Invocation, PrintsHelpAndVersion)
{
    EXPECT_THAT(
        run({"--help"}).output,
        testing::ContainsRegex("-h,--help +Print this help and exit\n +--version (.|\n)* "
                               "-o,--output FILE (.|\n)* --max-depth N (.|\n)* --progress "));
    EXPECT_THAT(run({"--version"}).output,
                MatchesRegex(PROGRAM_NAME + " [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Invocation, ReplacesTheOutputWhenItIsComplete)
{
    const Directory directory;
    const std::string file = directory / "sub/file";
    std::filesystem::create_directories(directory / "sub/deep");
    const mode_t mask = ::umask(027);
    EXPECT_EQ(run({"-o", file}, SAMPLE.input).output, "");
    ::umask(mask);
    EXPECT_EQ(readFile(file), SAMPLE.result);
    EXPECT_EQ(permissions(file), 0640u);

    // Of "down/../file", "down/.." is not the directory that "down" is in.
    std::filesystem::create_directory_symlink("sub/deep", directory / "down");
    std::filesystem::create_symlink(directory / "down/link", directory / "link");
    std::filesystem::create_symlink("../file", directory / "sub/deep/link");
    ::chmod(file.c_str(), 07777);
    EXPECT_EQ(run({"-o", directory / "link"}, SAMPLE.arrayStart).status, 1);
    EXPECT_EQ(readFile(file), SAMPLE.result) << "a failure must change nothing";
    EXPECT_EQ(run({"-o", directory / "link"}, SAMPLE.string("second")).status, 0);
    EXPECT_THAT(readFile(file), HasSubstr("second"));
    EXPECT_EQ(permissions(file), 0777u);
    EXPECT_TRUE(std::filesystem::is_symlink(directory / "link"));
    EXPECT_TRUE(std::filesystem::is_symlink(directory / "sub/deep/link"));
    EXPECT_THAT(directory.names(), ElementsAre("down", "link", "sub"));
}

/// A run of the program that has written a part of `file` and waits for more input.
class UnfinishedRun
{
public:
    /// @param setup what the shell does first.
    explicit UnfinishedRun(const std::string& setup = "")
        : input(::popen(
              (setup + "\necho $$ >" + other / "process; " + command({"-o", directory / "file"}))
                  .c_str(),
              "w"))
    {
        // A string may count as read only when something follows it.
        const std::string start =
            SAMPLE.arrayStart + SAMPLE.string(std::string(1'000'000, 'a')) + ' ';
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

TEST(Invocation, LeavesNothingBehindAfterASignal)
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
        std::signal(signal, SIG_DFL); // a shell ignores some for what it runs in the background
        UnfinishedRun run(setup);
        run.send(signal);
        const int status = run.finish("");
        EXPECT_TRUE(WIFSIGNALED(status)) << status;
        EXPECT_EQ(WTERMSIG(status), signal);
        EXPECT_THAT(run.directory.names(), IsEmpty());
    }
}

TEST(Invocation, GoesOnAfterASignalThatIsIgnored)
{
    // The last four stop the program, until SIGCONT comes.
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGCHLD, SIGWINCH, SIGURG,
                             SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU}) {
        SCOPED_TRACE(::strsignal(signal));
        std::signal(signal, SIG_DFL);
        UnfinishedRun run("trap '' HUP INT QUIT TERM");
        EXPECT_THAT(run.directory.names().front(), testing::StartsWith('.' + PROGRAM_NAME + '-'));
        run.send(signal);
        std::this_thread::sleep_for(std::chrono::milliseconds(50)); // SIGCONT takes back a stop
        run.send(SIGCONT);
        EXPECT_EQ(run.finish(SAMPLE.arrayEnd), 0);
        EXPECT_THAT(run.directory.names(), ElementsAre("file"));
    }
}

TEST(Invocation, LeavesNothingBehindAfterAFailure)
{
    const Directory directory;
    const std::string file = directory / "file";
    const std::string longString = SAMPLE.string(std::string(1'000'000, 'a'));
    EXPECT_EQ(run({"-o", file}, SAMPLE.arrayStart + longString).status, 1);
    EXPECT_THAT(directory.names(), IsEmpty());

    EXPECT_EQ(run({"-o", file}, longString, "", "ulimit -f 100").status, -1) << "SIGXFSZ";
    EXPECT_THAT(directory.names(), IsEmpty());
    const Result ignoring = run({"-o", file}, longString, "", "ulimit -f 100; trap '' XFSZ");
    EXPECT_EQ(ignoring.status, 1);
    EXPECT_EQ(ignoring.error, PROGRAM_NAME + ": " + file + ": File too large\n");
    EXPECT_THAT(directory.names(), IsEmpty());
}

TEST(Invocation, ReportsAnOutputThatCannotBeWritten)
{
    const Directory directory;
    const std::string missing = directory / "missing/file";
    const std::string existing = directory / "directory";
    std::filesystem::create_directory(existing);
    EXPECT_EQ(run({"-o", missing}, SAMPLE.input).error,
              PROGRAM_NAME + ": " + missing + ": No such file or directory\n");
    EXPECT_EQ(run({"-o", existing}, SAMPLE.input).error,
              PROGRAM_NAME + ": " + existing + ": Is a directory\n");

    const std::string input = directory / "input";
    writeFile(input, SAMPLE.input);
    int output[2];
    ASSERT_EQ(::pipe(output), 0);
    ::close(output[0]);
    ASSERT_EQ(::dup2(output[1], 9), 9); // a shell takes one digit only
    const std::pair<std::string, std::string> targets[] = {{"/dev/full", "No space left on device"},
                                                           {"&-", "Bad file descriptor"},
                                                           {"&9", "Broken pipe"}};
    for (const auto& [target, problem] : targets) {
        for (const Arguments& arguments : {Arguments{input}, {"-"}, {"--help"}}) {
            const Result result = run(arguments, SAMPLE.input, target);
            EXPECT_EQ(result.status, 1) << arguments.front();
            EXPECT_EQ(result.error, PROGRAM_NAME + ": <stdout>: " + problem + '\n');
        }
    }
    ::close(output[1]);
    ::close(9);
}

TEST(Invocation, WritesInPlaceWhatItMustNotReplace)
{
    const Directory directory;
    const std::string pipe = directory / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::string reading = "sleep 0.1; timeout 9 cat " + pipe + " >" + directory / "text";
    FILE* const reader = ::popen(reading.c_str(), "w");
    EXPECT_EQ(run({"-o", pipe}, SAMPLE.input).error, "");
    ::pclose(reader);
    EXPECT_EQ(readFile(directory / "text"), SAMPLE.result);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));

    // A file that is standard output too is appended to.
    const std::string file = directory / "file";
    EXPECT_EQ(run({}, SAMPLE.input, '>' + file).error, "");
    EXPECT_EQ(run({"-o", file}, SAMPLE.input, '>' + file).error, "");
    EXPECT_EQ(readFile(file), SAMPLE.result + SAMPLE.result);
    EXPECT_EQ(run({"-o", "-"}, SAMPLE.input).output, SAMPLE.result);
}

} // namespace

// How json2xml treats its command line, its files and its streams.
#include "tools/json2xml/run_program.hpp"

#include <chrono>
#include <csignal>
#include <cstdio>
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
        EXPECT_EQ(result.output, "");
    }
}

TEST(Json2xmlInvocation, ReadsTheInputThatIsNamed)
{
    const Directory directory;
    writeFile(directory / "-x.json", "1");
    EXPECT_EQ(run({directory / "-x.json"}).output, ONE);
    EXPECT_EQ(run({"--", directory / "-x.json"}).output, ONE);
    EXPECT_EQ(run({"-"}, "1").output, ONE);
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

TEST(Json2xmlInvocation, LeavesNothingBehindAfterAFailureOrASignal)
{
    const Directory directory;
    const std::string longArray = "[\"" + std::string(1'000'000, 'a') + "\", 1";
    EXPECT_EQ(run({"-o", directory / "file.xml"}, longArray).status, 1);
    EXPECT_THAT(directory.names(), IsEmpty());

    const Directory other;
    FILE* const program = ::popen(
        ("echo $$ >" + other / "process; " + command({"-o", directory / "file.xml"})).c_str(), "w");
    ASSERT_NE(program, nullptr);
    std::fwrite(longArray.data(), 1, longArray.size(), program);
    std::fflush(program);
    const auto written = [&] {
        const auto names = directory.names();
        return !names.empty() && std::filesystem::file_size(directory / names.front()) > 0;
    };
    while (!written()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ::kill(std::stoi(readFile(other / "process")), SIGTERM);
    const int status = ::pclose(program);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
    EXPECT_THAT(directory.names(), IsEmpty());
}

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

    // What standard output writes already keeps what stands in it.
    const std::string file = directory / "file.xml";
    EXPECT_EQ(run({}, "1", '>' + file).error, "");
    EXPECT_EQ(run({"-o", file}, "1", '>' + file).error, "");
    EXPECT_EQ(readFile(file), ONE + ONE);
    EXPECT_EQ(run({"-o", "-"}, "1").output, ONE);
}

} // namespace

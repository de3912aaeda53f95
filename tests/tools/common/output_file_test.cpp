// The output file of a program when a system call fails or a signal comes at a bad time.
#include "support/files.hpp"
#include "support/ordinary_user.hpp"
#include "tools/common/OutputFile.hpp"
#include "tools/common/program.hpp"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <tuple>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

/// This program defines some functions of the C library itself, which fail, raise a signal or write
/// less if one of these is set.
int errorOfClose = 0;
int errorOfFsync = 0;
int errorOfRename = 0;
int errorOfWrite = 0;
int signalAfterMkostemp = 0; // 0 is none
int signalBeforeRename = 0;
std::size_t mostPerWrite = SSIZE_MAX;
int interruptions = 0; // how many writes of a part are followed by an interruption

/// What fsync() has been called for, `file` or `directory`, and the names of other calls.
std::vector<std::string> steps;
/// The directory whose names are to be written to disk.
std::string expectedDirectory;

int failOnce(int& error)
{
    errno = std::exchange(error, 0);
    return errno == 0 ? 0 : -1;
}

} // namespace

// Names of their own for parameters, which the C library gives reserved ones.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)

extern "C" {

int close(int descriptor)
{
    const auto result = static_cast<int>(::syscall(SYS_close, descriptor));
    EXPECT_EQ(result, 0) << "must not be closed twice";
    return errorOfClose != 0 ? failOnce(errorOfClose) : result;
}

int fsync(int descriptor)
{
    struct stat file = {};
    ::fstat(descriptor, &file);
    struct stat expected = {};
    ::stat(expectedDirectory.c_str(), &expected);
    steps.push_back(!S_ISDIR(file.st_mode)           ? "file"
                    : file.st_ino == expected.st_ino ? "directory"
                                                     : "another directory");
    return errorOfFsync != 0 ? failOnce(errorOfFsync)
                             : static_cast<int>(::syscall(SYS_fsync, descriptor));
}

ssize_t write(int descriptor, const void* bytes, std::size_t size)
{
    steps.emplace_back("write");
    if (errorOfWrite != 0) {
        return failOnce(errorOfWrite);
    }
    errorOfWrite = size > mostPerWrite && interruptions-- > 0 ? EINTR : 0;
    return ::syscall(SYS_write, descriptor, bytes, std::min(size, mostPerWrite));
}

int rename(const char* from, const char* to)
{
    steps.emplace_back("rename");
    std::raise(signalBeforeRename);
    return errorOfRename != 0 ? failOnce(errorOfRename)
                              : static_cast<int>(::syscall(SYS_rename, from, to));
}

int mkostemp(char* path, int flags)
{
    const int descriptor = ::mkostemps(path, 0, flags);
    std::raise(signalAfterMkostemp);
    return descriptor;
}
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace {

using tarn::tools::OutputFile;
using namespace tarn::tests;
using testing::ElementsAre;
using testing::IsEmpty;

/// Replaces the file @p path. Returns the error of the system call that failed, else 0.
int replace(const std::string& path)
{
    try {
        OutputFile output(path, "program");
        output.sputn("new", 3);
        output.commit();
        return 0;
    } catch (const std::system_error& error) {
        EXPECT_THAT(error.what(), testing::StartsWith(path + ": "));
        return error.code().value();
    }
}

TEST(OutputFile, KeepsTheOldFileIfTheNewOneCannotBeWrittenToDisk)
{
    const std::tuple<int&, int, int> cases[] = {
        {errorOfFsync, EIO, EIO},        {errorOfFsync, EDQUOT, EDQUOT}, {errorOfFsync, EINTR, 0},
        {errorOfFsync, EINVAL, 0},       {errorOfFsync, ENOTSUP, 0},     {errorOfClose, EIO, EIO},
        {errorOfClose, ENOSPC, ENOSPC},  {errorOfWrite, EIO, EIO},       {errorOfWrite, EINTR, 0},
        {errorOfRename, EACCES, EACCES},
    };
    for (const auto& [nextError, error, reported] : cases) {
        SCOPED_TRACE(std::to_string(&nextError - &errorOfClose) + ": " + std::to_string(error));
        const Directory directory;
        writeFile(directory / "file.xml", "old");
        nextError = error;
        EXPECT_EQ(replace(directory / "file.xml"), reported);
        EXPECT_EQ(nextError, 0) << "must have been called";
        EXPECT_EQ(readFile(directory / "file.xml"), reported == 0 ? "new" : "old");
        EXPECT_THAT(directory.names(), ElementsAre("file.xml"));
    }
    errorOfClose = EIO;
    EXPECT_EQ(replace("/dev/null"), EIO);
    EXPECT_EQ(steps.back(), "write") << "written in place";
}

TEST(OutputFile, KeepsWhatAnOrdinaryUserMayNotReplace)
{
    const Directory directory;
    std::filesystem::create_directory(directory / "fixed");
    std::filesystem::create_directory(directory / "closed");
    std::filesystem::create_symlink("loop", directory / "loop");
    std::filesystem::create_symlink("fresh", directory / "link");
    std::filesystem::create_symlink("../old", directory / "fixed/link");
    for (const std::string name : {"old", "read-only", "fixed/old", "closed/old"}) {
        writeFile(directory / name, "old");
        ::chmod((directory / name).c_str(), name == "read-only" ? 0444 : 0666);
    }
    ::chmod((directory / "").c_str(), 0777);
    ::chmod((directory / "fixed").c_str(), 0555);
    ::chmod((directory / "closed").c_str(), 0);
    const std::pair<std::string, int> cases[] = {
        {"old", 0},
        {"new", 0},
        {"link", 0},
        {"fixed/link", 0},
        {"read-only", EACCES},
        {"fixed/old", EACCES},
        {"fixed/new", EACCES},
        {"closed/old", EACCES},
        {"closed/new", EACCES},
        {"old/new", ENOTDIR},
        {"loop", ELOOP},
        {std::string(256, 'x'), ENAMETOOLONG},
    };
    for (const auto& [name, error] : cases) {
        const std::string path = directory / name;
        EXPECT_EQ(asOrdinaryUser([&] { return std::to_string(replace(path)); }),
                  std::to_string(error))
            << name;
    }
    ::chmod((directory / "closed").c_str(), 0777);
    EXPECT_THAT(directory.names(),
                ElementsAre("closed", "fixed", "fresh", "link", "loop", "new", "old", "read-only"));
    for (const std::string name : {"read-only", "fixed/old", "closed/old"}) {
        EXPECT_EQ(readFile(directory / name), "old") << name;
    }
}

TEST(OutputFile, IsNotMadeIfTheInputMayNotBeRead)
{
    const Directory directory;
    tarn::tools::FileOptions options;
    options.input = directory / "input";
    options.output = directory / "output";
    writeFile(options.input, "secret");
    ::chmod((directory / "").c_str(), 0777);
    ::chmod(options.input.c_str(), 0);
    const auto convert = [&] {
        const auto nothing = [](auto, std::ostream&) {};
        return std::to_string(tarn::tools::runProgram(
            "program", [&] { tarn::tools::convertFile("program", options, nothing); }));
    };
    EXPECT_EQ(asOrdinaryUser(convert), "1");
    EXPECT_THAT(directory.names(), ElementsAre("input"));
}

TEST(FileDescriptor, ReadsOnAfterASignal)
{
    static int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const tarn::tools::FileDescriptor input(ends[0]);
    const tarn::tools::FileDescriptor output(ends[1]);
    // The signal interrupts the call that waits for what its handler writes.
    struct sigaction action = {};
    action.sa_handler = [](int) {
        [[maybe_unused]] const ssize_t ignored = ::write(ends[1], "text", 4);
    };
    ::sigaction(SIGALRM, &action, nullptr);
    ::ualarm(20'000, 0);
    char text[9];
    EXPECT_EQ(input.read(text, sizeof text, "pipe"), 4u);
    std::signal(SIGALRM, SIG_DFL);
}

TEST(OutputFile, KeepsPiecesOfAnySizeInTheirOrder)
{
    const Directory directory;
    mostPerWrite = 1000;
    interruptions = 500;
    OutputFile output(directory / "file.xml", "program");
    // What fits exactly, and a byte more than that.
    std::string expected(128 * 1024 - 1, 'x');
    for (std::size_t place = 0; place < expected.size(); place += 4096) {
        const std::string piece = expected.substr(place, 4096);
        output.sputn(piece.data(), static_cast<std::streamsize>(piece.size()));
    }
    output.sputn("yz", 2);
    expected += "yz";
    for (int i = 0; i < 128 * 1024; ++i) {
        output.sputc('c');
        expected += 'c';
    }
    for (int round = 0; round < 20; ++round) {
        for (const std::size_t size : {0, 1, 8191, 8192, 32767, 32768, 65536, 131'072, 250'000}) {
            const std::string piece(size, static_cast<char>('a' + round));
            output.sputn(piece.data(), static_cast<std::streamsize>(size));
            output.sputc('.');
            expected += piece + '.';
        }
    }
    output.commit();
    mostPerWrite = SSIZE_MAX;
    EXPECT_TRUE(readFile(directory / "file.xml") == expected);
}

TEST(OutputFile, WritesTheFileToDiskAndThenItsName)
{
    const Directory directory;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory / "");
    const mode_t mask = ::umask(022);
    std::filesystem::create_directory(directory / "sub");
    std::filesystem::create_symlink("sub/file.xml", directory / "link");
    const auto handler = +[](int) {};
    std::signal(SIGUSR2, handler);
    for (const std::string& path :
         {directory / "file.xml", std::string("file.xml"), directory / "link"}) {
        steps.clear();
        expectedDirectory = directory / (path.ends_with("link") ? "sub" : "");
        EXPECT_EQ(replace(path), 0);
        EXPECT_THAT(steps, ElementsAre("write", "file", "rename", "directory")) << path;
    }
    EXPECT_EQ(::umask(mask), 022u);
    EXPECT_EQ(std::signal(SIGUSR2, SIG_DFL), handler) << "belongs to another";
    std::filesystem::current_path(before);
}

TEST(OutputFile, WritesNothingAgainThatCouldNotBeWritten)
{
    const Directory directory;
    OutputFile output(directory / "file.xml", "program");
    output.sputn("text", 4);
    errorOfWrite = EIO;
    EXPECT_THROW(output.pubsync(), std::system_error);
    output.commit();
    EXPECT_EQ(readFile(directory / "file.xml"), "");
}

TEST(OutputFileDeathTest, RemovesTheFileIfASignalComesAsSoonAsItExistsOrBeforeItHasItsName)
{
    for (const auto& [signal, moment] : {std::pair(SIGINT, &signalAfterMkostemp),
                                         {SIGQUIT, &signalAfterMkostemp},
                                         {SIGRTMIN, &signalBeforeRename}}) {
        const Directory directory;
        std::signal(signal, SIG_DFL); // a shell ignores some for what it runs in the background
        *moment = signal;
        EXPECT_EXIT(replace(directory / "file.xml"), testing::KilledBySignal(signal), "");
        *moment = 0;
        EXPECT_THAT(directory.names(), IsEmpty()) << signal;
    }
}

} // namespace

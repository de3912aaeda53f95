// The output file of a program when a system call fails or a signal comes at a bad time.
#include "support/files.hpp"
#include "tools/common/OutputFile.hpp"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

/// This program defines three functions of the C library itself, which fail or raise a signal if
/// one of these is set.
int errorOfClose = 0;
int errorOfFsync = 0;
int signalAfterMkostemp = 0;

/// What fsync() has been called for: `file` or `directory`.
std::vector<std::string> synced;

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
    return errorOfClose != 0 ? failOnce(errorOfClose) : result;
}

int fsync(int descriptor)
{
    struct stat file = {};
    ::fstat(descriptor, &file);
    synced.push_back(S_ISDIR(file.st_mode) ? "directory" : "file");
    return errorOfFsync != 0 ? failOnce(errorOfFsync)
                             : static_cast<int>(::syscall(SYS_fsync, descriptor));
}

int mkostemp(char* path, int flags)
{
    const int descriptor = ::mkostemps(path, 0, flags);
    if (signalAfterMkostemp != 0) {
        std::raise(signalAfterMkostemp);
    }
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
    const struct
    {
        int& nextError;
        int error;
        int reported;
    } cases[] = {
        {errorOfFsync, EIO, EIO},       {errorOfFsync, EDQUOT, EDQUOT}, {errorOfFsync, EINTR, 0},
        {errorOfFsync, EINVAL, 0},      {errorOfFsync, ENOTSUP, 0},     {errorOfClose, EIO, EIO},
        {errorOfClose, ENOSPC, ENOSPC},
    };
    for (const auto& [nextError, error, reported] : cases) {
        SCOPED_TRACE((&nextError == &errorOfFsync ? "fsync: " : "close: ") + std::to_string(error));
        const Directory directory;
        writeFile(directory / "file.xml", "old");
        nextError = error;
        EXPECT_EQ(replace(directory / "file.xml"), reported);
        EXPECT_EQ(nextError, 0) << "must have been called";
        EXPECT_EQ(readFile(directory / "file.xml"), reported == 0 ? "new" : "old");
        EXPECT_THAT(directory.names(), ElementsAre("file.xml"));
    }
}

TEST(OutputFile, KeepsPiecesOfAnySizeInTheirOrder)
{
    const Directory directory;
    OutputFile output(directory / "file.xml", "program");
    std::string expected;
    for (int round = 0; round < 20; ++round) {
        for (const std::size_t size : {0, 1, 8191, 8192, 32767, 32768, 65536, 131'072, 131'073}) {
            const std::string piece(size, static_cast<char>('a' + round));
            output.sputn(piece.data(), static_cast<std::streamsize>(size));
            output.sputc('.');
            expected += piece + '.';
        }
    }
    output.commit();
    EXPECT_TRUE(readFile(directory / "file.xml") == expected);
}

TEST(OutputFile, WritesTheFileToDiskAndThenItsName)
{
    const Directory directory;
    synced.clear();
    EXPECT_EQ(replace(directory / "file.xml"), 0);
    EXPECT_THAT(synced, ElementsAre("file", "directory"));
}

TEST(OutputFileDeathTest, RemovesTheFileIfASignalComesAsSoonAsItExists)
{
    for (const int signal : {SIGINT, SIGQUIT, SIGRTMIN}) {
        const Directory directory;
        signalAfterMkostemp = signal;
        EXPECT_EXIT(OutputFile(directory / "file.xml", "program"), testing::KilledBySignal(signal),
                    "");
        signalAfterMkostemp = 0;
        EXPECT_THAT(directory.names(), IsEmpty()) << signal;
    }
}

} // namespace

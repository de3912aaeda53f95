#include "tools/common/TemporaryFile.hpp"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <sys/stat.h>

namespace tarn::tools {

namespace {

/// Signals that cannot be handled, that stop or continue a process, and that it ignores by default.
/// All others, real-time signals included, end it by default.
constexpr int UNHANDLED_SIGNALS[] = {SIGKILL, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU,
                                     SIGCONT, SIGCHLD, SIGURG,  SIGWINCH};

/// The file that a signal removes before it ends the process.
std::atomic<const char*> pathToRemove = nullptr;
static_assert(std::atomic<const char*>::is_always_lock_free);

/// Calls only what a signal handler may call.
extern "C" void removeAndDie(int signal)
{
    if (const char* const path = pathToRemove) {
        ::unlink(path);
    }
    // The signal has its default action again, which takes effect when this function returns.
    ::raise(signal);
}

/// Handles @p signal, unless it is ignored or has another handler already.
void handleFatalSignal(int signal)
{
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) != 0 || (action.sa_flags & SA_SIGINFO) != 0 ||
        action.sa_handler != SIG_DFL) {
        return;
    }
    action.sa_handler = removeAndDie;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigfillset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
}

void handleFatalSignals()
{
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        if (std::ranges::find(UNHANDLED_SIGNALS, signal) == std::end(UNHANDLED_SIGNALS)) {
            handleFatalSignal(signal);
        }
    }
}

/// Delays every signal for its lifetime.
class SignalBlock
{
public:
    SignalBlock()
    {
        sigset_t all;
        ::sigfillset(&all);
        ::sigprocmask(SIG_SETMASK, &all, &previous);
    }
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;
    ~SignalBlock() { ::sigprocmask(SIG_SETMASK, &previous, nullptr); }

private:
    sigset_t previous;
};

/// Makes a file. A signal finds either no file or its path in `pathToRemove`.
///
/// @param path a template, which becomes the path.
/// @param name how messages name the file.
FileDescriptor create(std::string& path, const std::string& name)
{
    handleFatalSignals();
    const SignalBlock block;
    FileDescriptor descriptor(::mkostemp(path.data(), O_CLOEXEC));
    if (descriptor.get() < 0) {
        throwSystemError(name);
    }
    pathToRemove = path.c_str();
    return descriptor;
}

std::filesystem::path followLinks(std::filesystem::path path)
{
    while (std::filesystem::is_symlink(path)) {
        path = path.parent_path() / std::filesystem::read_symlink(path);
    }
    return path;
}

/// Makes a change of names in @p directory outlast a crash of the system, where that is possible.
/// The file itself is complete and on disk, so a failure is no error.
void syncDirectory(const std::filesystem::path& directory)
{
    const FileDescriptor descriptor(
        ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ::fsync(descriptor.get());
}

} // namespace

TemporaryFile::TemporaryFile(const std::string& target, mode_t permissions,
                             const std::string& program)
    : name(target), target(followLinks(target)),
      path(std::filesystem::path(this->target).replace_filename('.' + program + "-XXXXXX")),
      descriptor(create(path, name))
{
    // Not every file system has permissions, so a failure is no error.
    ::fchmod(descriptor.get(), permissions);
}

TemporaryFile::~TemporaryFile()
{
    if (!path.empty()) {
        ::unlink(path.c_str());
    }
    pathToRemove = nullptr;
}

void TemporaryFile::replaceTarget()
{
    if (std::rename(path.c_str(), target.c_str()) != 0) {
        throwSystemError(name);
    }
    pathToRemove = nullptr;
    path.clear();
    syncDirectory(std::filesystem::path(target).parent_path());
}

} // namespace tarn::tools

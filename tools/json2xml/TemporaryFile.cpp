#include "tools/json2xml/TemporaryFile.hpp"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

namespace json2xml {

namespace {

constexpr auto NAME_TEMPLATE = ".json2xml-XXXXXX";
constexpr int FATAL_SIGNALS[] = {SIGHUP, SIGINT, SIGTERM};

/// What a fatal signal removes.
std::atomic<const char*> pathToRemove = nullptr;
static_assert(std::atomic<const char*>::is_always_lock_free);

extern "C" void removeAndDie(int signal)
{
    if (const char* const path = pathToRemove) {
        ::unlink(path);
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// A signal that the caller has chosen to ignore stays ignored.
void handleFatalSignals()
{
    for (const int signal : FATAL_SIGNALS) {
        if (std::signal(signal, removeAndDie) == SIG_IGN) {
            std::signal(signal, SIG_IGN);
        }
    }
}

std::filesystem::path followLinks(std::filesystem::path path)
{
    while (std::filesystem::is_symlink(path)) {
        path = path.parent_path() / std::filesystem::read_symlink(path);
    }
    return path;
}

} // namespace

TemporaryFile::TemporaryFile(const std::string& target, mode_t permissions)
    : name(target), target(followLinks(target)),
      path(std::filesystem::path(this->target).replace_filename(NAME_TEMPLATE)),
      descriptor(::mkostemp(path.data(), O_CLOEXEC))
{
    if (descriptor.get() < 0) {
        throwSystemError(name);
    }
    pathToRemove = path.c_str();
    handleFatalSignals();
    // Not every file system has permissions to set.
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
}

} // namespace json2xml

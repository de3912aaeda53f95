// TemporaryFile: a new file that takes the place of another one when it is complete.
#pragma once

#include "tools/common/FileDescriptor.hpp"

#include <string>
#include <sys/types.h>

namespace tarn::tools {

/// An empty file in the directory of the one that it is to replace. If it does not replace that one
/// it is removed: by the destructor, or by a signal that ends the process. Only SIGKILL, which no
/// process can handle, leaves it behind. There is at most one such file at a time.
class TemporaryFile
{
public:
    /// Makes the file, and from then on handles signals; one that the process ignores stays
    /// ignored.
    ///
    /// @param target the file to replace, which need not exist. A symbolic link is followed.
    /// @param permissions those of the new file.
    /// @param program the name of the program, with which the file's name begins.
    TemporaryFile(const std::string& target, mode_t permissions, const std::string& program);

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    ~TemporaryFile();

    /// Hands over the descriptor for writing the file.
    FileDescriptor takeDescriptor() { return std::move(descriptor); }

    /// Gives the file the target's name. What has been written should be on disk before: else a
    /// crash of the system may leave an empty file under that name.
    void replaceTarget();

private:
    /// How messages name the target.
    std::string name;
    std::string target;
    /// Empty once the file has the target's name.
    std::string path;
    FileDescriptor descriptor;
};

} // namespace tarn::tools

// TemporaryFile: a new file that takes the place of another one when it is complete.
#pragma once

#include "tools/json2xml/FileDescriptor.hpp"

#include <string>
#include <sys/types.h>

namespace json2xml {

/// An empty file beside the one that it is to replace, removed unless it does so; by a fatal signal
/// too. There is at most one at a time.
class TemporaryFile
{
public:
    /// @param target the file to replace, which need not exist. A symbolic link is followed.
    /// @param permissions those of the new file.
    TemporaryFile(const std::string& target, mode_t permissions);

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    ~TemporaryFile();

    /// Hands over the descriptor for writing the file.
    FileDescriptor takeDescriptor() { return std::move(descriptor); }

    /// Gives the file the target's name.
    void replaceTarget();

private:
    /// How messages name the target.
    std::string name;
    std::string target;
    /// Empty once the file has the target's name.
    std::string path;
    FileDescriptor descriptor;
};

} // namespace json2xml

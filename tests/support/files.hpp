// Files that a test makes and removes.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarn::tests {

/// A directory that goes away with all that is in it.
class Directory
{
public:
    Directory()
    {
        std::string name = std::filesystem::temp_directory_path() / "tarn-test-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("cannot make " + name);
        }
        path = name;
    }
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;
    ~Directory() { std::filesystem::remove_all(path); }

    std::string operator/(const std::string& name) const { return path / name; }

    std::vector<std::string> names() const
    {
        std::vector<std::string> all;
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            all.push_back(entry.path().filename());
        }
        std::ranges::sort(all);
        return all;
    }

private:
    std::filesystem::path path;
};

inline std::string readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

} // namespace tarn::tests

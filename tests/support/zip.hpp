// Zip archives made byte by byte, so that a test can put anything into them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>
#include <zlib.h>

namespace tarn::tests {

/// An entry without compression, and what the archive claims of it instead of the truth.
struct ZipEntry
{
    std::string name;
    std::string contents;
    std::optional<std::uint32_t> claimedSize = {};
    std::optional<std::uint32_t> claimedChecksum = {};
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
};

namespace detail {

/// @p value as @p size bytes, the lowest first.
inline std::string bytesOf(std::uint64_t value, int size)
{
    std::string bytes;
    for (int i = 0; i < size; ++i) {
        bytes += static_cast<char>(value);
        value >>= 8;
    }
    return bytes;
}

/// What the local header and the directory say of @p entry alike.
inline std::string descriptionOf(const ZipEntry& entry)
{
    const auto* const data = reinterpret_cast<const Bytef*>(entry.contents.data());
    const auto size = static_cast<std::uint32_t>(entry.contents.size());
    const auto checksum = static_cast<std::uint32_t>(crc32(0, data, size));
    constexpr int VERSION = 20;
    return bytesOf(VERSION, 2) + bytesOf(entry.flags, 2) + bytesOf(entry.method, 2) +
           bytesOf(0, 4) + bytesOf(entry.claimedChecksum.value_or(checksum), 4) + bytesOf(size, 4) +
           bytesOf(entry.claimedSize.value_or(size), 4) + bytesOf(entry.name.size(), 2) +
           bytesOf(0, 2);
}

} // namespace detail

/// @param claimedEntries the number of entries that the archive claims, if not the truth.
inline std::string zip(const std::vector<ZipEntry>& entries,
                       std::optional<std::uint16_t> claimedEntries = {})
{
    using detail::bytesOf;
    constexpr std::uint32_t ENTRY_SIGNATURE = 0x04034B50;
    constexpr std::uint32_t DIRECTORY_SIGNATURE = 0x02014B50;
    constexpr std::uint32_t END_SIGNATURE = 0x06054B50;
    std::string archive;
    std::string directory;
    for (const ZipEntry& entry : entries) {
        constexpr int MADE_BY = 20;
        const std::string description = detail::descriptionOf(entry);
        directory += bytesOf(DIRECTORY_SIGNATURE, 4) + bytesOf(MADE_BY, 2) + description +
                     bytesOf(0, 10) + bytesOf(archive.size(), 4) + entry.name;
        archive += bytesOf(ENTRY_SIGNATURE, 4) + description + entry.name + entry.contents;
    }
    const auto count = claimedEntries.value_or(static_cast<std::uint16_t>(entries.size()));
    return archive + directory + bytesOf(END_SIGNATURE, 4) + bytesOf(0, 4) + bytesOf(count, 2) +
           bytesOf(count, 2) + bytesOf(directory.size(), 4) + bytesOf(archive.size(), 4) +
           bytesOf(0, 2);
}

/// What an archive whose sizes need 64 bits ends with.
inline const std::string ZIP64_END =
    "PK\5\6" + std::string(4, '\0') + std::string(12, '\xFF') + std::string(2, '\0');

/// @p archive, of one entry, with sizes of 64 bits, although it does not need them.
///
/// @param misplaced how far the locator leads behind the end that it should lead to.
inline std::string zip64(std::string archive, std::uint64_t misplaced = 0)
{
    using detail::bytesOf;
    const std::string end = archive.substr(archive.size() - ZIP64_END.size());
    archive.resize(archive.size() - end.size());
    return archive + "PK\6\6" + bytesOf(44, 8) + bytesOf(45, 2) + bytesOf(45, 2) + bytesOf(0, 8) +
           bytesOf(1, 8) + bytesOf(1, 8) + end.substr(12, 4) + bytesOf(0, 4) + end.substr(16, 4) +
           bytesOf(0, 4) + "PK\6\7" + bytesOf(0, 4) + bytesOf(archive.size() + misplaced, 8) +
           bytesOf(1, 4) + ZIP64_END;
}

/// An archive of one bundle.
inline std::string bundleZip(const std::string& name, const std::string& version = "1.0")
{
    return zip({{name + "/manifest.json", R"({"bundle.symbolic_name":")" + name +
                                              R"(","bundle.version":")" + version + "\"}"}});
}

} // namespace tarn::tests

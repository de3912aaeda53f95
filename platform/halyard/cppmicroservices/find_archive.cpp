#include "halyard/cppmicroservices/find_archive.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <elf.h>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace halyard::cppmicroservices {

namespace {

using namespace std::string_view_literals;

// The signatures of the parts of an archive, by PKWARE's specification of the format.
constexpr std::string_view LOCAL_HEADER = "PK\3\4"sv;
constexpr std::string_view DIRECTORY_ENTRY = "PK\1\2"sv;
constexpr std::string_view DIRECTORY_END = "PK\5\6"sv;
constexpr std::string_view DIRECTORY_END_LOCATOR_64 = "PK\6\7"sv;

/// What an archive ends with, after DIRECTORY_END. Little-endian, as every number in an archive.
struct [[gnu::packed]] directory_end
{
    char signature[4];
    std::uint16_t disk;
    std::uint16_t directory_disk;
    std::uint16_t entries_on_disk;
    std::uint16_t entries;
    std::uint32_t directory_size;
    std::uint32_t directory_offset;
    std::uint16_t comment_size;
};

constexpr std::size_t LOCATOR_64_SIZE = 20;
constexpr std::size_t LONGEST_COMMENT = 0xFFFF;

constexpr char RESOURCE_SECTION[] = ".us_resources";

template <class Record>
bool read_record(const readable_file& file, std::uint64_t offset, Record& record)
{
    return file.read(offset, &record, sizeof record) == sizeof record;
}

bool stands_at(const readable_file& file, std::uint64_t offset, std::string_view signature)
{
    char bytes[4];
    return read_record(file, offset, bytes) && std::string_view(bytes, sizeof bytes) == signature;
}

bool lies_in(const readable_file& file, std::uint64_t offset, std::uint64_t size)
{
    return offset <= file.size() && size <= file.size() - offset;
}

/// Whether the bytes at @p offset, which begin with the signature of an archive's end, are one:
/// they end the file, or the directory stands before them, or the locator of an end with 64 bits
/// does, which an archive needs for a single number that is too large. The signature alone is not
/// enough, since programs that handle archives contain it.
bool is_directory_end(const readable_file& file, std::uint64_t offset, const directory_end& end)
{
    const std::uint64_t behind = file.size() - offset - sizeof end;
    if (end.comment_size >= behind) {
        return end.comment_size == behind;
    }
    return (offset >= LOCATOR_64_SIZE &&
            stands_at(file, offset - LOCATOR_64_SIZE, DIRECTORY_END_LOCATOR_64)) ||
           (end.directory_size <= offset &&
            stands_at(file, offset - end.directory_size, DIRECTORY_ENTRY));
}

/// Finds the last end of an archive's directory and returns where it ends, without the comment that
/// may follow: minizip does not find an end that is followed by the longest one.
std::optional<std::uint64_t> find_end(const readable_file& file)
{
    const std::uint64_t tail_size =
        std::min<std::uint64_t>(file.size(), sizeof(directory_end) + LONGEST_COMMENT);
    const std::uint64_t tail_offset = file.size() - tail_size;
    std::vector<char> tail(tail_size);
    tail.resize(file.read(tail_offset, tail.data(), tail.size()));
    std::string_view unsearched(tail.data(), tail.size());
    for (;;) {
        const std::size_t found = unsearched.rfind(DIRECTORY_END);
        if (found == std::string_view::npos) {
            return std::nullopt;
        }
        directory_end end;
        if (tail.size() - found >= sizeof end) {
            std::memcpy(&end, &tail[found], sizeof end);
            if (is_directory_end(file, tail_offset + found, end)) {
                return tail_offset + found + sizeof end;
            }
        }
        unsearched.remove_suffix(unsearched.size() - found);
    }
}

struct object_layout
{
    /// The section with the archive; nothing if there is none.
    std::optional<byte_range> resources;
    /// Where the object file ends, and something else may follow.
    std::uint64_t end;
};

/// @return nothing if @p file is not a whole object file for the systems that this library runs on.
std::optional<object_layout> read_object_layout(const readable_file& file)
{
    Elf64_Ehdr header;
    if (!read_record(file, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != ELFDATA2LSB ||
        header.e_shentsize != sizeof(Elf64_Shdr) || header.e_shstrndx >= header.e_shnum) {
        return std::nullopt;
    }
    std::vector<Elf64_Shdr> sections(header.e_shnum);
    const std::size_t table_size = sections.size() * sizeof(Elf64_Shdr);
    if (!lies_in(file, header.e_shoff, table_size) ||
        file.read(header.e_shoff, sections.data(), table_size) != table_size) {
        return std::nullopt;
    }
    const Elf64_Shdr& names = sections[header.e_shstrndx];
    object_layout layout{std::nullopt, header.e_shoff + table_size};
    for (const Elf64_Shdr& section : sections) {
        if (section.sh_type == SHT_NULL || section.sh_type == SHT_NOBITS || section.sh_size == 0 ||
            !lies_in(file, section.sh_offset, section.sh_size)) {
            continue;
        }
        layout.end = std::max(layout.end, section.sh_offset + section.sh_size);
        char name[sizeof RESOURCE_SECTION];
        if (lies_in(file, names.sh_offset, section.sh_name + sizeof name) &&
            read_record(file, names.sh_offset + section.sh_name, name) &&
            std::memcmp(name, RESOURCE_SECTION, sizeof name) == 0) {
            layout.resources = {section.sh_offset, section.sh_offset + section.sh_size};
        }
    }
    return layout;
}

} // namespace

std::optional<byte_range> find_archive(const readable_file& file)
{
    const std::optional<object_layout> object = read_object_layout(file);
    if (object && object->resources) {
        return object->resources;
    }
    if (const std::optional<std::uint64_t> end = find_end(file)) {
        // An archive that begins with its end is empty.
        return stands_at(file, 0, DIRECTORY_END) ? std::nullopt
                                                 : std::optional(byte_range{0, *end});
    }
    if (stands_at(file, object ? object->end : 0, LOCAL_HEADER)) {
        throw std::runtime_error("the archive is cut short");
    }
    return std::nullopt;
}

} // namespace halyard::cppmicroservices

// A text that lies directly beside a page that cannot be touched, so that a kernel which reads or
// writes too far is caught.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <string_view>

namespace tarn::tests {

class GuardedText
{
public:
    enum class Guard
    {
        Before,
        After
    };

    explicit GuardedText(std::u16string_view text, Guard guard = Guard::After)
        : page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / sizeof(char16_t)),
          room((text.size() / page + 1) * page),
          mapping(static_cast<char16_t*>(
              mmap(nullptr, mappingSize(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
          units(mapping + page + (guard == Guard::After ? room - text.size() : 0)),
          length(text.size())
    {
        if (mapping == MAP_FAILED ||
            mprotect(mapping + page, room * sizeof(char16_t), PROT_READ | PROT_WRITE) != 0) {
            throw std::bad_alloc();
        }
        std::ranges::copy(text, units);
    }
    GuardedText(const GuardedText&) = delete;
    GuardedText& operator=(const GuardedText&) = delete;
    ~GuardedText() { munmap(mapping, mappingSize()); }

    std::u16string_view view() const { return {units, length}; }
    char16_t* begin() { return units; }
    char16_t* end() { return units + length; }

private:
    std::size_t mappingSize() const { return (room + 2 * page) * sizeof(char16_t); }

    // In code units.
    const std::size_t page;
    const std::size_t room;
    char16_t* const mapping;
    char16_t* const units;
    const std::size_t length;
};

} // namespace tarn::tests

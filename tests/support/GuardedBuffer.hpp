// A text that lies directly beside a page that cannot be touched, so that a kernel which reads or
// writes too far is caught.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <new>
#include <string_view>

namespace tarn::tests {

template <class Unit>
class GuardedBuffer
{
public:
    static GuardedBuffer endingAtGuard(std::basic_string_view<Unit> text)
    {
        return GuardedBuffer(text, pageSize() * textPages(text) - text.size() * sizeof(Unit));
    }

    static GuardedBuffer beginningAtGuard(std::basic_string_view<Unit> text)
    {
        return GuardedBuffer(text, 0);
    }

    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;
    ~GuardedBuffer() { munmap(mapping, mappingSize); }

    std::basic_string_view<Unit> view() const { return {units, length}; }
    Unit* data() { return units; }

private:
    static std::size_t pageSize() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

    static std::size_t textPages(std::basic_string_view<Unit> text)
    {
        return text.size() * sizeof(Unit) / pageSize() + 1;
    }

    GuardedBuffer(std::basic_string_view<Unit> text, std::size_t offset)
        : mappingSize(pageSize() * (textPages(text) + 2)), length(text.size())
    {
        mapping = static_cast<char*>(
            mmap(nullptr, mappingSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (mapping == MAP_FAILED || mprotect(mapping + pageSize(), pageSize() * textPages(text),
                                              PROT_READ | PROT_WRITE) != 0) {
            throw std::bad_alloc();
        }
        units = reinterpret_cast<Unit*>(mapping + pageSize() + offset);
        std::memcpy(units, text.data(), length * sizeof(Unit));
    }

    std::size_t mappingSize;
    char* mapping;
    Unit* units;
    std::size_t length;
};

} // namespace tarn::tests

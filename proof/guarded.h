#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>

/// Pages, two if no more are asked for, between two that cannot be read: whoever looks at another
/// page than the text's dies.
template <class Unit>
class GuardedPages {
public:
    explicit GuardedPages(std::size_t nUnits = 0)
        : bytes_((nUnits * sizeof(Unit) / kPage + 2) * kPage) {
        void* const pages =
            mmap(nullptr, bytes_ + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) {
            throw std::bad_alloc();
        }
        pages_ = static_cast<char*>(pages);
        if (mprotect(pages_ + kPage, bytes_, PROT_READ | PROT_WRITE) != 0) {
            throw std::bad_alloc();
        }
    }
    ~GuardedPages() { munmap(pages_, bytes_ + 2 * kPage); }
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    /// The text with its terminator, the first or the last of them.
    Unit* At(bool bEnd, const std::basic_string<Unit>& text) {
        return Put(text.c_str(), text.size() + 1, bEnd);
    }

    /// The same of units that nothing terminates.
    Unit* Put(const Unit* units, std::size_t nUnits, bool bEnd) {
        auto* const first = reinterpret_cast<Unit*>(pages_ + kPage);
        return std::copy_n(units, nUnits, bEnd ? first + bytes_ / sizeof(Unit) - nUnits : first) -
               nUnits;
    }

private:
    static inline const auto kPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

    const std::size_t bytes_;
    char* pages_;
};

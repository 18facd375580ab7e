#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>

/// Two pages between two that cannot be read: whoever looks at another page than the text's dies.
template <class Unit>
class GuardedPages {
public:
    GuardedPages() {
        void* const pages = mmap(nullptr, 4 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) {
            throw std::bad_alloc();
        }
        pages_ = static_cast<char*>(pages);
        if (mprotect(pages_ + kPage, 2 * kPage, PROT_READ | PROT_WRITE) != 0) {
            throw std::bad_alloc();
        }
    }
    ~GuardedPages() { munmap(pages_, 4 * kPage); }
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    /// The text with its terminator, which is the last unit in front of the guard.
    Unit* AtEnd(const std::basic_string<Unit>& text) { return Put(text, End() - text.size() - 1); }

    /// The text with its terminator, `before` units of it in the first page.
    Unit* AcrossPages(const std::basic_string<Unit>& text, std::size_t before) {
        return Put(text, End() - kPage / sizeof(Unit) - before);
    }

private:
    static inline const auto kPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

    Unit* End() { return reinterpret_cast<Unit*>(pages_ + 3 * kPage); }

    static Unit* Put(const std::basic_string<Unit>& text, Unit* place) {
        std::copy_n(text.c_str(), text.size() + 1, place);
        return place;
    }

    char* pages_;
};

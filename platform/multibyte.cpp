#include "multibyte.h"

#include <ctype.h>
#include <wchar.h>

#include <algorithm>
#include <climits>
#include <cstring>

#include "scan.h"
#include "utf8_walk.h"

namespace platform {
namespace {

bool is_ascii(unsigned char byte) {
    return byte < 0x80;
}

std::size_t locale_length(const char* p) {
    mbstate_t state{};
    // More than the longest character of any codeset; what follows a NUL is not looked at.
    const std::size_t length = mbrlen(p, strnlen(p, MB_LEN_MAX), &state);
    return length == 0 || length > MB_LEN_MAX ? 1 : length;
}

/// Bytes of a character within a range, where NUL is one of one byte.
std::size_t step(const CodePage& page, const char* p) {
    return *p == '\0' ? 1 : _mbclen(page, p);
}

/// A walk from a boundary that is asked, from left to right, whether places are boundaries. It
/// never looks at a byte twice.
class BoundaryWalk {
public:
    BoundaryWalk(const CodePage& page, const char* first) : page_(page), at_(first) {}

    bool Reaches(const char* p) {
        switch (page_.grouping) {
            case Grouping::SingleByte:
                return true;
            case Grouping::Utf8:
                return character_start(page_, at_, p, p + 1) == p;
            case Grouping::DoubleByte:
                return ReachesByParity(p);
            case Grouping::Other:
                break;
        }
        while (at_ < p) {
            at_ += step(page_, at_);
        }
        return at_ == p;
    }

private:
    /// The byte behind a byte that is no lead is a boundary, and from there leads pair off.
    bool ReachesByParity(const char* p) {
        const char* run = p;
        while (run > at_ && page_.IsLead(static_cast<unsigned char>(run[-1]))) {
            --run;
        }
        // A run that reaches back to a known boundary starts there or, had a pair ended behind it,
        // one further: both are told by the place itself.
        const bool isBoundary = (p - std::max(run, at_)) % 2 == 0;
        if (isBoundary) {
            at_ = p;
        }
        return isBoundary;
    }

    const CodePage& page_;
    const char* at_;
};

/// Whether `test` holds for the code of a character of one byte at `p`.
bool is_single(const CodePage& page, const char* p) {
    return page.grouping == Grouping::SingleByte || step(page, p) == 1;
}

/// Whether the character at `p`, of `length` bytes, is one of the terminated set.
bool set_has_character(const CodePage& page, const char* set, const char* p, std::size_t length) {
    while (*set != '\0') {
        const std::size_t step = _mbclen(page, set);
        if (step == length && std::memcmp(set, p, length) == 0) {
            return true;
        }
        set += step;
    }
    return false;
}

/// First character of the range whose membership in the set is `wanted`, or `last`.
const char* find_member(const CodePage& page, const char* first, const char* last, const char* set,
                        bool wanted) {
    const ByteSet bytes(page, set);
    if (page.grouping == Grouping::SingleByte) {
        return std::find_if(first, last, [&](char ch) { return bytes.Has(ch) == wanted; });
    }
    while (first < last) {
        if (is_ascii(static_cast<unsigned char>(*first))) {
            if (bytes.Has(*first) == wanted) {
                return first;
            }
            ++first;
            continue;
        }
        const std::size_t length = _mbclen(page, first);
        const bool has =
            length == 1 ? bytes.Has(*first) : set_has_character(page, set, first, length);
        if (has == wanted) {
            return first;
        }
        first += length;
    }
    return last;
}

}  // namespace

const char* _mbschr(const CodePage& page, const char* first, const char* last,
                    unsigned char byte) noexcept {
    const char* hit = find_unit(first, last, static_cast<char>(byte));
    if (page.grouping == Grouping::SingleByte ||
        (page.grouping == Grouping::Utf8 && is_ascii(byte))) {
        return hit == last ? nullptr : hit;
    }
    BoundaryWalk walk(page, first);
    while (hit != last && !(walk.Reaches(hit) && is_single(page, hit))) {
        hit = find_unit(hit + 1, last, static_cast<char>(byte));
    }
    return hit == last ? nullptr : hit;
}

const char* _mbsrchr(const CodePage& page, const char* first, const char* last,
                     unsigned char byte) noexcept {
    const char* hit = find_last_unit(first, last, static_cast<char>(byte));
    if (page.grouping == Grouping::Other) {
        const char* found = nullptr;
        for (const char* p = first; p < last; p += step(page, p)) {
            found = static_cast<unsigned char>(*p) == byte && step(page, p) == 1 ? p : found;
        }
        return found;
    }
    while (hit != nullptr &&
           !(character_start(page, first, hit, last) == hit && is_single(page, hit))) {
        hit = find_last_unit(first, hit, static_cast<char>(byte));
    }
    return hit;
}

const char* _mbsstr(const CodePage& page, const char* first, const char* last, const char* text,
                    std::size_t count) noexcept {
    const char* hit = find_text(first, last, text, count);
    if (page.grouping == Grouping::SingleByte || hit == nullptr || count == 0 ||
        (page.grouping == Grouping::Utf8 && is_ascii(static_cast<unsigned char>(*text)))) {
        return hit;
    }
    BoundaryWalk walk(page, first);
    while (hit != nullptr && !walk.Reaches(hit)) {
        hit = find_text(hit + 1, last, text, count);
    }
    return hit;
}

const char* _mbspbrk(const CodePage& page, const char* first, const char* last,
                     const char* set) noexcept {
    const char* hit = find_member(page, first, last, set, true);
    return hit == last ? nullptr : hit;
}

std::size_t _mbsspn(const CodePage& page, const char* first, const char* last,
                    const char* set) noexcept {
    return static_cast<std::size_t>(find_member(page, first, last, set, false) - first);
}

std::size_t _mbscspn(const CodePage& page, const char* first, const char* last,
                     const char* set) noexcept {
    return static_cast<std::size_t>(find_member(page, first, last, set, true) - first);
}

std::size_t _mbclen(const CodePage& page, const char* p) noexcept {
    switch (page.grouping) {
        case Grouping::SingleByte:
            return 1;
        case Grouping::Utf8:
            return utf8_length(p);
        case Grouping::DoubleByte:
            return page.IsLead(static_cast<unsigned char>(*p)) && p[1] != '\0' ? 2 : 1;
        case Grouping::Other:
            break;
    }
    return is_ascii(static_cast<unsigned char>(*p)) ? 1 : locale_length(p);
}

const char* _mbsinc(const CodePage& page, const char* p) noexcept {
    return *p == '\0' ? p : p + _mbclen(page, p);
}

int _mbsnbcmp(const char* left, const char* right, std::size_t count) noexcept {
    return std::strncmp(left, right, count);
}

bool _ismbcspace(unsigned int value) noexcept {
    return value < 0x100 && ((*__ctype_b_loc())[value] & _ISspace) != 0;
}

bool _ismbcdigit(unsigned int value) noexcept {
    return value >= '0' && value <= '9';
}

ByteSet::ByteSet(const CodePage& page, const char* set) noexcept : has() {
    while (*set != '\0') {
        const std::size_t length = _mbclen(page, set);
        if (length == 1) {
            has[static_cast<unsigned char>(*set)] = true;
        }
        set += length;
    }
}

const char* character_start(const CodePage& page, const char* first, const char* p,
                            const char* last) noexcept {
    static_cast<void>(last);
    switch (page.grouping) {
        case Grouping::SingleByte:
            return p;
        case Grouping::Utf8:
            for (std::size_t back = std::min<std::size_t>(3, static_cast<std::size_t>(p - first));
                 back > 0; --back) {
                if (utf8_length(p - back) > back) {
                    return p - back;
                }
            }
            return p;
        case Grouping::DoubleByte: {
            const char* run = p;
            while (run > first && page.IsLead(static_cast<unsigned char>(run[-1]))) {
                --run;
            }
            return (p - run) % 2 == 0 || *p == '\0' ? p : p - 1;
        }
        case Grouping::Other:
            break;
    }
    while (first < p) {
        const std::size_t length = step(page, first);
        if (first + length > p) {
            break;
        }
        first += length;
    }
    return first;
}

const char* trailing_run(const CodePage& page, const char* first, const char* last,
                         const bool* test) noexcept {
    const auto passes = [test](const char* p) { return test[static_cast<unsigned char>(*p)]; };
    const char* run = last;
    if (page.grouping == Grouping::SingleByte || page.grouping == Grouping::Utf8) {
        while (run != first) {
            const char* start = character_start(page, first, run - 1, last);
            if (!passes(start)) {
                break;
            }
            run = start;
        }
        return run;
    }
    run = nullptr;
    for (const char* p = first; p < last; p += step(page, p)) {
        if (!passes(p)) {
            run = nullptr;
        } else if (run == nullptr) {
            run = p;
        }
    }
    return run == nullptr ? last : run;
}

}  // namespace platform

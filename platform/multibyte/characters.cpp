#include "multibyte/characters.h"

#include <wchar.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <cstring>

#include "lanes/ascii_runs.h"
#include "lanes/byte_ranges.h"
#include "pages/utf8_walk.h"
#include "search/member_scan.h"
#include "search/scan.h"
#include "system_errors.h"

namespace platform {
namespace {

// A set of more bytes than this is worth a table where there is much text to look at.
constexpr std::size_t kSmallSet = 6;
constexpr std::ptrdiff_t kLongText = 512;

// How many bytes the character at `p` has, of which `room` may be read.
std::size_t length_by_locale(const char* p, std::size_t room) {
    const ErrnoKeeper keeper;
    mbstate_t state{};
    const std::size_t length =
        mbrlen(p, strnlen(p, std::min<std::size_t>(room, MB_LEN_MAX)), &state);
    return length == 0 || length > MB_LEN_MAX ? 1 : length;
}

std::size_t utf8_length_in_range(const char* p, const char* last) {
    if (last - p >= 4) {
        return utf8_length(p);
    }
    char rest[4] = {};
    std::memcpy(rest, p, static_cast<std::size_t>(last - p));
    return utf8_length(rest);
}

// Bytes of the character at `p`, which is in front of `last`. Nothing from there on is read.
std::size_t length_in_range(const CodePage& page, const char* p, const char* last) {
    if (is_ascii(*p)) {
        return 1;
    }
    switch (page.grouping) {
        case Grouping::Utf8:
            return utf8_length_in_range(p, last);
        case Grouping::DoubleByte:
            return page.IsLead(static_cast<unsigned char>(*p)) && last - p > 1 && p[1] != '\0' ? 2
                                                                                               : 1;
        case Grouping::SingleByte:
        case Grouping::Other:
            break;
    }
    return length_by_locale(p, static_cast<std::size_t>(last - p));
}

// Start of the run of lead bytes directly in front of `p`, not in front of `first`.
const char* lead_run(const CodePage& page, const char* first, const char* p) {
    while (p != first && page.IsLead(static_cast<unsigned char>(p[-1]))) {
        --p;
    }
    return p;
}

// A byte that is no lead byte ends its character, so behind it lead bytes pair off. `run` is the
// start of the run of lead bytes in front of `p`, or a boundary inside that run.
const char* start_by_parity(const char* run, const char* p) {
    return (p - run) % 2 == 0 || *p == '\0' ? p : p - 1;
}

const char* utf8_start(const char* first, const char* p, const char* last) {
    if (!is_utf8_continuation(*p)) {
        return p;
    }
    for (std::ptrdiff_t back = 1; back <= 3 && back <= p - first; ++back) {
        if (!is_utf8_continuation(p[-back])) {
            const auto length = static_cast<std::ptrdiff_t>(utf8_length_in_range(p - back, last));
            return length > back ? p - back : p;
        }
    }
    return p;
}

// Whether each byte of this value starts a character.
bool starts_anywhere(const CodePage& page, char byte) {
    return page.grouping == Grouping::SingleByte ||
           (page.grouping == Grouping::Utf8 && !is_utf8_continuation(byte));
}

const char* last_by_walk(const CodePage& page, const char* first, const char* last, char byte) {
    const char* const end = find_last_unit(first, last, byte);
    const char* found = nullptr;
    for (const char* p = first; end != nullptr && p <= end;) {
        const std::size_t length = length_in_range(page, p, last);
        found = *p == byte && length == 1 ? p : found;
        p += length;
    }
    return found;
}

// The characters of a terminated set, some of them longer than a byte.
class CharacterSet {
public:
    CharacterSet(const CodePage& page, const char* set)
        : page_(page), set_(set), bytes_(page, set) {
        for (const char* p = set; *p != '\0';) {
            const std::size_t length = _mbclen(page, p);
            p += length;
            if (length > 1) {
                endings_[Ending(p[-1]) / 64] |= Bit(p[-1]);
            }
        }
    }

    bool Has(const char* character, std::size_t length) const {
        if (length == 1) {
            return bytes_.Has(*character);
        }
        const char ending = character[length - 1];
        return (endings_[Ending(ending) / 64] & Bit(ending)) != 0 && HasLong(character, length);
    }

private:
    bool HasLong(const char* character, std::size_t length) const {
        for (const char* p = set_; *p != '\0';) {
            const std::size_t next = _mbclen(page_, p);
            if (next == length && std::memcmp(p, character, length) == 0) {
                return true;
            }
            p += next;
        }
        return false;
    }

    static std::size_t Ending(char byte) { return static_cast<unsigned char>(byte); }
    static std::uint64_t Bit(char byte) { return std::uint64_t{1} << Ending(byte) % 64; }

    const CodePage& page_;
    const char* set_;
    ByteSet bytes_;
    // Last bytes of the longer characters: they tell most characters of a text from the set's.
    std::uint64_t endings_[4] = {};
};

// The first place that `next` finds and where a character starts, or `last`. Where ASCII or each
// byte is a character wherever it stands, the first member and the first other are such a place.
template <class Next>
const char* first_on_boundary(const CodePage& page, const char* first, const char* last,
                              Next next) {
    if (page.grouping == Grouping::SingleByte || page.grouping == Grouping::Utf8) {
        return next(first);
    }
    Boundaries boundaries(page, first, last);
    const char* p = next(first);
    while (p != last && !boundaries.Has(p)) {
        p = next(p + 1);
    }
    return p;
}

const char* find_by_walk(const CodePage& page, const char* first, const char* last, const char* set,
                         bool wanted) {
    const CharacterSet characters(page, set);
    for (const char* p = first; p != last;) {
        const std::size_t length = length_in_range(page, p, last);
        if (characters.Has(p, length) == wanted) {
            return p;
        }
        p += length;
    }
    return last;
}

// The first character that is in the set or is not, as `wanted` says, or `last`.
const char* find_by_set(const CodePage& page, const char* first, const char* last, const char* set,
                        bool wanted) {
    std::size_t count = 0;
    bool isAscii = true;
    for (; set[count] != '\0'; ++count) {
        isAscii &= is_ascii(set[count]);
    }
    if (!isAscii && page.grouping != Grouping::SingleByte) {
        return find_by_walk(page, first, last, set, wanted);
    }
    // A byte of the set can be inside a character. A byte that is not, in front of which there are
    // only such as are, starts one: so then the boundary is known beforehand.
    if (count <= kSmallSet || (count <= kFewBytes && last - first < kLongText)) {
        return first_on_boundary(page, first, last, [=](const char* p) {
            return find_any_of(p, last, set, count, wanted);
        });
    }
    const ByteSet bytes(page, set);
    return first_on_boundary(
        page, first, last, [&](const char* p) { return find_member(p, last, bytes.has, wanted); });
}

const char* run_of_single_bytes(const char* first, const char* last, const bool* test) {
    while (last != first && test[static_cast<unsigned char>(last[-1])]) {
        --last;
    }
    return last;
}

const char* run_in_utf8(const char* first, const char* last, const bool* test) {
    const char* const end = last;
    while (last != first) {
        const char* start = utf8_start(first, last - 1, end);
        if (!test[static_cast<unsigned char>(*start)]) {
            break;
        }
        last = start;
    }
    return last;
}

const char* run_of_double_bytes(const CodePage& page, const char* first, const char* last,
                                const bool* test) {
    const char* leads = last;  // where the last run of lead bytes that was met starts
    while (last != first) {
        const char* const p = last - 1;
        leads = leads < p ? leads : lead_run(page, first, p);
        const char* start = start_by_parity(leads, p);
        if (!test[static_cast<unsigned char>(*start)]) {
            break;
        }
        last = start;
    }
    return last;
}

const char* run_by_walk(const CodePage& page, const char* first, const char* last,
                        const bool* test) {
    const char* run = last;
    for (const char* p = first; p != last;) {
        if (!test[static_cast<unsigned char>(*p)]) {
            run = last;
        } else if (run == last) {
            run = p;
        }
        p += length_in_range(page, p, last);
    }
    return run;
}

}  // namespace

bool Boundaries::Has(const char* p) noexcept {
    switch (page_.grouping) {
        case Grouping::Utf8:
            return utf8_start(first_, p, last_) == p;
        case Grouping::DoubleByte: {
            const bool isStart = start_by_parity(lead_run(page_, known_, p), p) == p;
            known_ = isStart ? p : p + 1;
            return isStart;
        }
        case Grouping::SingleByte:
        case Grouping::Other:
            break;
    }
    while (known_ < p) {
        known_ += length_in_range(page_, known_, last_);
    }
    return known_ == p;
}

const char* _mbschr(const CodePage& page, const char* first, const char* last,
                    unsigned char byte) noexcept {
    const char unit = static_cast<char>(byte);
    if (stands_alone(page, byte)) {
        return static_cast<const char*>(
            std::memchr(first, byte, static_cast<std::size_t>(last - first)));
    }
    const char* hit = find_unit(first, last, unit);
    Boundaries boundaries(page, first, last);
    while (hit != last && !(boundaries.Has(hit) && length_in_range(page, hit, last) == 1)) {
        hit = find_unit(hit + 1, last, unit);
    }
    return hit != last ? hit : nullptr;
}

const char* _mbsrchr(const CodePage& page, const char* first, const char* last,
                     unsigned char byte) noexcept {
    const char unit = static_cast<char>(byte);
    if (page.grouping == Grouping::Other) {
        return last_by_walk(page, first, last, unit);
    }
    const char* hit = find_last_unit(first, last, unit);
    // The length first: it keeps the runs of lead bytes that are walked back over apart.
    while (hit != nullptr && !(length_in_range(page, hit, last) == 1 &&
                               character_start(page, first, hit, last) == hit)) {
        hit = find_last_unit(first, hit, unit);
    }
    return hit;
}

const char* _mbsstr(const CodePage& page, const char* first, const char* last, const char* text,
                    std::size_t count) noexcept {
    if (count == 0 || starts_anywhere(page, *text)) {
        return find_text(first, last, text, count);
    }
    return TextHits(page, first, last, text, count).Next();
}

TextHits::TextHits(const CodePage& page, const char* first, const char* last, const char* text,
                   std::size_t count) noexcept
    : search_(first, last, text, count),
      boundaries_(page, first, last),
      count_(count),
      isAnywhere_(starts_anywhere(page, *text)) {}

const char* TextHits::Next() noexcept {
    if (isAnywhere_) {
        return search_.NextApart();
    }
    const char* hit = search_.Next();
    while (hit != nullptr && !boundaries_.Has(hit)) {
        hit = search_.Next();
    }
    if (hit != nullptr) {
        search_.SkipTo(hit + count_);
        boundaries_.RestartAt(hit + count_);
    }
    return hit;
}

std::size_t count_text(const CodePage& page, const char* first, const char* last, const char* text,
                       std::size_t count) noexcept {
    if (count == 0 || starts_anywhere(page, *text)) {
        return count_text(first, last, text, count);
    }
    TextHits hits(page, first, last, text, count);
    std::size_t found = 0;
    while (hits.Next() != nullptr) {
        ++found;
    }
    return found;
}

const char* _mbspbrk(const CodePage& page, const char* first, const char* last,
                     const char* set) noexcept {
    const char* hit = find_by_set(page, first, last, set, true);
    return hit != last ? hit : nullptr;
}

std::size_t _mbsspn(const CodePage& page, const char* first, const char* last,
                    const char* set) noexcept {
    return static_cast<std::size_t>(find_by_set(page, first, last, set, false) - first);
}

std::size_t _mbscspn(const CodePage& page, const char* first, const char* last,
                     const char* set) noexcept {
    return static_cast<std::size_t>(find_by_set(page, first, last, set, true) - first);
}

std::size_t _mbclen(const CodePage& page, const char* p) noexcept {
    if (is_ascii(*p)) {
        return 1;
    }
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
    return length_by_locale(p, MB_LEN_MAX);
}

const char* _mbsinc(const CodePage& page, const char* p) noexcept {
    return *p == '\0' ? p : p + _mbclen(page, p);
}

bool _ismbcspace(unsigned int value) noexcept {
    return value <= UCHAR_MAX && std::isspace(static_cast<int>(value)) != 0;
}

ByteSet::ByteSet(const CodePage& page, const char* set) noexcept : has() {
    while (*set != '\0') {
        const std::size_t length = is_ascii(*set) ? 1 : _mbclen(page, set);
        if (length == 1) {
            has[static_cast<unsigned char>(*set)] = true;
        }
        set += length;
    }
}

const char* character_start(const CodePage& page, const char* first, const char* p,
                            const char* last) noexcept {
    switch (page.grouping) {
        case Grouping::Utf8:
            return utf8_start(first, p, last);
        case Grouping::DoubleByte:
            return start_by_parity(lead_run(page, first, p), p);
        case Grouping::SingleByte:
        case Grouping::Other:
            break;
    }
    return p;
}

const char* trailing_run(const CodePage& page, const char* first, const char* last,
                         const bool* test) noexcept {
    switch (page.grouping) {
        case Grouping::SingleByte:
            return run_of_single_bytes(first, last, test);
        case Grouping::Utf8:
            return run_in_utf8(first, last, test);
        case Grouping::DoubleByte:
            return run_of_double_bytes(page, first, last, test);
        case Grouping::Other:
            break;
    }
    return run_by_walk(page, first, last, test);
}

}  // namespace platform

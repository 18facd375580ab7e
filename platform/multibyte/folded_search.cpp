#include <algorithm>

#include "lanes/vectors.h"
#include "multibyte/case.h"
#include "multibyte/fold.h"
#include "search/two_way.h"

namespace platform {
namespace {

using Bytes = Lanes<char>::Vector;
constexpr std::ptrdiff_t kLanes = Lanes<char>::kCount;

// One byte of the upper-cased text, to be compared with sixteen that are not folded.
class AnyCase {
public:
    explicit AnyCase(char upper)
        : caseBit_(splat_lanes(IsLetter(upper) ? kCaseBit : '\0')),
          lower_(splat_lanes(upper) | caseBit_) {}

    Bytes Hits(const char* p) const {
        return reinterpret_cast<Bytes>((load_lanes(p) | caseBit_) == lower_);
    }

private:
    static constexpr char kCaseBit = 0x20;
    static bool IsLetter(char upper) { return upper >= 'A' && upper <= 'Z'; }

    Bytes caseBit_;
    Bytes lower_;
};

class FoldedSearch {
public:
    FoldedSearch(const Fold& fold, const char* first, const char* last, const char* upper,
                 std::size_t count)
        : fold_(fold),
          next_(first),
          end_(last - count + 1),
          last_(last),
          upper_(upper),
          count_(count) {}

    // Where the fold is not the usual one, the bytes that fold to a letter are not known in
    // advance.
    const char* Run(bool isUsual) {
        const char* found = nullptr;
        if (end_ - next_ < kLanes) {
            found = RunByBytes();
        } else if (isUsual) {
            found = RunByVectors();
        }
        return found != nullptr || next_ == end_ ? found : RunLinear();
    }

private:
    // What may be compared in vain: this much, and a multiple of the way already gone.
    static constexpr std::size_t kSlack = 1024;
    static constexpr std::size_t kSpentPerByte = 4;

    bool IsMatch(const char* p) {
        std::size_t i = 0;
        while (i < count_ && fold_.Byte(p[i]) == upper_[i]) {
            ++i;
        }
        spent_ += i;
        return i == count_;
    }

    const char* RunByBytes() {
        for (; next_ < end_ && spent_ <= kSlack; ++next_) {
            if (IsMatch(next_)) {
                return next_;
            }
        }
        return nullptr;
    }

    // The first and the last byte of sixteen places at once.
    const char* RunByVectors() {
        const AnyCase head(upper_[0]);
        const AnyCase tail(upper_[count_ - 1]);
        std::size_t allowed = kSlack;
        while (next_ < end_ && spent_ <= allowed) {
            // The last step looks at some places for the second time.
            const char* places = std::min(next_, end_ - kLanes);
            std::uint64_t hits = hit_bits(head.Hits(places) & tail.Hits(places + count_ - 1));
            for (; hits != 0; hits = without_first_hit<char>(hits)) {
                const char* place = places + first_hit<char>(hits);
                if (IsMatch(place)) {
                    return place;
                }
            }
            next_ = places + kLanes;
            allowed += kSpentPerByte * kLanes;
        }
        return nullptr;
    }

    const char* RunLinear() {
        const auto length = static_cast<std::size_t>(last_ - next_);
        const std::size_t at = find_two_way(upper_, count_, length, [this](std::size_t position) {
            return fold_.Byte(next_[position]);
        });
        return at < length ? next_ + at : nullptr;
    }

    const Fold fold_;
    const char* next_;  // first place not looked at
    const char* end_;   // behind the last place with room for the text
    const char* last_;
    const char* upper_;
    std::size_t count_;
    std::size_t spent_ = 0;
};

}  // namespace

const char* find_folded(const CodePage& page, const char* first, const char* last,
                        const char* upper, std::size_t count) noexcept {
    if (count == 0) {
        return first;
    }
    if (static_cast<std::size_t>(last - first) < count) {
        return nullptr;
    }
    const Fold fold = Fold::Upper();
    const bool isUsual =
        fold.IsUsualForAscii() && (page.grouping == Grouping::Utf8 || !fold.ReachesAscii());
    return FoldedSearch(fold, first, last, upper, count).Run(isUsual);
}

}  // namespace platform

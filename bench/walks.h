#pragma once

#include <Kelm.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace bench {

/// A number over the pieces of a text in their order.
class Sum {
public:
    template <class Text>
    void Take(const Text& text, std::size_t length) {
        sum_ = sum_ * 31 + length * 257;
        if (length > 0)
            sum_ += static_cast<unsigned char>(text[0]);
    }
    void Take(const std::string& text) { Take(text, text.size()); }
    void Take(const Kelm& text) {
        Take(text.constBuffer(), static_cast<std::size_t>(text.GetLength()));
    }
    std::uint64_t Value() const { return sum_; }

private:
    std::uint64_t sum_ = 0;
};

/// Calls `visit(piece)` for what stands between the delimiters until it gives false.
template <class Visit>
void EachByMemchr(std::string_view text, char delimiter, Visit visit) {
    const char* end = text.data() + text.size();
    for (const char* start = text.data();;) {
        auto* stop = static_cast<const char*>(
            std::memchr(start, delimiter, static_cast<std::size_t>(end - start)));
        if (stop == nullptr)
            stop = end;
        if (!visit(std::string_view(start, static_cast<std::size_t>(stop - start))) || stop == end)
            return;
        start = stop + 1;
    }
}

/// The linear way over all fields with what the class offers.
template <class Visit>
void EachByFindAndMid(const Kelm& text, char delimiter, Visit visit) {
    int start = 0;
    for (int stop = text.Find(delimiter); stop >= 0; stop = text.Find(delimiter, start)) {
        visit(text.Mid(start, stop - start));
        start = stop + 1;
    }
    visit(text.Mid(start));
}

}  // namespace bench

#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#ifdef BENCH_QT
#include <QByteArray>
#include <QByteArrayMatcher>
#include <QString>
#include <QStringMatcher>
#include <QTextCodec>
#endif
#ifdef BENCH_ICU
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_FMT
#include <fmt/format.h>
#include <fmt/printf.h>
#endif
#ifdef BENCH_BOOST
#include <boost/algorithm/string.hpp>
#include <boost/range/algorithm_ext/erase.hpp>
#include <boost/tokenizer.hpp>
#endif

namespace bench {

using SharedText = std::shared_ptr<const std::string>;

/// A block of `operator new[]` with a copy of the text: the least that a text in a block of its own
/// can cost. Called as functions, the operators cannot be left out by the compiler.
template <class Ch>
class RawBlock {
public:
    explicit RawBlock(std::size_t length)
        : text_(static_cast<Ch*>(::operator new[]((length + 1) * sizeof(Ch)))), length_(length) {
        text_[length] = 0;
    }
    RawBlock(const Ch* text, std::size_t length) : RawBlock(length) {
        std::memcpy(text_, text, length * sizeof(Ch));
    }
    RawBlock(RawBlock&& other) noexcept
        : text_(std::exchange(other.text_, nullptr)), length_(other.length_) {}
    ~RawBlock() { ::operator delete[](text_); }
    RawBlock& operator=(RawBlock&&) = delete;

    Ch* Data() { return text_; }
    void Swap(RawBlock& other) {
        std::swap(text_, other.text_);
        std::swap(length_, other.length_);
    }
    void SetLength(std::size_t length) {
        length_ = length;
        text_[length] = 0;
    }
    std::basic_string_view<Ch> View() const { return {text_, length_}; }

private:
    Ch* text_;
    std::size_t length_;
};

/// A text behind a count that is raised and lowered and never looked at.
class BareCount {
public:
    struct Block {
        std::atomic<std::int32_t> count;
        std::string text;
    };
    explicit BareCount(Block* block) : block_(block) { block_->count.fetch_add(1); }
    BareCount(const BareCount& other) : BareCount(other.block_) {}
    ~BareCount() { block_->count.fetch_sub(1); }
    BareCount& operator=(const BareCount&) = delete;
    std::string_view View() const { return block_->text; }

private:
    Block* block_;
};

#ifdef BENCH_GLIB
/// Takes over what GLib returns.
class GText {
public:
    explicit GText(char* text) : text_(text) {}
    GText(GText&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
    ~GText() { g_free(text_); }
    GText& operator=(GText&&) = delete;
    char* Data() { return text_; }
    std::string_view View() const { return text_; }

private:
    char* text_;
};

class GSharedText {
public:
    explicit GSharedText(const std::string& text) : text_(g_ref_string_new(text.c_str())) {}
    GSharedText(const GSharedText& other) : text_(g_ref_string_acquire(other.text_)) {}
    ~GSharedText() { g_ref_string_release(text_); }
    GSharedText& operator=(const GSharedText&) = delete;
    std::string_view View() const { return text_; }

private:
    char* text_;
};
#endif

#ifdef BENCH_QT
inline QString QtText(std::u16string_view text) {
    return QString::fromUtf16(text.data(), static_cast<int>(text.size()));
}
inline QByteArray QtBytes(std::string_view text) {
    return QByteArray(text.data(), static_cast<int>(text.size()));
}
#endif

#ifdef BENCH_ICU
inline icu::UnicodeString IcuText(std::u16string_view text) {
    return icu::UnicodeString(text.data(), static_cast<std::int32_t>(text.size()));
}
#endif

}  // namespace bench

#pragma once

#include <Kelm.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "peers.h"

namespace bench {

/// What an implementation says, in a form that all of them share: a text as 16-bit units, so that a
/// narrow ASCII text equals its wide twin, or a number.
using Answer = std::u16string;

inline Answer AnswerOf(std::string_view text) {
    Answer units;
    units.reserve(text.size());
    for (char ch : text)
        units.push_back(static_cast<unsigned char>(ch));
    return units;
}

inline Answer AnswerOf(std::u16string_view text) {
    return Answer(text);
}
inline Answer AnswerOf(const std::string& text) {
    return AnswerOf(std::string_view(text));
}
inline Answer AnswerOf(const std::u16string& text) {
    return text;
}

template <class Number>
requires std::is_arithmetic_v<Number> Answer AnswerOf(Number value) {
    return AnswerOf(std::to_string(value));
}

inline Answer AnswerOf(const Kelm& text) {
    return AnswerOf(
        std::string_view(text.constBuffer(), static_cast<std::size_t>(text.GetLength())));
}

inline Answer AnswerOf(const WString& text) {
    return AnswerOf(
        std::u16string_view(text.constBuffer(), static_cast<std::size_t>(text.GetLength())));
}

inline Answer AnswerOf(const SharedText& text) {
    return AnswerOf(*text);
}

template <class Ch>
Answer AnswerOf(const RawBlock<Ch>& block) {
    return AnswerOf(block.View());
}

inline Answer AnswerOf(const BareCount& text) {
    return AnswerOf(text.View());
}

#ifdef BENCH_GLIB
inline Answer AnswerOf(const GText& text) {
    return AnswerOf(text.View());
}
inline Answer AnswerOf(const GSharedText& text) {
    return AnswerOf(text.View());
}
#endif

#ifdef BENCH_QT
inline Answer AnswerOf(const QByteArray& text) {
    return AnswerOf(std::string_view(text.constData(), static_cast<std::size_t>(text.size())));
}
inline Answer AnswerOf(const QString& text) {
    return text.toStdU16String();
}
#endif

#ifdef BENCH_ICU
inline Answer AnswerOf(const icu::UnicodeString& text) {
    return AnswerOf(std::u16string_view(text.getBuffer(), static_cast<std::size_t>(text.length())));
}
#endif

}  // namespace bench

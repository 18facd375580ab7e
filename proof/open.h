#pragma once

#include <string>

#include "Kelm.h"

/// The protected parts of a class, for tests that look at blocks.
template <class Text>
struct Open : Text {
    using Text::Text;
    using Text::operator=;
    Open() = default;
    Open(const Text& text) : Text(text) {}

    using Text::AllocBeforeWrite;
    using Text::AllocBuffer;
    using Text::AllocCopy;
    using Text::AppendFormat;
    using Text::AssignCopy;
    using Text::ConcatInPlace;
    using Text::CopyBeforeWrite;
    using Text::Format;
    using Text::FromFormat;
    using Text::GetData;
    using Text::GetFormattedLength;
    using Text::Init;
    using Text::MoveAssign;
    using Text::Release;
    using Text::VFormat;

    int Refs() const { return this->GetData()->nRefs; }
};

/// What differs between the twins, so that one body tests both.
template <class Text>
struct Twin;

template <>
struct Twin<Kelm> {
    using Unit = char;
    using String = std::string;
    static const char* Pick(const char* narrow, const char16_t*) { return narrow; }
};

template <>
struct Twin<WString> {
    using Unit = char16_t;
    using String = std::u16string;
    static const char16_t* Pick(const char*, const char16_t* wide) { return wide; }
};

/// The whole text, NULs included.
inline std::string whole(const Kelm& text) {
    return {text.constBuffer(), static_cast<std::size_t>(text.GetLength())};
}

inline std::u16string whole(const WString& text) {
    return {text.constBuffer(), static_cast<std::size_t>(text.GetLength())};
}

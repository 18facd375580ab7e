#pragma once

#include <string>

#include "data.h"
#include "peers.h"

namespace bench {

/// Makers of fresh values for `Workload::AddInPlace`: each value is alone in its block, with room
/// for `extra` more where that is given.
inline auto FreshKelm(const std::string& text, int extra = 0) {
    return [text, extra] {
        Kelm value(text.data(), Count(text.size()));
        if (extra > 0)
            value.GetBuffer(value.GetLength() + extra);
        return value;
    };
}

inline auto FreshWString(const std::u16string& text, int extra = 0) {
    return [text, extra] {
        WString value(text.c_str());
        if (extra > 0)
            value.GetBuffer(value.GetLength() + extra);
        return value;
    };
}

template <class Text>
auto FreshStd(const Text& text, int extra = 0) {
    return [text, extra] {
        Text value;
        value.reserve(text.size() + static_cast<std::size_t>(extra));
        value = text;
        return value;
    };
}

/// A value that shares its block, so that a write leaves it.
inline auto SharedKelm(const std::string& text) {
    return [text = Kelm(text.data(), Count(text.size()))] { return text; };
}

inline auto SharedWString(const std::u16string& text) {
    return [text = WString(text.c_str())] { return text; };
}

#ifdef BENCH_QT
inline auto FreshQtBytes(const std::string& text, int extra = 0) {
    return [text, extra] {
        QByteArray value;
        value.reserve(Count(text.size()) + extra);
        value.append(text.data(), Count(text.size()));
        return value;
    };
}

inline auto FreshQt(const std::u16string& text, int extra = 0) {
    return [text = QtText(text), extra] {
        QString value;
        value.reserve(text.size() + extra);
        value.append(text);
        return value;
    };
}
#endif

#ifdef BENCH_ICU
inline auto FreshIcu(const std::u16string& text) {
    return [text] { return IcuText(text); };
}
#endif

}  // namespace bench

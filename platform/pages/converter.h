#pragma once

#include <iconv.h>

#include <cerrno>
#include <cstddef>
#include <new>

#include "system_errors.h"

namespace platform {

/// The C library's converter for a page, to or from code points (`wchar_t` has 32 bits).
class Converter {
public:
    /// Throws `std::bad_alloc`; is not open where the system has no such converter.
    Converter(const char* to, const char* from);
    ~Converter() {
        if (IsOpen()) {
            iconv_close(handle_);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // The C library says "none" with a pointer of -1.
    bool IsOpen() const { return reinterpret_cast<std::ptrdiff_t>(handle_) != -1; }

    /// For a converter that has been open before: it is there, so that it is some means that lacks.
    void Demand() const {
        if (!IsOpen()) {
            throw std::bad_alloc();
        }
    }

    /// 0, or the reason why it stopped: E2BIG, EILSEQ or EINVAL.
    template <class From, class To>
    int Convert(From*& from, std::size_t& fromCount, To*& to, std::size_t& toCount) {
        auto* in = const_cast<char*>(reinterpret_cast<const char*>(from));  // only read
        std::size_t inBytes = fromCount * sizeof(From);
        const int error = Run(&in, &inBytes, to, toCount);
        from = reinterpret_cast<From*>(in);
        fromCount = inBytes / sizeof(From);
        return error;
    }

    /// Writes what the converter still holds and goes back to the initial state.
    template <class To>
    int Finish(To*& to, std::size_t& toCount) {
        return Run(nullptr, nullptr, to, toCount);
    }

    void Reset() { iconv(handle_, nullptr, nullptr, nullptr, nullptr); }

private:
    template <class To>
    int Run(char** in, std::size_t* inBytes, To*& to, std::size_t& toCount) {
        auto* out = reinterpret_cast<char*>(to);
        std::size_t outBytes = toCount * sizeof(To);
        const bool failed = iconv(handle_, in, inBytes, &out, &outBytes) == std::size_t(-1);
        to = reinterpret_cast<To*>(out);
        toCount = outBytes / sizeof(To);
        return failed ? errno : 0;
    }

    iconv_t handle_;
};

inline constexpr char kCodePoints[] = "WCHAR_T";

/// What a converter made of one character.
template <class To, std::size_t Capacity>
struct Converted {
    int error = 0;
    std::size_t count = 0;
    To units[Capacity] = {};
};

/// Converts one character on its own, from and back to the initial state.
template <std::size_t Capacity, class To, class From>
Converted<To, Capacity> convert_alone(Converter& converter, From* from, std::size_t count) {
    Converted<To, Capacity> result;
    To* out = result.units;
    std::size_t room = Capacity;
    converter.Reset();
    result.error = converter.Convert(from, count, out, room);
    if (result.error == 0) {
        result.error = converter.Finish(out, room);
    }
    result.count = Capacity - room;
    return result;
}

}  // namespace platform

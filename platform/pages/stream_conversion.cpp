#include "pages/stream_conversion.h"

#include <cstring>

#include "pages/converter.h"
#include "pages/utf16_walk.h"

namespace platform {
namespace {

constexpr std::size_t kBatch = 256;

/// Where units go; without a destination they are only counted.
struct UnitSink {
    void Put(const wchar_t* codes, std::size_t codeCount) {
        for (std::size_t i = 0; i < codeCount; ++i) {
            const auto code = static_cast<char32_t>(codes[i]);
            if (destination != nullptr) {
                put_utf16(code, destination + count);
            }
            count += utf16_units(code);
        }
    }

    char16_t* destination;
    std::size_t count;
};

struct ByteSink {
    void Put(const char* bytes, std::size_t byteCount) {
        if (destination != nullptr) {
            std::memcpy(destination + count, bytes, byteCount);
        }
        count += byteCount;
    }

    char* destination;
    std::size_t count;
};

/// A converter with a buffer in front of a sink.
template <class Unit, class Sink>
class Stream {
public:
    Stream(Converter& converter, Sink& sink) : converter_(converter), sink_(sink) {}

    /// Converts until the input ends or cannot be converted further.
    template <class From>
    void Convert(From*& from, std::size_t& count) {
        while (Pass([&](Unit*& to, std::size_t& room) {
                   return converter_.Convert(from, count, to, room);
               }) == E2BIG) {
        }
    }

    void Finish() {
        Pass([&](Unit*& to, std::size_t& room) { return converter_.Finish(to, room); });
    }

private:
    template <class Call>
    int Pass(Call call) {
        Unit buffer[kBatch];
        Unit* to = buffer;
        std::size_t room = kBatch;
        const int error = call(to, room);
        sink_.Put(buffer, kBatch - room);
        return error;
    }

    Converter& converter_;
    Sink& sink_;
};

/// The next code points of a text, with `?` for what no page has.
std::size_t read_codes(const char16_t*& p, const char16_t* last, wchar_t* codes) {
    std::size_t count = 0;
    while (p != last && count < kBatch) {
        char32_t code = utf16_code(p, last);
        p += utf16_units(code);
        // The converters drop tag characters, saying nothing.
        const bool isTag = (code & ~0x7Fu) == 0xE0000;
        codes[count++] = static_cast<wchar_t>(is_surrogate(code) || isTag ? U'?' : code);
    }
    return count;
}

}  // namespace

std::size_t stream_decode(const char* page, const char* source, std::size_t length,
                          char16_t* destination) {
    const ErrnoKeeper keeper;
    Converter converter(kCodePoints, page);
    converter.Demand();
    UnitSink sink{destination, 0};
    Stream<wchar_t, UnitSink> stream(converter, sink);
    const char* p = source;
    for (stream.Convert(p, length); length != 0; stream.Convert(p, length)) {
        const wchar_t replacement = kReplacement;
        sink.Put(&replacement, 1);
        ++p;
        --length;
    }
    stream.Finish();
    return sink.count;
}

std::size_t stream_encode(const char* page, const char16_t* source, std::size_t length,
                          char* destination) {
    const ErrnoKeeper keeper;
    Converter converter(page, kCodePoints);
    converter.Demand();
    ByteSink sink{destination, 0};
    Stream<char, ByteSink> stream(converter, sink);
    wchar_t codes[kBatch];
    for (const char16_t* p = source; p != source + length;) {
        std::size_t count = read_codes(p, source + length, codes);
        wchar_t* code = codes;
        for (stream.Convert(code, count); count != 0; stream.Convert(code, count)) {
            if (*code != L'?') {
                *code = L'?';
                continue;
            }
            ++code;  // a page without a question mark
            --count;
        }
    }
    stream.Finish();
    return sink.count;
}

}  // namespace platform

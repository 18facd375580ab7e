#include "print/print.h"

#include <algorithm>
#include <cmath>

#include "print/estimator.h"
#include "print/float.h"
#include "print/integer.h"
#include "print/sink.h"
#include "print/syntax.h"
#include "print/text.h"

namespace platform {

namespace {

std::size_t padding(const Conversion& conversion, std::size_t length) {
    const std::size_t width = static_cast<std::size_t>(conversion.width);
    return width > length ? width - length : 0;
}

template <class Unit>
class Printer {
public:
    Printer(Unit* destination, int capacity, ProcessPage& page)
        : sink_(destination, capacity), page_(page) {}

    void Literal(const Unit* text, std::size_t count) { sink_.Put(text, count); }

    void PlainInteger(int value) {
        constexpr std::size_t kLongest = 11;
        if (sink_.Room() >= kLongest) {
            sink_.Advance(print_integer(sink_.Next(), static_cast<long long>(value)));
            return;
        }
        Unit buffer[kLongest];
        const int count = print_integer(buffer, static_cast<long long>(value));
        sink_.Put(buffer, static_cast<std::size_t>(count));
    }

    void PlainText(const Unit* text) {
        PutPlainText(text, text != nullptr ? length_of(text) : kNullText.size());
    }

    /// Prints a plain text that is measured already.
    void PutPlainText(const Unit* text, std::size_t length) {
        if (text != nullptr) {
            sink_.Put(text, length);
        } else {
            sink_.PutAscii(kNullText.data(), length);
        }
    }

    void Convert(const Conversion& conversion) {
        switch (conversion.kind) {
            case Kind::Character:
                PutCharacter(conversion);
                return;
            case Kind::Text:
                PutTextArgument(conversion);
                return;
            case Kind::Integer:
                PutInteger(conversion);
                return;
            case Kind::Floating:
                PutFloating(conversion);
                return;
            case Kind::Pointer:
                PutPointer(conversion);
                return;
            case Kind::Nothing:
            case Kind::None:
                return;
        }
    }

    int Finish() { return sink_.Finish(); }

    /// Where the text ends: at its first NUL, which only a character can be, if it has one.
    int Ending() const { return ending_ >= 0 ? ending_ : sink_.Length(); }

private:
    using Other = std::conditional_t<std::is_same<Unit, char>::value, char16_t, char>;
    static constexpr bool kIsWide = std::is_same<Unit, char16_t>::value;

    void PadLeft(const Conversion& conversion, std::size_t length) {
        if (!conversion.Has(kLeft)) {
            sink_.Fill(' ', padding(conversion, length));
        }
    }

    void PadRight(const Conversion& conversion, std::size_t length) {
        if (conversion.Has(kLeft)) {
            sink_.Fill(' ', padding(conversion, length));
        }
    }

    void PutCharacter(const Conversion& conversion) {
        if (conversion.isWide == kIsWide) {
            PadLeft(conversion, 1);
            NoteEnding(static_cast<Unit>(conversion.integer) == Unit{});
            sink_.Put(static_cast<Unit>(conversion.integer));
            PadRight(conversion, 1);
            return;
        }
        const CodePage& page = page_.Get();
        const Other unit = static_cast<Other>(conversion.integer);
        PutConverted(conversion, unit == Other{},
                     [&](Sink<Unit>& sink) { return put_converted_unit(sink, page, unit); });
    }

    void NoteEnding(bool isNul) {
        if (isNul && ending_ < 0) {
            ending_ = sink_.Length();
        }
    }

    /// `put` prints into the sink it is given and says how long the text is.
    template <class Put>
    void PutConverted(const Conversion& conversion, bool isNul, Put put) {
        if (conversion.width != 0 && !conversion.Has(kLeft)) {
            Sink<Unit> counter(nullptr, 0);
            PadLeft(conversion, put(counter));
        }
        NoteEnding(isNul);
        PadRight(conversion, put(sink_));
    }

    void PutTextArgument(const Conversion& conversion) {
        const std::size_t limit =
            conversion.Has(kPrecision) ? static_cast<std::size_t>(conversion.precision) : SIZE_MAX;
        if (conversion.pointer == nullptr) {
            PutPadded(conversion, kNullText.substr(0, limit));
        } else if (conversion.isWide == kIsWide) {
            PutOwnText(conversion, static_cast<const Unit*>(conversion.pointer), limit);
        } else {
            const CodePage& page = page_.Get();
            const Other* text = static_cast<const Other*>(conversion.pointer);
            PutConverted(conversion, false,
                         [&](Sink<Unit>& sink) { return put_converted(sink, page, text, limit); });
        }
    }

    void PutOwnText(const Conversion& conversion, const Unit* text, std::size_t limit) {
        const std::size_t length = bounded_length(text, limit);
        PadLeft(conversion, length);
        sink_.Put(text, length);
        PadRight(conversion, length);
    }

    void PutPadded(const Conversion& conversion, std::string_view text) {
        PadLeft(conversion, text.size());
        sink_.PutAscii(text.data(), text.size());
        PadRight(conversion, text.size());
    }

    void PutInteger(const Conversion& conversion) {
        const IntegerText text(conversion);
        const std::size_t count = text.Count();
        const std::size_t precision = static_cast<std::size_t>(conversion.precision);
        std::size_t zeros = precision > count ? precision - count : 0;
        std::size_t length = text.prefix.length + zeros + count;
        if (conversion.Has(kZero) && !conversion.Has(kLeft) && !conversion.Has(kPrecision)) {
            zeros = padding(conversion, length);
            length += zeros;
        }
        PadLeft(conversion, length);
        PutPrefix(text.prefix);
        sink_.Fill('0', zeros);
        PutDigits(text);
        PadRight(conversion, length);
    }

    void PutPrefix(const NumberPrefix& prefix) {
        for (std::size_t i = 0; i < prefix.length; ++i) {
            sink_.Put(static_cast<Unit>(prefix.text[i]));
        }
    }

    void PutDigits(const IntegerText& text) {
        const std::size_t count = text.Count();
        if (sink_.Room() >= count) {
            text.Write(sink_.Next() + count);
            sink_.Advance(static_cast<int>(count));
            return;
        }
        Unit buffer[IntegerText::kMostDigits];
        text.Write(buffer + count);
        sink_.Put(buffer, count);
    }

    void PutPointer(const Conversion& conversion) {
        if (conversion.pointer != nullptr) {
            PutInteger(conversion);
        } else {
            PutPadded(conversion, "(nil)");
        }
    }

    void PutFloating(const Conversion& conversion) {
        constexpr int kDefaultPrecision = 6;
        const FloatText text(std::abs(conversion.real), conversion.letter,
                             conversion.Has(kPrecision) ? conversion.precision : kDefaultPrecision,
                             conversion.Has(kAlternate));
        NumberPrefix prefix;
        prefix.PutSign(conversion, std::signbit(conversion.real));
        std::size_t length = prefix.length + text.whole.size() +
                             (text.hasPoint ? point_.Length() : 0) + text.fraction.size() +
                             text.zeros + text.exponent.size();
        std::size_t zeros = 0;
        if (conversion.Has(kZero) && !conversion.Has(kLeft) && std::isfinite(conversion.real)) {
            zeros = padding(conversion, length);
            length += zeros;
        }
        PadLeft(conversion, length);
        PutPrefix(prefix);
        sink_.Fill('0', zeros);
        put_float(sink_, point_, text);
        PadRight(conversion, length);
    }

    Sink<Unit> sink_;
    ProcessPage& page_;
    DecimalPoint<Unit> point_;
    int ending_ = -1;  // index of the first NUL that was printed
};

/// Estimates and prints what it is shown.
template <class Unit>
class Rehearser {
public:
    Rehearser(Unit* destination, int capacity, ProcessPage& page)
        : printer_(destination, capacity, page) {}

    void Literal(const Unit* text, std::size_t count) {
        estimator_.Literal(text, count);
        printer_.Literal(text, count);
    }

    void PlainInteger(int value) {
        estimator_.PlainInteger(value);
        printer_.PlainInteger(value);
    }

    void PlainText(const Unit* text) {
        const std::size_t length = text != nullptr ? length_of(text) : kNullText.size();
        estimator_.AddPlainText(length);
        printer_.PutPlainText(text, length);
    }

    void Convert(const Conversion& conversion) {
        estimator_.Convert(conversion);
        printer_.Convert(conversion);
    }

    void Finish(Rehearsal& result) {
        result.allowance = estimator_.Result();
        result.length = printer_.Finish();
        result.ending = printer_.Ending();
    }

private:
    Estimator<Unit> estimator_;
    Printer<Unit> printer_;
};

template <class Unit>
int print(Unit* destination, int capacity, const Unit* format, va_list arguments) {
    ProcessPage page;
    Printer<Unit> printer(destination, capacity, page);
    walk_format(format, arguments, page, printer);
    return printer.Finish();
}

template <class Unit>
void rehearse_format(Unit* destination, int capacity, const Unit* format, va_list arguments,
                     Rehearsal& result) {
    ProcessPage page;
    Rehearser<Unit> rehearser(destination, capacity, page);
    walk_format(format, arguments, page, rehearser);
    rehearser.Finish(result);
}

template <class Unit>
int estimate_format(const Unit* format, va_list arguments) {
    ProcessPage page;
    Estimator<Unit> estimator;
    walk_format(format, arguments, page, estimator);
    return estimator.Result();
}

}  // namespace

int estimate(const char* format, va_list arguments) {
    return estimate_format(format, arguments);
}

int estimate(const char16_t* format, va_list arguments) {
    return estimate_format(format, arguments);
}

int vsprintf(char* destination, int capacity, const char* format, va_list arguments) {
    return print(destination, capacity, format, arguments);
}

int _vswprintf(char16_t* destination, int capacity, const char16_t* format, va_list arguments) {
    return print(destination, capacity, format, arguments);
}

void rehearse(char* destination, int capacity, const char* format, va_list arguments,
              Rehearsal& result) {
    rehearse_format(destination, capacity, format, arguments, result);
}

void rehearse(char16_t* destination, int capacity, const char16_t* format, va_list arguments,
              Rehearsal& result) {
    rehearse_format(destination, capacity, format, arguments, result);
}

}  // namespace platform

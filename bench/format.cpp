#include <cerrno>
#include <cstdio>

#include "data.h"
#include "harness.h"

namespace bench {

namespace {

/// What a careful user of `snprintf` writes: into a local buffer, and again where that is too
/// small.
template <class... Values>
std::string Print(const char* format, Values... values) {
    char buffer[512];
    int length = std::snprintf(buffer, sizeof buffer, format, values...);
    if (length < static_cast<int>(sizeof buffer))
        return std::string(buffer, static_cast<std::size_t>(length));
    std::string text(static_cast<std::size_t>(length), '\0');
    std::snprintf(text.data(), text.size() + 1, format, values...);
    return text;
}

/// The same arguments to everybody. The closures hold them, so nothing is folded.
template <class... Values>
void AddPrinters(Workload& work, const char* format, Values... values) {
    work.Add("kelm", [=] { return Kelm::FromFormat(format, values...); });
    work.Add("kelm_reuse", [=, text = Kelm()]() mutable {
        text.Format(format, values...);
        return std::string_view(text.constBuffer(), static_cast<std::size_t>(text.GetLength()));
    });
    work.Add("snprintf_string", [=] { return Print(format, values...); });
    work.Add("snprintf_kelm", [=] { return Kelm(Print(format, values...).c_str()); });
#ifdef BENCH_FMT
    work.Add("fmt", [=] { return fmt::sprintf(format, values...); });
#endif
#ifdef BENCH_QT
    work.Add("qt", [=] { return QString::asprintf(format, values...); });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [=] { return GText(g_strdup_printf(format, values...)); });
#endif
}

/// A text of the work's size among numbers.
void MixedText(Workload& work) {
    // Outlives the closures, which hold the pointer.
    static std::string text;
    text = Words(work.Size());
    AddPrinters(work, "%s: %d of %u at 0x%x, %8.2f %%, %-10s|", text.c_str(), -4711, 65000U,
                0xBEEFU, 99.126, "end");
}

void Integers(Workload& work) {
    AddPrinters(work, "%d %5d %-6u %08x %+d", 7, -123456, 42U, 0xCAFEU, 1000000);
}

void OneInteger(Workload& work) {
    AddPrinters(work, "%d", 1234567);
}

void FloatG17(Workload& work) {
    AddPrinters(work, "%.17g", 3.1415926535897931);
}

void FloatF2(Workload& work) {
    AddPrinters(work, "%.2f", 12345.678);
}

void Text(Workload& work) {
    static std::string text;
    text = Words(work.Size());
    AddPrinters(work, "%s", text.c_str());
}

void Append(Workload& work) {
    int lines = work.Size() / 10;
    work.Add("kelm", [lines, text = Kelm()]() mutable {
        text.GetBuffer(64 * lines);
        text.GetBufferSetLength(0);
        for (int i = 0; i < lines; i++)
            text.AppendFormat("%6d: %s\n", i, "line");
        return text;
    });
    work.Add("snprintf_string", [lines, text = std::string()]() mutable {
        text.clear();
        for (int i = 0; i < lines; i++) {
            char buffer[64];
            int length = std::snprintf(buffer, sizeof buffer, "%6d: %s\n", i, "line");
            text.append(buffer, static_cast<std::size_t>(length));
        }
        return text;
    });
#ifdef BENCH_FMT
    work.Add("fmt", [lines, text = std::string()]() mutable {
        text.clear();
        for (int i = 0; i < lines; i++)
            text += fmt::sprintf("%6d: %s\n", i, "line");
        return text;
    });
#endif
}

void Message(Workload& work) {
    work.Add("kelm", [code = std::uint32_t{ENOENT}] {
        Kelm text;
        text.FormatMsg(code, "cannot open %s", "data.txt");
        return text.GetLength() > 20;
    });
    work.Add("snprintf_string", [code = ENOENT] {
        std::string text =
            Print("cannot open %s (%d 0x%x): %s", "data.txt", code, code, strerrordesc_np(code));
        return text.size() > 20;
    });
}

/// The wide forms are for derived classes.
class Printer : public WString {
public:
    using WString::FromFormat;
};

void WideMixed(Workload& work) {
    work.Add("kelm", [number = -4711, real = 99.126] {
        return Printer::FromFormat(u"%d of %u at 0x%x, %8.2f %%, %S", number, 65000U, 0xBEEFU, real,
                                   "end");
    });
#ifdef BENCH_QT
    work.Add("qt", [number = -4711, real = 99.126] {
        return QString::asprintf("%d of %u at 0x%x, %8.2f %%, %s", number, 65000U, 0xBEEFU, real,
                                 "end");
    });
#endif
    work.Add("snprintf_widened", [number = -4711, real = 99.126] {
        std::string text =
            Print("%d of %u at 0x%x, %8.2f %%, %s", number, 65000U, 0xBEEFU, real, "end");
        return std::u16string(text.begin(), text.end());
    });
}

}  // namespace

void AddFormat(Suite& suite) {
    suite.Add("format_mixed", {kSmall, kMedium, kLarge}, MixedText);
    suite.Add("format_integers", {kSmall}, Integers);
    suite.Add("format_d", {kSmall}, OneInteger);
    suite.Add("format_g17", {kSmall}, FloatG17);
    suite.Add("format_f2", {kSmall}, FloatF2);
    suite.Add("format_text", {kSmall, kMedium, kLarge}, Text);
    suite.Add("append_format", {kMedium}, Append);
    suite.Add("format_message", {kSmall}, Message);
    suite.Add("format_wide", {kSmall}, WideMixed);
}

}  // namespace bench

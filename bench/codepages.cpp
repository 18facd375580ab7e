#include <iconv.h>

#include "data.h"
#include "harness.h"

namespace bench {

namespace {

constexpr unsigned kUtf8 = 65001;

/// One converter of iconv, as a user writes it down: a buffer that is large enough, one call.
class Iconv {
public:
    Iconv(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
    Iconv(const Iconv&) = delete;
    ~Iconv() { iconv_close(handle_); }
    Iconv& operator=(const Iconv&) = delete;

    std::u16string Decode(const std::string& text) const {
        std::u16string result(text.size(), u'\0');
        std::size_t left = result.size() * 2;
        Run(text.data(), text.size(), reinterpret_cast<char*>(result.data()), left);
        result.resize(result.size() - left / 2);
        return result;
    }
    std::string Encode(const std::u16string& text) const {
        std::string result(3 * text.size(), '\0');
        std::size_t left = result.size();
        Run(reinterpret_cast<const char*>(text.data()), text.size() * 2, result.data(), left);
        result.resize(result.size() - left);
        return result;
    }
    std::string Recode(const std::string& text) const {
        std::string result(3 * text.size(), '\0');
        std::size_t left = result.size();
        Run(text.data(), text.size(), result.data(), left);
        result.resize(result.size() - left);
        return result;
    }

private:
    void Run(const char* source, std::size_t size, char* target, std::size_t& left) const {
        char* in = const_cast<char*>(source);
        iconv(handle_, &in, &size, &target, &left);
    }
    iconv_t handle_;
};

#ifdef BENCH_ICU
/// A converter of ICU that is kept open. Bytes give as many units at most.
class IcuConverter {
public:
    explicit IcuConverter(const char* name) {
        UErrorCode error = U_ZERO_ERROR;
        converter_ = ucnv_open(name, &error);
    }
    IcuConverter(const IcuConverter&) = delete;
    ~IcuConverter() { ucnv_close(converter_); }
    IcuConverter& operator=(const IcuConverter&) = delete;

    std::u16string Decode(const std::string& text) const {
        UErrorCode error = U_ZERO_ERROR;
        std::u16string result(text.size(), u'\0');
        std::int32_t length = ucnv_toUChars(converter_, result.data(), Count(result.size()),
                                            text.data(), Count(text.size()), &error);
        result.resize(static_cast<std::size_t>(length));
        return result;
    }
    std::string Encode(const std::u16string& text) const {
        UErrorCode error = U_ZERO_ERROR;
        std::string result(3 * text.size(), '\0');
        std::int32_t length = ucnv_fromUChars(converter_, result.data(), Count(result.size()),
                                              text.data(), Count(text.size()), &error);
        result.resize(static_cast<std::size_t>(length));
        return result;
    }

private:
    UConverter* converter_;
};

std::u16string IcuFromUtf8(const std::string& text) {
    UErrorCode error = U_ZERO_ERROR;
    std::u16string result(text.size(), u'\0');
    std::int32_t length = 0;
    u_strFromUTF8(result.data(), Count(result.size()), &length, text.data(), Count(text.size()),
                  &error);
    result.resize(static_cast<std::size_t>(length));
    return result;
}

std::string IcuToUtf8(const std::u16string& text) {
    UErrorCode error = U_ZERO_ERROR;
    std::string result(3 * text.size(), '\0');
    std::int32_t length = 0;
    u_strToUTF8(result.data(), Count(result.size()), &length, text.data(), Count(text.size()),
                &error);
    result.resize(static_cast<std::size_t>(length));
    return result;
}
#endif

using Source = std::string (*)(int size);

void DecodeUtf8(Workload& work, Source source) {
    std::string text = source(work.Size());
    work.Add("kelm", [text = Kelm(text.c_str())] { return WString::FromCodePage(text, kUtf8); });
    work.Add("kelm_process", [text = Kelm(text.c_str())] { return WString(text); });
    auto converter = std::make_shared<Iconv>("UTF-16LE", "UTF-8");
    work.Add("iconv", [converter, text] { return converter->Decode(text); });
#ifdef BENCH_QT
    work.Add("qt", [text] { return QString::fromUtf8(text.data(), Count(text.size())); });
#endif
#ifdef BENCH_ICU
    work.Add("icu", [text] { return IcuFromUtf8(text); });
    work.Add("icu_string", [text] { return icu::UnicodeString::fromUTF8(text); });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [text] {
        long length = 0;
        gunichar2* units = g_utf8_to_utf16(text.data(), static_cast<glong>(text.size()), nullptr,
                                           &length, nullptr);
        std::u16string result(reinterpret_cast<char16_t*>(units), static_cast<std::size_t>(length));
        g_free(units);
        return result;
    });
#endif
}

void EncodeUtf8(Workload& work, Source source) {
    std::u16string text = Wide(source(work.Size()));
    work.Add("kelm", [text = WString(text.c_str())] { return text.ToKelm(kUtf8); });
    work.Add("kelm_process", [text = WString(text.c_str())] { return text.ToKelm(); });
    auto converter = std::make_shared<Iconv>("UTF-8", "UTF-16LE");
    work.Add("iconv", [converter, text] { return converter->Encode(text); });
#ifdef BENCH_QT
    work.Add("qt", [text = QtText(text)] { return text.toUtf8(); });
#endif
#ifdef BENCH_ICU
    work.Add("icu", [text] { return IcuToUtf8(text); });
    work.Add("icu_string", [text = IcuText(text)] {
        std::string result;
        text.toUTF8String(result);
        return result;
    });
#endif
#ifdef BENCH_GLIB
    work.Add("glib", [text] {
        return GText(g_utf16_to_utf8(reinterpret_cast<const gunichar2*>(text.data()),
                                     static_cast<glong>(text.size()), nullptr, nullptr, nullptr));
    });
#endif
}

/// A code page by number, and what the peers call it.
struct Page {
    const char* name;
    unsigned number;
    Source source;
    const char* iconvName;
    const char* icuName;
    const char* qtName;
};

constexpr Page kPages[] = {
    {"932", 932, Cjk, "CP932", "windows-31j", "windows-31j"},
    {"1252", 1252, Latin, "CP1252", "windows-1252", "windows-1252"},
};

void DecodePage(Workload& work, const Page& page) {
    std::string text = Encoded(page.source(work.Size()), page.iconvName);
    unsigned number = page.number;
    work.Add("kelm",
             [text = Kelm(text.c_str()), number] { return WString::FromCodePage(text, number); });
    auto converter = std::make_shared<Iconv>("UTF-16LE", page.iconvName);
    work.Add("iconv", [converter, text] { return converter->Decode(text); });
    const char* name = page.iconvName;
    work.Add("iconv_open_close", [name, text] { return Iconv("UTF-16LE", name).Decode(text); });
#ifdef BENCH_ICU
    auto icuConverter = std::make_shared<IcuConverter>(page.icuName);
    work.Add("icu", [icuConverter, text] { return icuConverter->Decode(text); });
#endif
#ifdef BENCH_QT
    if (QTextCodec* codec = QTextCodec::codecForName(page.qtName))
        work.Add("qt", [codec, text] { return codec->toUnicode(text.data(), Count(text.size())); });
#endif
}

void EncodePage(Workload& work, const Page& page) {
    std::u16string text = Wide(page.source(work.Size()));
    unsigned number = page.number;
    work.Add("kelm", [text = WString(text.c_str()), number] { return text.ToKelm(number); });
    auto converter = std::make_shared<Iconv>(page.iconvName, "UTF-16LE");
    work.Add("iconv", [converter, text] { return converter->Encode(text); });
    const char* name = page.iconvName;
    work.Add("iconv_open_close", [name, text] { return Iconv(name, "UTF-16LE").Encode(text); });
#ifdef BENCH_ICU
    auto icuConverter = std::make_shared<IcuConverter>(page.icuName);
    work.Add("icu", [icuConverter, text] { return icuConverter->Encode(text); });
#endif
#ifdef BENCH_QT
    if (QTextCodec* codec = QTextCodec::codecForName(page.qtName))
        work.Add("qt", [codec, text = QtText(text)] { return codec->fromUnicode(text); });
#endif
}

/// From the process's code page to another and back, in place.
void Recode(Workload& work) {
    std::string text = Latin(work.Size());
    work.Add("kelm", [text = Kelm(text.c_str())]() mutable {
        text.ToCharacterSet(1252);
        text.FromCharacterSet(1252);
        return text;
    });
    auto there = std::make_shared<Iconv>("CP1252", "UTF-8");
    auto back = std::make_shared<Iconv>("UTF-8", "CP1252");
    work.Add("iconv", [there, back, text] { return back->Recode(there->Recode(text)); });
}

}  // namespace

void AddCodePages(Suite& suite) {
    const struct {
        const char* name;
        Source source;
    } texts[] = {{"ascii", Words}, {"latin", Latin}, {"cjk", Cjk}, {"mixed", Mixed}};
    const std::vector<int> sizes = {16, kMedium, kLarge};
    for (const auto& text : texts) {
        Source source = text.source;
        suite.Add(std::string("utf8_decode_") + text.name, sizes,
                  [source](Workload& work) { DecodeUtf8(work, source); });
        suite.Add(std::string("utf8_encode_") + text.name, sizes,
                  [source](Workload& work) { EncodeUtf8(work, source); });
    }
    for (const Page& page : kPages) {
        suite.Add(std::string("decode_") + page.name, sizes,
                  [&page](Workload& work) { DecodePage(work, page); });
        suite.Add(std::string("encode_") + page.name, sizes,
                  [&page](Workload& work) { EncodePage(work, page); });
    }
    suite.Add("recode", {kMedium, kLarge}, Recode);
}

}  // namespace bench

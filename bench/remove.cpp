#include <cctype>
#include <cwctype>

#include "harness.h"
#include "texts.h"

namespace bench {

namespace {

const std::vector<int> kSizes = {kSmall, kMedium, kLarge};

template <class Text>
void AddErase(Workload& work, const char* name, const Text& text, typename Text::value_type ch) {
    work.AddInPlace(name, FreshStd(text), [ch](Text& value) { std::erase(value, ch); });
}

void RemoveCharOf(Workload& work, const std::string& text, char ch) {
    work.AddInPlace("kelm", FreshKelm(text), [ch](Kelm& value) { value.Remove(ch); });
    AddErase(work, "std_erase", text, ch);
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(Wide(text)),
                    [ch](QString& value) { value.remove(QLatin1Char(ch)); });
#endif
}

void RemoveChar(Workload& work) {
    RemoveCharOf(work, Words(work.Size()), 'e');
}

void RemoveRareChar(Workload& work) {
    RemoveCharOf(work, WithHits(work.Size(), "#"), '#');
}

void RemoveCharWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    work.AddInPlace("kelm", FreshWString(text), [](WString& value) { value.Remove(u'e'); });
    AddErase(work, "std_erase", text, u'e');
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(text), [](QString& value) { value.remove(QChar(u'e')); });
#endif
}

void RemoveRareCharWide(Workload& work) {
    std::u16string text = Wide(WithHits(work.Size(), "#"));
    work.AddInPlace("kelm", FreshWString(text), [](WString& value) { value.Remove(u'#'); });
    AddErase(work, "std_erase", text, u'#');
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(text), [](QString& value) { value.remove(QChar(u'#')); });
#endif
}

/// The peers for a class of bytes.
template <class IsOf>
void AddClassPeers(Workload& work, const std::string& text, IsOf isOf) {
    auto test = [isOf](char ch) { return isOf(static_cast<unsigned char>(ch)) != 0; };
    work.AddInPlace("std_erase_if", FreshStd(text),
                    [test](std::string& value) { std::erase_if(value, test); });
}

void RemoveSpaceOf(Workload& work, const std::string& text) {
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.RemoveSpace(); });
    AddClassPeers(work, text, [](int ch) { return std::isspace(ch); });
#ifdef BENCH_BOOST
    work.AddInPlace("boost", FreshStd(text), [](std::string& value) {
        boost::range::remove_erase_if(value, boost::is_space());
    });
#endif
}

void RemoveSpace(Workload& work) {
    RemoveSpaceOf(work, Prose(work.Size()));
}

/// White space only at every hundredth byte.
std::string RareSpaces(int size) {
    std::string text = Words(size);
    std::replace(text.begin(), text.end(), ' ', '_');
    for (std::size_t i = 50; i < text.size(); i += 100)
        text[i] = i % 200 == 50 ? ' ' : '\n';
    return text;
}

void RemoveRareSpace(Workload& work) {
    RemoveSpaceOf(work, RareSpaces(work.Size()));
}

void RemoveSpaceWideOf(Workload& work, const std::u16string& text) {
    work.AddInPlace("kelm", FreshWString(text), [](WString& value) { value.RemoveSpace(); });
    auto isSpace = [](char16_t ch) { return std::iswspace(ch) != 0; };
    work.AddInPlace("std_erase_if", FreshStd(text),
                    [isSpace](std::u16string& value) { std::erase_if(value, isSpace); });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(text), [](QString& value) {
        auto end =
            std::remove_if(value.begin(), value.end(), [](QChar ch) { return ch.isSpace(); });
        value.truncate(static_cast<int>(end - value.begin()));
    });
#endif
}

void RemoveSpaceWide(Workload& work) {
    RemoveSpaceWideOf(work, Wide(Prose(work.Size())));
}

void RemoveRareSpaceWide(Workload& work) {
    RemoveSpaceWideOf(work, Wide(RareSpaces(work.Size())));
}

void RemovePunctuation(Workload& work) {
    std::string text = Prose(work.Size());
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.RemovePunctuation(); });
    AddClassPeers(work, text, [](int ch) { return std::ispunct(ch); });
}

void RemoveControl(Workload& work) {
    std::string text = Prose(work.Size());
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.RemoveControl(); });
    AddClassPeers(work, text, [](int ch) { return std::iscntrl(ch); });
}

void RemoveText(Workload& work) {
    std::string text = WithHits(work.Size(), "needle");
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.Remove("needle"); });
#ifdef BENCH_BOOST
    work.AddInPlace("boost", FreshStd(text),
                    [](std::string& value) { boost::erase_all(value, "needle"); });
#endif
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQtBytes(text),
                    [](QByteArray& value) { value.replace("needle", ""); });
#endif
}

/// A loop of `strcasestr` that builds a second text. Nothing joins here.
void NoCaseRemove(Workload& work) {
    std::string text = WithHits(work.Size(), "Needle");
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.NCRemove("nEEDLE"); });
    work.AddInPlace("strcasestr", FreshStd(text), [](std::string& value) {
        std::string result;
        const char* from = value.c_str();
        for (const char* hit = strcasestr(from, "nEEDLE"); hit != nullptr;
             hit = strcasestr(from, "nEEDLE")) {
            result.append(from, hit);
            from = hit + 6;
        }
        result.append(from, value.c_str() + value.size());
        value = std::move(result);
    });
#ifdef BENCH_BOOST
    work.AddInPlace("boost", FreshStd(text),
                    [](std::string& value) { boost::ierase_all(value, "nEEDLE"); });
#endif
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(Wide(text)), [](QString& value) {
        value.remove(QStringLiteral("nEEDLE"), Qt::CaseInsensitive);
    });
#endif
}

void NoCaseRemoveWide(Workload& work) {
    std::u16string text = Wide(WithHits(work.Size(), "Needle"));
    work.AddInPlace("kelm", FreshWString(text), [](WString& value) { value.NCRemove(u"nEEDLE"); });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(text), [](QString& value) {
        value.remove(QStringLiteral("nEEDLE"), Qt::CaseInsensitive);
    });
#endif
}

}  // namespace

void AddRemove(Suite& suite) {
    suite.Add("remove_char", kSizes, RemoveChar);
    suite.Add("remove_rare_char", {kMedium, kLarge}, RemoveRareChar);
    suite.Add("remove_char_wide", kSizes, RemoveCharWide);
    suite.Add("remove_rare_char_wide", {kMedium, kLarge}, RemoveRareCharWide);
    suite.Add("remove_space", kSizes, RemoveSpace);
    suite.Add("remove_rare_space", {kMedium, kLarge}, RemoveRareSpace);
    suite.Add("remove_space_wide", kSizes, RemoveSpaceWide);
    suite.Add("remove_rare_space_wide", {kMedium, kLarge}, RemoveRareSpaceWide);
    suite.Add("remove_punctuation", kSizes, RemovePunctuation);
    suite.Add("remove_control", kSizes, RemoveControl);
    suite.Add("remove_text", kSizes, RemoveText);
    suite.Add("nc_remove", {kMedium, kLarge}, NoCaseRemove);
    suite.Add("nc_remove_wide", {kMedium, kLarge}, NoCaseRemoveWide);
}

}  // namespace bench

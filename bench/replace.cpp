#include "harness.h"
#include "texts.h"

namespace bench {

namespace {

const std::vector<int> kSizes = {kSmall, kMedium, kLarge};

void ReplaceChar(Workload& work) {
    std::string text = Words(work.Size());
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.Replace('e', '_'); });
    work.AddInPlace("std_replace", FreshStd(text),
                    [](std::string& value) { std::replace(value.begin(), value.end(), 'e', '_'); });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQtBytes(text), [](QByteArray& value) { value.replace('e', '_'); });
#endif
}

void ReplaceCharWide(Workload& work) {
    std::u16string text = Wide(Words(work.Size()));
    work.AddInPlace("kelm", FreshWString(text), [](WString& value) { value.Replace(u'e', u'_'); });
    work.AddInPlace("std_replace", FreshStd(text), [](std::u16string& value) {
        std::replace(value.begin(), value.end(), u'e', u'_');
    });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(text),
                    [](QString& value) { value.replace(QChar(u'e'), QChar(u'_')); });
#endif
}

/// One character in a hundred.
void ReplaceRareChar(Workload& work) {
    std::string text = WithHits(work.Size(), "#");
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.Replace('#', '_'); });
    work.AddInPlace("std_replace", FreshStd(text),
                    [](std::string& value) { std::replace(value.begin(), value.end(), '#', '_'); });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQtBytes(text), [](QByteArray& value) { value.replace('#', '_'); });
#endif
}

void ReplaceRareCharWide(Workload& work) {
    std::u16string text = Wide(WithHits(work.Size(), "#"));
    work.AddInPlace("kelm", FreshWString(text), [](WString& value) { value.Replace(u'#', u'_'); });
    work.AddInPlace("std_replace", FreshStd(text), [](std::u16string& value) {
        std::replace(value.begin(), value.end(), u'#', u'_');
    });
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(text),
                    [](QString& value) { value.replace(QChar(u'#'), QChar(u'_')); });
#endif
}

/// With `find` and a second text.
template <class Text>
void ReplaceWithFind(Text& value, const Text& what, const Text& with) {
    Text result;
    std::size_t from = 0;
    for (auto at = value.find(what); at != value.npos; at = value.find(what, from)) {
        result.append(value, from, at - from).append(with);
        from = at + what.size();
    }
    result.append(value, from);
    value = std::move(result);
}

struct Pair {
    const char* name;
    std::string what;
    std::string with;
};

const Pair kPairs[] = {
    {"equal", "needle", "NEEDLE"}, {"grow", "needle", "two needles"}, {"shrink", "needle", "pin"}};

/// Room for the result at every size, one hit in a hundred bytes.
int RoomToGrow(int size) {
    return size / 100 * 6 + 6;
}

void ReplaceText(Workload& work, const Pair& pair) {
    std::string text = WithHits(work.Size(), pair.what);
    auto replace = [pair](Kelm& value) { value.Replace(pair.what.c_str(), pair.with.c_str()); };
    work.AddInPlace("kelm", FreshKelm(text, RoomToGrow(work.Size())), replace);
    work.AddInPlace("kelm_new_block", SharedKelm(text), replace);
    work.AddInPlace("std_string", FreshStd(text),
                    [pair](std::string& value) { ReplaceWithFind(value, pair.what, pair.with); });
#ifdef BENCH_BOOST
    work.AddInPlace("boost", FreshStd(text), [pair](std::string& value) {
        boost::replace_all(value, pair.what, pair.with);
    });
#endif
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQtBytes(text),
                    [what = QtBytes(pair.what), with = QtBytes(pair.with)](QByteArray& value) {
                        value.replace(what, with);
                    });
#endif
}

void ReplaceTextWide(Workload& work, const Pair& pair) {
    std::u16string text = Wide(WithHits(work.Size(), pair.what));
    std::u16string what = Wide(pair.what);
    std::u16string with = Wide(pair.with);
    auto replace = [=](WString& value) { value.Replace(what.c_str(), with.c_str()); };
    work.AddInPlace("kelm", FreshWString(text, RoomToGrow(work.Size())), replace);
    work.AddInPlace("kelm_new_block", SharedWString(text), replace);
    work.AddInPlace("std_u16string", FreshStd(text),
                    [=](std::u16string& value) { ReplaceWithFind(value, what, with); });
#ifdef BENCH_QT
    work.AddInPlace(
        "qt", FreshQt(text),
        [what = QtText(what), with = QtText(with)](QString& value) { value.replace(what, with); });
#endif
#ifdef BENCH_ICU
    work.AddInPlace("icu", FreshIcu(text),
                    [what = IcuText(what), with = IcuText(with)](icu::UnicodeString& value) {
                        value.findAndReplace(what, with);
                    });
#endif
}

/// A loop of `strcasestr` that builds a second text.
void ReplaceWithStrcasestr(std::string& value, const std::string& what, const std::string& with) {
    std::string result;
    const char* from = value.c_str();
    for (const char* hit = strcasestr(from, what.c_str()); hit != nullptr;
         hit = strcasestr(from, what.c_str())) {
        result.append(from, hit).append(with);
        from = hit + what.size();
    }
    result.append(from, value.c_str() + value.size());
    value = std::move(result);
}

/// Half of the hits differ in case.
std::string TextOfTwoCases(int size) {
    std::string text = WithHits(size, "needle");
    std::size_t step = 0;
    for (auto at = text.find("needle"); at != text.npos; at = text.find("needle", at + 1)) {
        if (step++ % 2 == 1)
            text.replace(at, 6, "Needle");
    }
    return text;
}

void NoCaseReplace(Workload& work) {
    std::string text = TextOfTwoCases(work.Size());
    work.AddInPlace("kelm", FreshKelm(text), [](Kelm& value) { value.NCReplace("NEEDLE", "pin"); });
    work.AddInPlace("strcasestr", FreshStd(text),
                    [](std::string& value) { ReplaceWithStrcasestr(value, "NEEDLE", "pin"); });
#ifdef BENCH_BOOST
    work.AddInPlace("boost", FreshStd(text),
                    [](std::string& value) { boost::ireplace_all(value, "NEEDLE", "pin"); });
#endif
#ifdef BENCH_QT
    work.AddInPlace("qt", FreshQt(Wide(text)), [](QString& value) {
        value.replace(QStringLiteral("NEEDLE"), QStringLiteral("pin"), Qt::CaseInsensitive);
    });
#endif
}

void NoCaseReplaceGrow(Workload& work) {
    std::string text = TextOfTwoCases(work.Size());
    work.AddInPlace("kelm", FreshKelm(text),
                    [](Kelm& value) { value.NCReplace("NEEDLE", "two pieces"); });
    work.AddInPlace("strcasestr", FreshStd(text), [](std::string& value) {
        ReplaceWithStrcasestr(value, "NEEDLE", "two pieces");
    });
}

}  // namespace

void AddReplace(Suite& suite) {
    suite.Add("replace_char", kSizes, ReplaceChar);
    suite.Add("replace_rare_char", {kMedium, kLarge}, ReplaceRareChar);
    suite.Add("replace_char_wide", kSizes, ReplaceCharWide);
    suite.Add("replace_rare_char_wide", {kMedium, kLarge}, ReplaceRareCharWide);
    for (const Pair& pair : kPairs) {
        suite.Add(std::string("replace_") + pair.name, kSizes,
                  [&pair](Workload& work) { ReplaceText(work, pair); });
        suite.Add(std::string("replace_") + pair.name + "_wide", kSizes,
                  [&pair](Workload& work) { ReplaceTextWide(work, pair); });
    }
    suite.Add("nc_replace", {kMedium, kLarge}, NoCaseReplace);
    suite.Add("nc_replace_grow", {kMedium, kLarge}, NoCaseReplaceGrow);
}

}  // namespace bench

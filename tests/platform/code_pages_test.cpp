#include "pages/code_pages.h"

#include <locale.h>

#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "locales.h"
#include "oracle.h"

// newlocale forgets the copy that it makes of LOCPATH.
extern "C" void __lsan_disable() __attribute__((weak));
extern "C" void __lsan_enable() __attribute__((weak));

namespace platform {
namespace {

struct LocaleCase {
    const char* locale;
    unsigned int number;
    Grouping grouping;
    const char* converter;
};

const LocaleCase kLocaleCases[] = {
    {"C", 65001, Grouping::Utf8, "UTF-8"},
    {"POSIX", 65001, Grouping::Utf8, "UTF-8"},
    {"en_US.UTF-8", 65001, Grouping::Utf8, "UTF-8"},
    {"de_DE.ISO-8859-1", 28591, Grouping::SingleByte, "ISO-8859-1"},
    {"tr_TR.ISO-8859-9", 28599, Grouping::SingleByte, "ISO-8859-9"},
    {"ja_JP.SHIFT_JIS", 932, Grouping::DoubleByte, "CP932"},
    {"zh_CN.GBK", 936, Grouping::DoubleByte, "GBK"},
    {"zh_TW.BIG5", 950, Grouping::DoubleByte, "BIG5"},
    {"ja_JP.EUC-JP", 0, Grouping::Other, "EUC-JP"},
    {"ko_KR.EUC-KR", 51949, Grouping::Other, "EUC-KR"},
    {"zh_CN.GB18030", 54936, Grouping::Other, "GB18030"},
    {"ka_GE.GEORGIAN-PS", 0, Grouping::SingleByte, "GEORGIAN-PS"},
    {"zh_TW.EUC-TW", 0, Grouping::Other, "EUC-TW"},
};

// The locales come one after the other in one process, so an answer kept too long shows.
TEST(ProcessCodePage, FollowsTheLocale) {
    for (std::size_t i = 0; i < 2 * std::size(kLocaleCases); ++i) {
        const LocaleCase& c = kLocaleCases[i % std::size(kLocaleCases)];
        const LocaleScope locale(c.locale);
        const CodePage* page = process_code_page();
        EXPECT_EQ(page->number, c.number) << c.locale;
        EXPECT_EQ(page->grouping, c.grouping) << c.locale;
        EXPECT_STREQ(page->converter, c.converter) << c.locale;
    }
}

locale_t NewLocale(const char* name) {
    if (__lsan_disable != nullptr) {
        __lsan_disable();
    }
    const locale_t locale = newlocale(LC_ALL_MASK, name, nullptr);
    if (__lsan_enable != nullptr) {
        __lsan_enable();
    }
    return locale;
}

// Each thread alone has the locale, which is freed so that the next one can get its memory.
TEST(ProcessCodePage, FollowsTheLocaleOfTheThread) {
    // The C library has a lock of its own for this, which the thread sanitizer does not see.
    std::mutex loading;
    const auto walk = [&loading] {
        for (std::size_t i = 0; i < 200; ++i) {
            const LocaleCase& c = kLocaleCases[i % std::size(kLocaleCases)];
            std::unique_lock lock(loading);
            const locale_t locale = NewLocale(c.locale);
            lock.unlock();
            ASSERT_NE(locale, nullptr) << c.locale;
            const locale_t old = uselocale(locale);
            EXPECT_STREQ(process_code_page()->converter, c.converter);
            uselocale(old);
            lock.lock();
            freelocale(locale);
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back(walk);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(process_code_page()->number, 65001u);
}

TEST(FindCodePage, KnowsItsNumbersAndNoOthers) {
    int found = 0;
    for (unsigned int number = 0; number < 70000; ++number) {
        if (const CodePage* page = find_code_page(number)) {
            ++found;
            EXPECT_EQ(page->number, number);
            EXPECT_EQ(page->leadBytes != nullptr, page->grouping == Grouping::DoubleByte) << number;
        }
    }
    EXPECT_GT(found, 100);
    for (unsigned int number :
         {0u, 1u, 1200u, 1201u, 1259u, 28590u, 28602u, 28607u, 65000u, 65002u, 4294967295u}) {
        EXPECT_EQ(find_code_page(number), nullptr) << number;
    }
}

TEST(FindCodePage, LeadBytes) {
    const std::pair<unsigned int, std::string> ranges[] = {
        {932, "\x81\x9F\xE0\xFC"},          {936, "\x81\xFE"}, {949, "\x81\xFE"}, {950, "\x81\xFE"},
        {1361, "\x84\xD3\xD8\xDE\xE0\xF9"},
    };
    for (const auto& [number, leads] : ranges) {
        for (unsigned int byte = 0; byte < 256; ++byte) {
            EXPECT_EQ(find_code_page(number)->IsLead(static_cast<unsigned char>(byte)),
                      oracle::is_lead(leads, static_cast<char>(byte)))
                << number << ' ' << byte;
        }
    }
}

}  // namespace
}  // namespace platform

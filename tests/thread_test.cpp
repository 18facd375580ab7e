// Sharers used by several threads at once; what is wrong here shows under a thread sanitizer.

#include <iconv.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <thread>
#include <vector>

#include "twins.h"

namespace {

void together(const std::function<void(int)>& work) {
    std::vector<std::thread> threads;
    for (int n = 0; n < 3; ++n) {
        threads.emplace_back(work, n);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

template <class T>
class Threads : public ::testing::Test {};
TYPED_TEST_SUITE(Threads, Twins);

}  // namespace

TYPED_TEST(Threads, ShareCopyWriteAndDestroy) {
    const TypeParam source(T_("the text that all of them share"));
    for (int nRound = 0; nRound < 300; ++nRound) {
        auto* first = new TypeParam(source.Left(10));
        TypeParam shared[3] = {*first, *first, *first};
        delete first;
        together([&](int n) {
            TypeParam copy(source);
            TypeParam other = shared[n];
            shared[n].Append(T_("+"));
            shared[n].SetAt(0, T_("X")[0]);
            other.MakeUpper();
            copy = shared[n];
            copy.Empty();
            EXPECT_EQ(whole(shared[n]), T_("Xhe text t+"));
            EXPECT_EQ(whole(other), T_("THE TEXT T"));
            shared[n].Release();
        });
    }
    EXPECT_EQ(Open<TypeParam>(source).Refs(), 2);
}

TYPED_TEST(Threads, EmptyValuesAndFirstUses) {
    // The C library unloads what nobody has open, under a lock that a thread sanitizer cannot see.
    const iconv_t open[] = {iconv_open("WCHAR_T", "CP1253"), iconv_open("WCHAR_T", "IBM437"),
                            iconv_open("WCHAR_T", "EUC-JP-MS")};
    together([](int) {
        for (int nRound = 0; nRound < 200; ++nRound) {
            Open<TypeParam> empty;
            empty.Format(T_(""));
            empty.GetBufferSetLength(0);
            empty.Append(TypeParam());
            empty.MakeLower();
            empty.Remove(T_("x")[0]);
            EXPECT_TRUE(empty.IsEmpty());
            EXPECT_STREQ(WString::FromCodePage("\xE0\x8E", 1253).ToKelm(437), "??");
            EXPECT_TRUE(WString::FromCodePage("\xA4\xA2", 51932) == u"\u3042");
        }
    });
    std::for_each(std::begin(open), std::end(open), iconv_close);
}

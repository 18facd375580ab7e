// Sharers used by several threads at once; what is wrong here shows under a thread sanitizer.

#include <iconv.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
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

// Two holders read and leave, each in the same way; the third learns of it from the count and from
// nothing else, and goes on with the block as its own.
TYPED_TEST(Threads, TheCountAloneTellsThatOthersLeft) {
    using Held = std::unique_ptr<Open<TypeParam>>;
    using Deed = void (*)(Held&);
    const Deed leaves[] = {
        [](Held& value) { value.reset(); },
        [](Held& value) { value->Release(); },
        [](Held& value) { value->SetAt(0, T_("X")[0]); },
        [](Held& value) { value->Append(T_("+")); },
        [](Held& value) { value->AssignCopy(2, value->constBuffer() + 1); },
        [](Held& value) { Held(new Open<TypeParam>(*value)).swap(value); },
        [](Held& value) { *std::make_unique<TypeParam>(T_("other")) = *value, value->Empty(); }};
    const Deed goesOn[] = {[](Held& value) { value.reset(); },
                           [](Held& value) { value->Release(); },
                           [](Held& value) { value->SetAt(0, T_("Y")[0]); },
                           [](Held& value) { value->Append(T_("-")); }};
    for (int nRound = 0; nRound < 140; ++nRound) {
        const TypeParam text(T_("a text that is read to its end"));
        Held values[] = {std::make_unique<Open<TypeParam>>(from<TypeParam>(whole(text), 40)),
                         nullptr, nullptr};
        values[1] = std::make_unique<Open<TypeParam>>(*values[0]);
        values[2] = std::make_unique<Open<TypeParam>>(*values[0]);
        together([&](int n) {
            EXPECT_EQ(whole(*values[n]), whole(text));
            if (n != 0) {
                leaves[nRound % 7](values[n]);
            } else {
                const std::int32_t* pnRefs = &values[0]->GetData()->nRefs;
                for (int nWait = 0;
                     nWait < 100000 && __atomic_load_n(pnRefs, __ATOMIC_RELAXED) != 1; ++nWait) {
                    std::this_thread::yield();
                }
                EXPECT_EQ(whole(*values[0]), whole(text));
                goesOn[nRound % 4](values[0]);
            }
            values[n].reset();
            const TypeParam copy(text);  // which all count, so last
        });
        EXPECT_EQ(Open<TypeParam>(text).Refs(), 2);
    }
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

// Blocks: who holds which, what a write does to it, and that the static empty one never changes.

#include <dlfcn.h>

#include <climits>
#include <new>
#include <utility>

#include "twins.h"

template <class Text>
class Block : public ::testing::Test {};
TYPED_TEST_SUITE(Block, Twins);

// As a binding does it that knows nothing but the names of the exports.
TYPED_TEST(Block, CopiesAreMadeAndDestroyedByName) {
    const std::string name = sizeof(*TypeParam().constBuffer()) == 1 ? "4Kelm" : "7WString";
    void* const library = dlopen("libkelm.so.1", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    for (const char* kind : {"1", "2"}) {
        void* copy = dlsym(library, ("_ZN" + name + "C" + kind + "ERKS_").c_str());
        void* destroy = dlsym(library, ("_ZN" + name + "D" + kind + "Ev").c_str());
        const Open<TypeParam> text(T_("abc"));
        alignas(TypeParam) unsigned char place[sizeof(TypeParam)];
        reinterpret_cast<void (*)(void*, const TypeParam&)>(copy)(place, text);
        EXPECT_EQ(text.Refs(), 2);
        reinterpret_cast<void (*)(void*)>(destroy)(place);
        EXPECT_EQ(text.Refs(), 1);
    }
    dlclose(library);
}

// The count is set instead of reached: a billion copies would take too long.
TYPED_TEST(Block, BeyondTheMostHoldersCopiesAreReal) {
    Open<TypeParam> text = from<TypeParam>(whole(TypeParam(T_("abc"))) + T_("x")[0], 9);
    text.GetBufferSetLength(4)[1] = 0;  // a NUL counts in such a copy
    for (const int nBefore : {(1 << 30) - 1, 1 << 30, INT_MAX}) {
        const bool bShares = nBefore < 1 << 30;
        text.GetData()->nRefs = nBefore;
        {
            const Open<TypeParam> copy(text);
            Open<TypeParam> assigned(T_("other"));
            assigned = text;
            EXPECT_EQ(copy.constBuffer() == text.constBuffer(), bShares);
            EXPECT_NE(assigned.constBuffer(), text.constBuffer());
            EXPECT_EQ(whole(copy), whole(text));
            EXPECT_EQ(whole(assigned), whole(text));
            EXPECT_EQ(assigned.Refs(), 1);
            EXPECT_EQ(assigned.GetAllocLength(), 5) << "room is kept where there is enough";
            EXPECT_EQ(text.Refs(), nBefore + (bShares ? 1 : 0));
        }
        text.GetData()->nRefs = 1;
    }
}

TYPED_TEST(Block, PrimitivesOfDerivedClasses) {
    const auto is_nil = [](const Open<TypeParam>& value) {
        return value.constBuffer() == Open<TypeParam>().constBuffer();
    };
    Open<TypeParam> text = from<TypeParam>(T_("abcdef"), 10);
    Open<TypeParam> sharer(text);
    sharer.CopyBeforeWrite();
    EXPECT_EQ(sharer.GetAllocLength(), 6);
    EXPECT_EQ(text.Refs(), 1);
    sharer = text;
    sharer.AllocBeforeWrite(4);
    EXPECT_EQ(sharer.GetAllocLength(), 4);
    EXPECT_EQ(text.Refs(), 1);
    const auto* place = text.constBuffer();
    text.AllocBeforeWrite(10);
    EXPECT_EQ(text.constBuffer(), place);
    EXPECT_EQ(whole(text), T_("abcdef"));
    text.AssignCopy(3, place + 2);
    EXPECT_EQ(whole(text), T_("cde"));
    EXPECT_EQ(text.constBuffer(), place);
    text.ConcatInPlace(2, place);
    EXPECT_EQ(whole(text), T_("cdecd"));
    Open<TypeParam> piece;
    text.AllocCopy(piece, 2, 1, 3);
    EXPECT_EQ(piece.GetLength(), 5);
    EXPECT_EQ(piece[5], 0);
    EXPECT_TRUE(piece.Left(2) == T_("de"));
    piece.MoveAssign(text);
    EXPECT_EQ(piece.constBuffer(), place);
    EXPECT_TRUE(is_nil(text));
    piece.MoveAssign(piece);
    EXPECT_TRUE(is_nil(piece));
    text.AllocCopy(piece, 0, 0, 0);
    EXPECT_TRUE(is_nil(piece));
    piece.AllocBuffer(0);
    EXPECT_TRUE(is_nil(piece));
    piece.AllocBuffer(1);
    EXPECT_EQ(piece.GetLength(), 1);
    EXPECT_EQ(piece[1], 0);
    text = piece;
    auto* const block = text.GetData();
    text.Init();
    EXPECT_EQ(piece.Refs(), 2);
    Open<TypeParam>::Release(block);
    EXPECT_EQ(piece.Refs(), 1);
    piece.Init();
    Open<TypeParam>::Release(block);  // for the last time
}

TYPED_TEST(Block, TooLongIsAFailedAllocation) {
    const int nMost = sizeof(typename Twin<TypeParam>::Unit) == 1 ? 2147483634 : 1073741816;
    Open<TypeParam> text(T_("abc"));
    EXPECT_THROW(text.GetBuffer(nMost + 1), std::bad_alloc);
    EXPECT_THROW(static_cast<void>(TypeParam::FromRepeat(T_("x")[0], nMost + 1)), std::bad_alloc);
    EXPECT_THROW(text.ConcatInPlace(INT_MAX - 1, text), std::bad_alloc);
    EXPECT_THROW(static_cast<void>(text.Elements(0, INT_MAX, T_(",")[0])), std::bad_alloc);
    EXPECT_TRUE(text == T_("abc"));
    EXPECT_TRUE(text.Elements(INT_MAX, INT_MAX, T_(",")[0]).IsEmpty());
}

TEST(Narrow, TooLongLeavesTheText) {
    Kelm text("\t\t");
    EXPECT_THROW(text.ReplaceTabs(INT_MAX), std::bad_alloc);
    EXPECT_THROW(text.Repeat("abc", INT_MAX), std::bad_alloc);
    EXPECT_STREQ(text, "\t\t");
    struct Wide : WString {
        using WString::_FromCodePage;
    };
    EXPECT_THROW(static_cast<void>(Wide::_FromCodePage("", INT_MAX, 28591)), std::bad_alloc);
    EXPECT_EQ((Kelm::FromRepeat('0', 500) + "7;8").IndexOfElement(7, ';'), 0);
}

TEST(BlockDeath, Preconditions) {
    Open<Kelm> narrow("abc");
    Open<WString> wide(u"abc");
    EXPECT_DEATH(narrow.SetAt(-1, 'x'), "nIndex >= 0, file [A-Za-z]+\\.[a-z]+, line [0-9]+");
    EXPECT_DEATH(wide.SetAt(3, u'x'),
                 "nIndex < GetData \\(\\)->nDataLength, file [A-Za-z]+\\.[a-z]+");
    EXPECT_DEATH(narrow.AllocBuffer(-1), "nLen >= 0");
    EXPECT_DEATH(wide.AllocBuffer(INT_MAX), "nLen <= INT_MAX-1");
    EXPECT_DEATH(narrow.GetBuffer(-1), "nMinBufLength >= 0");
    EXPECT_DEATH(wide.GetBufferSetLength(-1), "nNewLength >= 0");
    EXPECT_DEATH(narrow.ReleaseBuffer(4), "nNewLength <= GetData \\(\\)->nAllocLength");
    EXPECT_DEATH(narrow.UnlockBuffer(), "GetData \\(\\)->nRefs == -1");
    EXPECT_DEATH(narrow.Repeat("x", -1), "nMinBufLength >= 0");
}

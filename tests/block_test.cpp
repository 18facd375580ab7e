// Blocks: who holds which, what a write does to it, and that the static empty one never changes.

#include <dlfcn.h>

#include <climits>
#include <new>
#include <utility>

#include "twins.h"

template <class Text>
class Block : public ::testing::Test {};
TYPED_TEST_SUITE(Block, Twins);

namespace {

template <class Text>
Open<Text> with_room(const Open<Text>& text, int nCapacity) {
    Open<Text> result(text);
    result.GetBuffer(nCapacity);
    return result;
}

template <class Text>
void expect_nil(const Open<Text>& text) {
    const Open<Text> empty;
    EXPECT_EQ(text.constBuffer(), empty.constBuffer());
    EXPECT_EQ(text.Refs(), -1);
    EXPECT_EQ(text.GetLength(), 0);
    EXPECT_EQ(text.GetAllocLength(), 0);
    EXPECT_EQ(text[0], 0);
}

}  // namespace

TYPED_TEST(Block, LaysTheHeaderDirectlyInFront) {
    const Open<TypeParam> text(T_("abc"));
    EXPECT_EQ(sizeof(TypeParam), sizeof(void*));
    const auto* header = reinterpret_cast<const std::int32_t*>(text.constBuffer()) - 3;
    EXPECT_EQ(header[0], 1);
    EXPECT_EQ(header[1], 3);
    EXPECT_EQ(header[2], 3);
}

// As a binding does it that knows nothing but the names of the exports.
TYPED_TEST(Block, CopiesAreMadeAndDestroyedByName) {
    const std::string name = sizeof(*TypeParam().constBuffer()) == 1 ? "4Kelm" : "7WString";
    void* const library = dlopen("libkelm.so.1", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    for (const char* kind : {"1", "2"}) {
        void* copy = dlsym(library, ("_ZN" + name + "C" + kind + "ERKS_").c_str());
        void* destroy = dlsym(library, ("_ZN" + name + "D" + kind + "Ev").c_str());
        ASSERT_TRUE(copy != nullptr && destroy != nullptr) << kind;
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

TYPED_TEST(Block, EmptyValuesCostNothing) {
    const typename Twin<TypeParam>::Unit* null = nullptr;
    expect_nil(Open<TypeParam>(T_("")));
    expect_nil(Open<TypeParam>(null));
    Open<TypeParam> text(T_("abc"));
    text.Empty();
    expect_nil(text);
    Open<TypeParam> copy(text);
    copy = text;
    copy.GetBuffer(0);
    copy.ReleaseBuffer();
    copy.GetBufferSetLength(0);
    copy.Append(T_(""));
    copy.MakeUpper();
    copy.TrimRight();
    copy.TrimLeft();
    copy.Remove(T_("x")[0]);
    copy.Replace(T_("x")[0], T_("y")[0]);
    copy.FreeExtra();
    copy.AssignCopy(0, T_(""));
    expect_nil(copy);
}

TYPED_TEST(Block, CopiesShareAndWritersLeave) {
    Open<TypeParam> a(T_("abc"));
    Open<TypeParam> b(a);
    Open<TypeParam> c;
    c = a;
    EXPECT_EQ(a.Refs(), 3);
    EXPECT_EQ(b.constBuffer(), a.constBuffer());
    c = b;
    EXPECT_EQ(a.Refs(), 3);
    b.SetAt(1, T_("X")[0]);
    EXPECT_EQ(a.Refs(), 2);
    EXPECT_EQ(b.Refs(), 1);
    EXPECT_TRUE(a == T_("abc") && b == T_("aXc") && c == T_("abc"));
    c = std::move(a);
    EXPECT_EQ(c.Refs(), 1);
    expect_nil(a);
    TypeParam& self = c;
    c = self;
    EXPECT_TRUE(c == T_("abc"));
    c = std::move(self);
    expect_nil(c);
}

TYPED_TEST(Block, CopyBeforeWriteTakesTheLengthAlone) {
    Open<TypeParam> a = with_room(Open<TypeParam>(T_("abc")), 10);
    Open<TypeParam> b(a);
    b.CopyBeforeWrite();
    EXPECT_EQ(b.GetAllocLength(), 3);
    EXPECT_EQ(a.GetAllocLength(), 10);
    EXPECT_EQ(a.Refs(), 1);
    a.ReleaseBuffer(0);
    Open<TypeParam> c(a);
    EXPECT_EQ(a.Refs(), 2);
    c.CopyBeforeWrite();
    expect_nil(c);
}

TYPED_TEST(Block, GetBufferGivesExactlyWhatIsMissing) {
    Open<TypeParam> text;
    text.GetBuffer(5);
    EXPECT_EQ(text.GetAllocLength(), 5);
    EXPECT_EQ(text.GetLength(), 0);
    text = T_("hello");
    const auto* place = text.constBuffer();
    EXPECT_EQ(text.GetBuffer(2), place);
    Open<TypeParam> sharer(text);
    EXPECT_NE(sharer.GetBuffer(2), place);
    EXPECT_EQ(sharer.GetAllocLength(), 5);
    EXPECT_TRUE(sharer == T_("hello"));
    sharer.GetBuffer(100);
    EXPECT_EQ(sharer.GetAllocLength(), 100);
    EXPECT_EQ(sharer.GetLength(), 5);
    sharer.GetBufferSetLength(3);
    EXPECT_TRUE(sharer == T_("hel") && sharer.GetAllocLength() == 100);
    sharer.GetBufferSetLength(7);
    EXPECT_EQ(sharer.GetLength(), 7);
    EXPECT_EQ(sharer[7], 0);
    sharer.ReleaseBuffer();
    EXPECT_EQ(sharer.GetLength(), 3);
    sharer.FreeExtra();
    EXPECT_EQ(sharer.GetAllocLength(), 3);
    Open<TypeParam> other(text);
    other.ReleaseBuffer(2);
    EXPECT_TRUE(other == T_("he") && text == T_("hello"));
}

TYPED_TEST(Block, AssignmentKeepsABlockWithRoom) {
    Open<TypeParam> text = with_room(Open<TypeParam>(T_("hello")), 10);
    const auto* place = text.constBuffer();
    text = T_("");
    text = TypeParam();
    EXPECT_EQ(text.constBuffer(), Open<TypeParam>().constBuffer());  // a move takes the source's
    text = with_room(Open<TypeParam>(T_("hello")), 10);
    place = text.constBuffer();
    const TypeParam empty;
    text = empty;
    EXPECT_TRUE(text.constBuffer() == place && text.IsEmpty() && text.GetAllocLength() == 10);
    text.Empty();
    EXPECT_EQ(text.GetAllocLength(), 10);
    text = T_("x")[0];
    text = text.constBuffer();
    EXPECT_TRUE(text == T_("x") && text.constBuffer() == place);
    text.Empty();
    expect_nil(text);
    text = typename Twin<TypeParam>::Unit();
    EXPECT_EQ(text.GetLength(), 1);
}

TYPED_TEST(Block, AssigningPartOfTheOwnText) {
    Open<TypeParam> text(T_("abcdef"));
    text = text.constBuffer() + 2;
    EXPECT_TRUE(text == T_("cdef") && text.GetAllocLength() == 6);
    Open<TypeParam> sharer(text);
    sharer.AssignCopy(2, sharer.constBuffer() + 1);
    EXPECT_TRUE(sharer == T_("de") && text == T_("cdef") && text.Refs() == 1);
}

TYPED_TEST(Block, AppendsInPlaceOnlyWithRoom) {
    using String = typename Twin<TypeParam>::String;
    Open<TypeParam> text;
    text.Append(T_("abcde"));
    text.Append(T_("f")[0]);
    EXPECT_EQ(text.GetAllocLength(), 6);
    Open<TypeParam> room = with_room(Open<TypeParam>(T_("ab")), 10);
    const auto* place = room.constBuffer();
    room << T_("c")[0] << T_("de") << T_("fgh");
    EXPECT_TRUE(room == T_("abcdefgh") && room.constBuffer() == place);
    Open<TypeParam> sharer(room);
    sharer += T_("");
    EXPECT_EQ(sharer.constBuffer(), place);
    sharer += T_("i");
    EXPECT_EQ(sharer.GetAllocLength(), 9);
    EXPECT_TRUE(room == T_("abcdefgh") && room.Refs() == 1);
    room.ReleaseBuffer(3);
    room += room;
    EXPECT_TRUE(room == T_("abcabc") && room.constBuffer() == place);
    Open<TypeParam> full(T_("abc"));
    full.Append(full.constBuffer() + 1);
    full.Append(full);
    EXPECT_TRUE(full == T_("abcbcabcbc") && full.GetAllocLength() == 10);
    full.Append(typename Twin<TypeParam>::Unit());
    EXPECT_EQ(whole(full), String(T_("abcbcabcbc")) + String(1, 0));
    full.Append(full);
    EXPECT_EQ(full.GetLength(), 22);
}

TYPED_TEST(Block, JoiningNeverShares) {
    const Open<TypeParam> text(T_("abc"));
    const Open<TypeParam> same(text + T_(""));
    EXPECT_NE(same.constBuffer(), text.constBuffer());
    EXPECT_EQ(same.Refs(), 1);
    expect_nil(Open<TypeParam>(TypeParam() + TypeParam()));
    const typename Twin<TypeParam>::Unit nul = 0;
    EXPECT_EQ((text + nul).GetLength(), 4);
    EXPECT_TRUE(T_("x")[0] + text + text + T_("y") == T_("xabcabcy"));
    EXPECT_TRUE(T_("xy") + text == T_("xyabc"));
}

TYPED_TEST(Block, AllocCopyAndMoveAssign) {
    const Open<TypeParam> text(T_("abcdef"));
    Open<TypeParam> piece;
    text.AllocCopy(piece, 2, 1, 3);
    EXPECT_EQ(piece.GetLength(), 5);
    EXPECT_EQ(piece[5], 0);
    EXPECT_TRUE(piece.Left(2) == T_("bc"));
    piece.Release();
    text.AllocCopy(piece, 0, 0, 0);
    expect_nil(piece);
    piece.MoveAssign(piece);
    expect_nil(piece);
}

TYPED_TEST(Block, TooLongIsAFailedAllocation) {
    const int nMost = sizeof(typename Twin<TypeParam>::Unit) == 1 ? 2147483634 : 1073741816;
    Open<TypeParam> text(T_("abc"));
    EXPECT_THROW(text.GetBuffer(nMost + 1), std::bad_alloc);
    EXPECT_THROW(TypeParam::FromRepeat(T_("x")[0], nMost + 1), std::bad_alloc);
    EXPECT_THROW(text.ConcatInPlace(INT_MAX - 1, text), std::bad_alloc);
    EXPECT_TRUE(text == T_("abc"));
}

TEST(Lock, StaysWithOneHolder) {
    Open<Kelm> text("hello");
    const Open<Kelm> sharer(text);
    char* place = text.LockBuffer();
    EXPECT_EQ(sharer.Refs(), 1);
    EXPECT_EQ(text.Refs(), -1);
    text.SetAt(1, '\0');
    const Open<Kelm> copy(text);
    Open<Kelm> assigned;
    assigned = static_cast<const Kelm&>(text);
    EXPECT_EQ(whole(copy), "h");
    EXPECT_EQ(whole(assigned), std::string("h\0llo", 5));
    text.LockBuffer();
    text = static_cast<const Kelm&>(sharer);
    EXPECT_TRUE(text.constBuffer() == place && text.Refs() == -1);
    text.Empty();
    EXPECT_TRUE(text.constBuffer() == place && text.IsEmpty() && text.GetAllocLength() == 5);
    --text;
    EXPECT_EQ(text.Refs(), -1);
    Open<Kelm> moved(std::move(text));
    EXPECT_TRUE(moved.constBuffer() == place && moved.Refs() == -1);
    moved.UnlockBuffer();
    EXPECT_EQ(moved.Refs(), 1);
    moved.LockBuffer();
    moved.Append("too long for it");
    EXPECT_EQ(moved.Refs(), 1);
    moved.LockBuffer();
    moved.Release();
    expect_nil(moved);
    moved.LockBuffer();
    moved.UnlockBuffer();
    expect_nil(moved);
}

TEST(Lock, EndsWithTheSpareRoom) {
    Open<Kelm> text("hello");
    text.LockBuffer();
    text.FreeExtra();
    EXPECT_EQ(text.Refs(), -1);
    text.ReleaseBuffer(2);
    text.FreeExtra();
    EXPECT_TRUE(text.Refs() == 1 && text == "he" && text.GetAllocLength() == 2);
}

TEST(Narrow, ConstructorsOfItsOwn) {
    EXPECT_EQ(whole(Kelm("a\0b", 3)), std::string("a\0b", 3));
    expect_nil(Open<Kelm>(nullptr, 0));
    expect_nil(Open<Kelm>("abc", -1));
    const unsigned char bytes[] = {0xE9, 'x', 0};
    Kelm text(bytes);
    EXPECT_EQ(whole(text), "\xE9x");
    text = bytes + 1;
    EXPECT_STREQ(text, "x");
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

#include <Kelm.h>

// The control: what is right compiles, so that each block below fails for its own line alone.
void Use(Kelm& narrow, WString& wide) {
    narrow = wide.ToKelm();
    wide = narrow;
    wide = wide + narrow + "text" + u"text";
    narrow.Format("%s %d", narrow.constBuffer(), narrow.To<int>());
    narrow.SetAt(0, 'x');

#ifdef WIDE_VALUE_CONSTRUCTS_NARROW
    Kelm wrong(wide);
#endif
#ifdef WIDE_VALUE_ASSIGNED_TO_NARROW
    narrow = wide;
#endif
#ifdef WIDE_VALUE_APPENDED_TO_NARROW
    narrow += wide;
#endif
#ifdef WIDE_LITERAL_CONSTRUCTS_NARROW
    Kelm wrong(u"text");
#endif
#ifdef NARROW_VALUE_LEFT_OF_WIDE
    wide = narrow + wide;
#endif
#ifdef NARROW_LITERAL_LEFT_OF_WIDE
    wide = "text" + wide;
#endif
#ifdef NARROW_COMPARED_WITH_WIDE
    narrow.Compare(wide);
#endif
#ifdef TOKENS_OF_WIDE_TEXT
    Kelm::Token wrong(wide);
#endif
#ifdef READ_AS_SHORT
    narrow.To<short>();
#endif
#ifdef ELEMENT_AS_REFERENCE
    narrow[0] = 'x';
#endif
#ifdef WRITING_THROUGH_CONST_BUFFER
    *narrow.constBuffer() = 'x';
#endif
#ifdef BLOCK_FROM_OUTSIDE
    narrow.GetData();
#endif
#ifdef WIDE_FORMATTING_FROM_OUTSIDE
    wide.Format(u"%d", 1);
#endif
}

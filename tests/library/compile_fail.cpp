#include <Kelm.h>

enum Colour { kRed };
struct Wide : WString {
    using WString::Format;
};

// The control: what is right compiles, so that each block below fails for its own line alone.
void Use(Kelm& narrow, WString& wide) {
    narrow = wide.ToKelm();
    wide = narrow;
    wide = wide + narrow + "text" + u"text";
    narrow.Format("%s %d", narrow.constBuffer(), narrow.To<int>());
    narrow.SetAt(0, 'x');
    char array[] = "array";
    narrow.Format(narrow, "literal", array, nullptr, kRed, 1.5F, true, &narrow);
    narrow.FormatMsg(0, narrow);
    narrow.AppendFormat("%d", int{kRed});
    Wide formatted;
    formatted.Format(wide, u"literal", array, 'c');
    for (Kelm::Token token(narrow); token; ++token) {
        narrow = Kelm::Token(Kelm("in one expression")).Current();
    }
    const char* kept = narrow;
    narrow = Kelm("in one expression").constBuffer() + (kept == nullptr ? 1 : 0);
    narrow = Kelm("in one ") << 'e' << "xpression";
    Kelm& itself = (narrow += "x");
    wide = WString(u"in one ") << itself << 1;

#ifdef WIDE_VALUE_CONSTRUCTS_NARROW  // no matching
    Kelm wrong(wide);
#endif
#ifdef WIDE_VALUE_ASSIGNED_TO_NARROW  // no match for|no viable|conversion
    narrow = wide;
#endif
#ifdef WIDE_VALUE_APPENDED_TO_NARROW  // no match for|no viable|conversion
    narrow += wide;
#endif
#ifdef WIDE_LITERAL_CONSTRUCTS_NARROW  // no matching
    Kelm wrong(u"text");
#endif
#ifdef NARROW_VALUE_LEFT_OF_WIDE  // deleted
    wide = narrow + wide;
#endif
#ifdef NARROW_LITERAL_LEFT_OF_WIDE  // deleted
    wide = "text" + wide;
#endif
#ifdef NARROW_COMPARED_WITH_WIDE  // cannot convert|no viable
    narrow.Compare(wide);
#endif
#ifdef TOKENS_OF_WIDE_TEXT  // no matching
    Kelm::Token wrong(wide);
#endif
#ifdef READ_AS_SHORT  // deleted
    narrow.To<short>();
#endif
#ifdef TRIMMED_IN_VAIN  // ignoring return value
    narrow.Trim();
#endif
#ifdef ELEMENT_AS_REFERENCE  // lvalue required|not assignable
    narrow[0] = 'x';
#endif
#ifdef WRITING_THROUGH_CONST_BUFFER  // read-only
    *narrow.constBuffer() = 'x';
#endif
#ifdef BLOCK_FROM_OUTSIDE  // protected
    narrow.GetData();
#endif
#ifdef WIDE_FORMATTING_FROM_OUTSIDE  // protected
    wide.Format(u"%d", 1);
#endif
#ifdef OBJECT_TO_FORMAT  // deleted
    narrow.Format("%s", narrow);
#endif
#ifdef OBJECT_BEHIND_OTHERS_TO_FORMAT  // deleted
    Kelm::FromFormat("%d %s", 1, wide);
#endif
#ifdef OBJECT_TO_MESSAGE  // deleted
    narrow.FormatMsg(0, "%s", Kelm("text"));
#endif
#ifdef OBJECT_TO_WIDE_FORMAT  // deleted
    formatted.Format(u"%s", wide);
#endif
#ifdef LIFETIME_TOKEN_OF_TEMPORARY  // Wdangling
    Kelm::Token wrong(Kelm("text"));
#endif
#ifdef LIFETIME_POINTER_KEPT  // Wdangling
    const char* wrong = Kelm("text");
#endif
#ifdef LIFETIME_BUFFER_KEPT  // Wdangling
    const char* wrong = narrow.Mid(1).constBuffer();
#endif
#ifdef LIFETIME_WIDE_POINTER_KEPT  // Wdangling
    const char16_t* wrong = wide + u'x';
#endif
#ifdef LIFETIME_POINTER_KEPT_OF_APPENDED  // Wdangling
    const char* wrong = Kelm("text") << 'x' << narrow;
#endif
#ifdef LIFETIME_REFERENCE_KEPT  // Wdangling
    const WString& wrong = WString(wide).Append(u'x');
#endif
}

// A mistake a line, with the number of the conversion (0: none takes the argument) and the fault.
#include <Kelm.h>

#include <cstdint>
#include <string>

enum class Scoped { kOne };
enum Colour : long long { kRed };
struct Members {
    static const std::int64_t kMost = 5;
    int field;
};

struct Wide : WString {
    static void Plant(Kelm& k, const char* n, const char16_t* u, const wchar_t* t, void* v, int i,
                      std::int64_t l, char16_t c) {
        Wide w;
        k.Format("%d");                              // 1 has no argument
        k.Format("%d %d", i);                        // 2 has no argument
        k.Format("%s: %s, %d", n, n);                // 3 has no argument
        k.Format("%*d", i);                          // 1 has no argument
        k.Format("%.*f", i);                         // 1 has no argument
        k.Format("%n");                              // 1 has no argument
        k.Format("none", i);                         // 0 is taken by no conversion
        k.Format("%d%%", i, i);                      // 0 is taken by no conversion
        k.Format("%%d", i);                          // 0 is taken by no conversion
        k.Format("%d", i, n, n);                     // 0 is taken by no conversion
        k.Format("", nullptr);                       // 0 is taken by no conversion
        k.Format("%d", l);                           // 1 takes an int
        k.Format("%ld", l);                          // 1 takes an int
        k.Format("%I32u", 5000000000LL);             // 1 takes an int
        k.Format("%08X", sizeof i);                  // 1 takes an int
        k.Format("%d and %d", i, l);                 // 2 takes an int
        k.Format("%hd", n);                          // 1 takes an int
        k.Format("%d", 1.0);                         // 1 takes an int
        k.Format("%i", kRed);                        // 1 takes an int
        k.Format("%u", Scoped::kOne);                // 1 takes an int
        k.Format("%o", Members::kMost);              // 1 takes an int
        k.Format("%x", v);                           // 1 takes an int
        k.Format("%d", nullptr);                     // 1 takes an int
        k.Format("%I64d", i);                        // 1 takes a 64-bit integer
        k.Format("%I64X", 'x');                      // 1 takes a 64-bit integer
        k.Format("%s %I64u", n, 2.5);                // 2 takes a 64-bit integer
        k.Format("%I64d", n);                        // 1 takes a 64-bit integer
        k.Format("%f", i);                           // 1 takes a double
        k.Format("%5.1f %%", l);                     // 1 takes a double
        k.Format("%g", 1.0L);                        // 1 takes a double
        k.Format("%e", n);                           // 1 takes a double
        k.Format("%p", l);                           // 1 takes a pointer
        k.Format("%n", i);                           // 1 takes a pointer
        k.Format("%p", &Members::field);             // 1 takes a pointer
        k.Format("%s", i);                           // 1 takes narrow text
        k.Format("%-8s|", u);                        // 1 takes narrow text
        k.Format("%s", *n);                          // 1 takes narrow text
        k.Format("%s", t);                           // 1 takes narrow text
        k.Format("%hS", u);                          // 1 takes narrow text
        k.Format("%s", &n);                          // 1 takes narrow text
        k.Format("%.3s", v);                         // 1 takes narrow text
        k.Format("%Ls", u);                          // 1 takes narrow text
        k.Format("%S", n);                           // 1 takes wide text
        k.Format("%ls", "text");                     // 1 takes wide text
        k.Format("%d %s %S", i, n, L"text");         // 3 takes wide text
        k.Format("%c", c);                           // 1 takes a narrow character
        k.Format("%hC", L'x');                       // 1 takes a narrow character
        k.Format("%c", n);                           // 1 takes a narrow character
        k.Format("%C", *n);                          // 1 takes a wide character
        k.Format("%lc", "x");                        // 1 takes a wide character
        k.Format("%*d", l, i);                       // 1 takes an int as width or precision
        k.Format("%.*s", sizeof i, n);               // 1 takes an int as width or precision
        k.Format("%lld", 5LL);                       // 1 is not in the language
        k.Format("%zu", sizeof i);                   // 1 is not in the language
        k.Format("%d %E", i, 1.0);                   // 2 is not in the language
        k.Format("%*5d", i, i);                      // 1 is not in the language
        k.Format("%I64s", n);                        // 1 is not in the language
        k.Format("%.-3d", i);                        // 1 is not in the language
        k.Format("100 %");                           // 1 is not in the language
        k.AppendFormat("%s", k);                     // 1 is given an object
        k = Kelm::FromFormat("%d%s", i, WString());  // 2 is given an object
        k.FormatMsg(5, "%*s", k, n);                 // 1 is given an object
        k.Format("%s", std::string(n));              // 1 is given an object
        w.Format(u"%s", n);                          // 1 takes wide text
        w.AppendFormat(u"%d %S", i, u);              // 2 takes narrow text
        k = w.FromFormat(u"%hs%c", n, *n).ToKelm();  // 2 takes a wide character
        w.Format(u"%s", w);                          // 1 is given an object
    }
};

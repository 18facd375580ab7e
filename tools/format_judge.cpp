// Judges calls by the language of the library itself. `tools/check-formats` builds and loads it.
#include <KelmCheck.h>

namespace {

const char* TextOf(KelmCheck::Fault fault) {
    using KelmCheck::Fault;
    switch (fault) {
        case Fault::IsNotInTheLanguage:
            return "is not in the language";
        case Fault::HasNoArgument:
            return "has no argument";
        case Fault::IsGivenAnObject:
            return "is given an object";
        case Fault::TakesAnIntAsWidthOrPrecision:
            return "takes an int as width or precision";
        case Fault::TakesAnInt:
            return "takes an int";
        case Fault::TakesA64BitInteger:
            return "takes a 64-bit integer";
        case Fault::TakesADouble:
            return "takes a double";
        case Fault::TakesAPointer:
            return "takes a pointer";
        case Fault::TakesNarrowText:
            return "takes narrow text";
        case Fault::TakesWideText:
            return "takes wide text";
        case Fault::TakesANarrowCharacter:
            return "takes a narrow character";
        case Fault::TakesAWideCharacter:
            return "takes a wide character";
        case Fault::None:
        case Fault::Count:
            break;
    }
    return "is taken by no conversion";
}

}  // namespace

/// `types` has a letter of `KelmCheck::Type` for each argument. `report` is called for each fault
/// with the numbers of the conversion (0: none) and of the argument, where the conversion stands in
/// the format, its length, and what is wrong.
extern "C" void Judge(const void* format, bool isWide, const char* types, int count,
                      void (*report)(int, int, int, int, const char*)) {
    const auto found = [report](const KelmCheck::Finding& finding) {
        report(finding.conversion, finding.argument, finding.first, finding.length,
               TextOf(finding.fault));
    };
    const auto* given = reinterpret_cast<const KelmCheck::Type*>(types);
    if (isWide) {
        KelmCheck::Examine(static_cast<const char16_t*>(format), given, count, found);
    } else {
        KelmCheck::Examine(static_cast<const char*>(format), given, count, found);
    }
}

#include "source.h"

#include <langinfo.h>

#include <cerrno>

bool IsNumber(const Kelm& text) {
    return !text.IsEmpty() && text.IsDigit();
}

Source ParseSource(const Kelm& argument) {
    const int colon = argument.ReverseFind(':');
    const Kelm page = argument.Mid(colon + 1);
    if (colon <= 0 || !IsNumber(page)) {
        return {argument, 0};
    }
    return {argument.Left(colon), page.To<unsigned int>()};
}

bool IsKnownCodePage(unsigned int codePage) {
    return !WString::FromCodePage("a", codePage).IsEmpty();
}

Kelm CodePageName(unsigned int codePage) {
    if (codePage != 0) {
        return Kelm::From(codePage);
    }
    const Kelm codeset = nl_langinfo(CODESET);
    return codeset == "ANSI_X3.4-1968" ? Kelm("UTF-8") : codeset;  // as the library reads C
}

File OpenFile(const Kelm& path) {
    return File(std::fopen(path, "rb"), &std::fclose);
}

bool FinishOutput(const char* program) {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return true;
    }
    Kelm message;
    message.FormatMsg(static_cast<std::uint32_t>(errno), "%s: the output is incomplete", program);
    std::fprintf(stderr, "%s\n", message.constBuffer());
    return false;
}

#pragma once

#include <Kelm.h>

#include <cstdio>
#include <memory>

/// Takes over the locale of the user. One without character classes beyond ASCII gets those of
/// UTF-8, by which the library reads text there.
void UseLocaleOfUser();

/// A file named on the command line as FILE or FILE:CODEPAGE; the file `-` is standard input.
struct Source {
    Kelm path;
    unsigned int codePage;  ///< 0, the process's own, where the argument names none
};

/// What stands behind the last colon is the code page if it is a number, else part of the name.
Source ParseSource(const Kelm& argument);

/// Whether the text is made of decimal digits only, and of at least one.
bool IsNumber(const Kelm& text);

/// Whether the library can decode the code page.
bool IsKnownCodePage(unsigned int codePage);

/// A message that names the known code pages whose numbers look most like this one.
Kelm UnknownCodePage(unsigned int codePage);

/// The code page for a message: its number, or the name of the process's own.
Kelm CodePageName(unsigned int codePage);

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// Null, with `errno` set, if the file cannot be opened.
File OpenFile(const Kelm& path);

/// Closes stdout; complains on stderr and gives false if something could not be written.
bool FinishOutput(const char* program);

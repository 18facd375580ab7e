#pragma once

#include <cstddef>

#include "print/sink.h"
#include "print/syntax.h"

namespace platform {

/// Prints terminated text of the other width, converted, up to `limit` units of the sink and
/// without cutting a character; the result is the number of units. Throws `std::bad_alloc`.
std::size_t put_converted(Sink<char>& sink, const CodePage& page, const char16_t* text,
                          std::size_t limit);
std::size_t put_converted(Sink<char16_t>& sink, const CodePage& page, const char* text,
                          std::size_t limit);

/// The same for a single unit, which may be NUL.
std::size_t put_converted_unit(Sink<char>& sink, const CodePage& page, char16_t unit);
std::size_t put_converted_unit(Sink<char16_t>& sink, const CodePage& page, char unit);

}  // namespace platform

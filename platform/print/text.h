#pragma once

#include <cstddef>

#include "print/sink.h"
#include "print/syntax.h"

namespace platform {

/// Prints terminated text of the other width, converted, up to `limit` units of the sink and
/// without cutting a character; the result is the number of units. Throws `std::bad_alloc`.
template <class Unit, class Other>
std::size_t put_converted(Sink<Unit>& sink, const CodePage& own, const Other* text,
                          std::size_t limit);

/// Does that for a single unit, which may be NUL.
template <class Unit, class Other>
std::size_t put_converted_unit(Sink<Unit>& sink, const CodePage& own, Other unit);

}  // namespace platform

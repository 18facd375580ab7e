// The members that the header defines, as symbols of the library: a binding or a look-up by name
// needs to copy and destroy values too. This source is compiled without inlining, so that what it
// uses is emitted.

#include <new>
#include <tuple>

#include "Kelm.h"

namespace {

/// Reaches the protected ones.
template <class Text, class Pointer>
struct Open : Text {
    static constexpr auto kReaders =
        std::make_tuple(&Text::GetLength, &Text::GetAllocLength, &Text::GetByteLength,
                        &Text::IsEmpty, &Text::constBuffer, &Text::operator Pointer, &Text::GetAt,
                        &Text::operator[], &Text::Char, &Open::GetData);

    static void CopyAndDestroy(const Text& text, void* place) { (new (place) Text(text))->~Text(); }
};

using Narrow = Open<Kelm, const char*>;
using Wide = Open<WString, const char16_t*>;

[[gnu::used]] const auto narrowReaders = Narrow::kReaders;
[[gnu::used]] const auto wideReaders = Wide::kReaders;
[[gnu::used]] void (*const copyNarrow)(const Kelm&, void*) = Narrow::CopyAndDestroy;
[[gnu::used]] void (*const copyWide)(const WString&, void*) = Wide::CopyAndDestroy;

}  // namespace

// What a compiled client relies on. A change here is another major version.

#include <Kelm.h>

#include <cstddef>

template <class Text>
constexpr bool is_value() {
    return sizeof(Text) == sizeof(void*) && alignof(Text) == alignof(void*) &&
           std::is_standard_layout<Text>::value && !std::is_polymorphic<Text>::value &&
           std::is_nothrow_default_constructible<Text>::value &&
           std::is_nothrow_move_constructible<Text>::value &&
           std::is_nothrow_move_assignable<Text>::value &&
           std::is_nothrow_destructible<Text>::value;
}
static_assert(is_value<Kelm>() && is_value<WString>(), "values are a pointer");

template <class Header>
constexpr bool is_header() {
    return sizeof(Header) == 12 && alignof(Header) == 4 && std::is_trivial<Header>::value &&
           offsetof(Header, nRefs) == 0 && offsetof(Header, nDataLength) == 4 &&
           offsetof(Header, nAllocLength) == 8;
}
static_assert(is_header<KelmData>() && is_header<WStringData>(), "headers are three numbers");

static_assert(sizeof(Kelm::Token) == 2 * sizeof(void*) + 6 * sizeof(int) &&
                  std::is_trivially_copyable<Kelm::Token>::value,
              "a tokenizer is two pointers, four numbers and two flags");
static_assert(KelmMostRefs == 1U << 30, "clients compare with it");

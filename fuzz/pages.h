#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <string>

#include "oracle.h"
#include "require.h"

/// What the fuzz targets of the code pages share: the pages, and the C library's converters to
/// compare with.
namespace fuzz {

struct Page {
    unsigned int number;
    const char* converter;
    bool isComposed;  ///< the converter joins characters that the library decodes one by one
};

inline constexpr Page kPages[] = {
    {65001, "UTF-8", false},  {20127, "ASCII", false},  {28591, "ISO-8859-1", false},
    {1252, "CP1252", false},  {1255, "CP1255", true},   {1258, "CP1258", true},
    {864, "IBM864", false},   {500, "IBM500", false},   {932, "CP932", false},
    {936, "GBK", false},      {949, "CP949", false},    {950, "BIG5", false},
    {1361, "JOHAB", false},   {939, "IBM939", false},   {51932, "EUC-JP-MS", false},
    {51936, "EUC-CN", false}, {51949, "EUC-KR", false}, {54936, "GB18030", false},
};

/// The byte before the text chooses the page.
inline const Page& page_of(std::uint8_t byte) {
    return kPages[byte % std::size(kPages)];
}

/// The whole text converted, nothing where the converter finds fault with it.
inline std::optional<std::string> Convert(const char* to, const char* from,
                                          const std::string& text) {
    std::string result;
    return oracle::Iconv(to, from).Convert(text, result) == 0 ? std::optional(result)
                                                              : std::nullopt;
}

/// A value that says what it holds: its length is its capacity, and a terminator follows.
template <class Value>
void CheckBlock(const Value& value) {
    Require(value.constBuffer()[value.GetLength()] == 0);
    Require(value.GetAllocLength() == value.GetLength());
}

}  // namespace fuzz

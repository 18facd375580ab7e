#include <Kelm.h>

#include <cstring>
#include <string>

#include "pages.h"

namespace {

bool HasTags(const std::u16string& text) {
    return text.find(u'\xDB40') != std::u16string::npos;
}

void Check(const fuzz::Page& page, const std::u16string& text) {
    WString wide;
    std::memcpy(wide.GetBufferSetLength(static_cast<int>(text.size())), text.data(),
                text.size() * sizeof(char16_t));
    const Kelm narrow = wide.ToKelm(page.number);
    fuzz::CheckBlock(narrow);
    fuzz::Require(narrow.IsEmpty() == text.empty());

    const std::string bytes(narrow.constBuffer(), static_cast<std::size_t>(narrow.GetLength()));
    const auto wanted = fuzz::Convert(page.converter, oracle::kUtf16, oracle::bytes_of(text));
    // There the library has a backslash and the C library a won sign.
    const bool isCorrected = page.number == 1361 && text.find(u'\u20A9') != std::u16string::npos;
    fuzz::Require(!wanted || HasTags(text) || isCorrected || bytes == *wanted);
    const WString back = WString::FromCodePage(narrow, page.number);
    if (page.number == 54936 || page.number == 65001) {
        fuzz::Require(!wanted || HasTags(text) || back.Compare(wide.constBuffer()) == 0);
        fuzz::Require(back.ToKelm(page.number) == narrow);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        std::u16string text((size - 1) / sizeof(char16_t), u'\0');
        std::memcpy(text.data(), data + 1, text.size() * sizeof(char16_t));
        Check(fuzz::page_of(data[0]), text);
    }
    return 0;
}

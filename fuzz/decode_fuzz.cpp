#include <Kelm.h>

#include <string>

#include "pages.h"

namespace {

bool IsPaired(const std::u16string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((text[i] & 0xFC00) == 0xD800 && i + 1 < text.size()) {
            ++i;
            if ((text[i] & 0xFC00) != 0xDC00) {
                return false;
            }
        } else if ((text[i] & 0xF800) == 0xD800) {
            return false;
        }
    }
    return true;
}

void Check(const fuzz::Page& page, const std::string& bytes) {
    const Kelm narrow(bytes.data(), static_cast<int>(bytes.size()));
    const WString wide = WString::FromCodePage(narrow, page.number);
    fuzz::CheckBlock(wide);
    const std::u16string text(wide.constBuffer(), static_cast<std::size_t>(wide.GetLength()));
    fuzz::Require(IsPaired(text));

    const auto wanted = fuzz::Convert(oracle::kUtf16, page.converter, bytes);
    // There the library has a backslash and the C library a won sign.
    const bool isCorrected = page.number == 1361 && bytes.find('\\') != std::string::npos;
    if (wanted && !page.isComposed && !isCorrected) {
        fuzz::Require(text == oracle::units(*wanted));
    }
    if (page.number == 65001) {
        const Kelm back = wide.ToKelm(page.number);
        fuzz::Require(WString::FromCodePage(back, page.number) == wide);
        fuzz::Require(!wanted || back == narrow);
        fuzz::Require(wanted || text.find(u'\xFFFD') != std::u16string::npos);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        Check(fuzz::page_of(data[0]), std::string(data + 1, data + size));
    }
    return 0;
}

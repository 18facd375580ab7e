#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// All texts of up to `nMost` units over the letters.
template <class Unit>
std::vector<std::basic_string<Unit>> all_texts(const std::basic_string<Unit>& letters,
                                               std::size_t nMost) {
    std::vector<std::basic_string<Unit>> texts{{}};
    for (std::size_t n = 0; texts[n].size() < nMost; ++n) {
        for (const Unit ch : letters) {
            texts.push_back(texts[n] + ch);
        }
    }
    return texts;
}

/// The number of hits, which do not overlap.
template <class String>
int replace_all(String& text, const String& from, const String& to) {
    String result;
    std::size_t nFrom = 0;
    int nHits = 0;
    for (auto at = text.find(from); at != String::npos; at = text.find(from, nFrom), ++nHits) {
        result.append(text, nFrom, at - nFrom).append(to);
        nFrom = at + from.size();
    }
    text = result.append(text, nFrom);
    return nHits;
}

/// -1, 0 or 1.
inline int sign(int n) {
    return (n > 0) - (n < 0);
}

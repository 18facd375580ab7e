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

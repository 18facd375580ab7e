#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "open.h"
#include "texts.h"

using Twins = ::testing::Types<Kelm, WString>;

/// A literal in the width of the test's class.
#define T_(literal) (Twin<TypeParam>::Pick(literal, u##literal))

/// The whole text in a block with room for at least so many units.
template <class Text>
Open<Text> from(const typename Twin<Text>::String& text, std::size_t nRoom = 0) {
    Open<Text> result;
    result.GetBuffer(static_cast<int>(std::max(nRoom, text.size())));
    std::copy(text.begin(), text.end(), result.GetBufferSetLength(static_cast<int>(text.size())));
    return result;
}

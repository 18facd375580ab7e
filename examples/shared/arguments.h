#pragma once

#include <Kelm.h>

#include <functional>
#include <vector>

/// Wrong arguments; the text says what is wrong with them.
struct WrongUse {
    Kelm text;
};

/// What is done with each kind of argument.
struct ArgumentTakers {
    std::function<void(const Kelm& file)> file;
    std::function<bool(const Kelm& name)> option;  ///< false if it is none without a value
    std::function<void(const Kelm& name, const Kelm& value)> optionWithValue;
};

/// Hands out the arguments in their order. Behind `--` there are only files. Throws `WrongUse`.
void TakeArguments(const std::vector<Kelm>& arguments, const ArgumentTakers& takers);

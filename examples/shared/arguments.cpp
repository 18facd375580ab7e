#include "arguments.h"

void TakeArguments(const std::vector<Kelm>& arguments, const ArgumentTakers& takers) {
    bool isFile = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const Kelm& argument = arguments[i];
        if (isFile || argument.Left(2) != "--") {
            takers.file(argument);
        } else if (argument == "--") {
            isFile = true;
        } else if (takers.option(argument)) {
            continue;
        } else if (i + 1 < arguments.size()) {
            takers.optionWithValue(argument, arguments[++i]);
        } else {
            throw WrongUse{argument + " is no option, or lacks its value"};
        }
    }
}

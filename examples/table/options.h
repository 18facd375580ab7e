#pragma once

#include <Kelm.h>

#include <vector>

#include "../shared/source.h"

struct Input {
    Source source;
    char delimiter;
};

/// What one option asks to do with a field, which is still text: names are known only when the
/// first file is open.
struct Request {
    enum Kind { Replace, Remove, Tabs, Keep, Sort };
    Kind kind;
    Kelm text;
};

struct Options {
    std::vector<Input> inputs;
    bool hasHeader = false;
    Kelm names;
    Kelm comment;
    std::vector<Request> requests;
    bool anyCase = false;
    Kelm fields;
    Kelm alike;
    int alikeLimit = 5000;
    int first = -1;  // all
    int width = 60;  // of a column; 0: as wide as it takes
    bool isDelimited = false;
    unsigned int outputPage = 0;
    char outputDelimiter = '\t';
    int problems = 20;
    bool help = false;
};

extern const char* const kHelp;

/// Throws `WrongUse`.
Options ParseArguments(const std::vector<Kelm>& arguments);

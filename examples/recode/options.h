#pragma once

#include <Kelm.h>

#include <vector>

struct Options {
    std::vector<Kelm> paths;
    std::vector<unsigned int> from;  ///< several: the first that defines every byte of a file
    unsigned int to = 65001;
    bool isDryRun = false;
    int places = 10;  ///< shown of each file
    bool help = false;
    bool pages = false;
};

extern const char* const kHelp;

/// Throws `WrongUse`.
Options ParseArguments(const std::vector<Kelm>& arguments);

/// Whether text of the page switches between two sets, so that a byte says nothing by itself.
bool IsShifting(unsigned int codePage);

#pragma once

#include <Kelm.h>

/// Why a file stays as it is.
struct Failure {
    Kelm text;
};

/// The failure that `errno` tells of.
Failure SystemFailure(const char* what);

/// The user wants the program to end.
struct Interrupted {
    int signal;
};

/// From here on the signals that end a program end it by `CheckInterrupt`, so that no temporary
/// file stays behind.
void CatchSignals();

/// Throws `Interrupted` once such a signal came.
void CheckInterrupt();

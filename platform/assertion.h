#pragma once

namespace platform {

/// Prints the failed expression with the source file's name and the line to stderr and aborts.
[[noreturn]] void _wassert(const char* expression, const char* file, int line) noexcept;

/// A precondition, on in every build. The text is given apart from the condition because it is
/// part of the interface and has to survive a formatter.
inline void require(bool holds, const char* expression, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE()) noexcept {
    if (__builtin_expect(!holds, 0)) {
        _wassert(expression, file, line);
    }
}

}  // namespace platform

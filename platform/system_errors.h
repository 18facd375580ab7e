#pragma once

#include <cerrno>
#include <cstdint>

namespace platform {

/// Leaves `errno` as it was.
class ErrnoKeeper {
public:
    ErrnoKeeper() : kept_(errno) {}
    ~ErrnoKeeper() { errno = kept_; }
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

private:
    int kept_;
};

/// The calling thread's last error code.
std::uint32_t GetLastError() noexcept;

/// Writes the system's text for the code, in the language and codeset of the thread's locale, and a
/// terminator into `size` bytes; the result is its length. 0, and nothing written, if the system
/// has none or it does not fit.
int FormatMessageA(std::uint32_t code, char* buffer, int size) noexcept;

}  // namespace platform

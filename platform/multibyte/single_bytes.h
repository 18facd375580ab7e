#pragma once

/// Single bytes by the locale of the calling thread. A byte from 0x80 up is handed to the C library
/// as an unsigned value, never as a negative one.
namespace platform {

char toupper(char byte) noexcept;
char tolower(char byte) noexcept;

/// A class of the locale. For a walk over many bytes it is taken once, then a load a byte; good
/// until the locale changes.
class ByteClass {
public:
    static ByteClass Space() noexcept;
    static ByteClass Punctuation() noexcept;
    static ByteClass Control() noexcept;
    static ByteClass Digit() noexcept;
    static ByteClass AlNum() noexcept;
    static ByteClass Alpha() noexcept;
    static ByteClass Upper() noexcept;
    static ByteClass Lower() noexcept;

    /// Both classes, which must have been taken at the same time.
    ByteClass operator|(ByteClass other) const noexcept {
        return {table_, static_cast<unsigned short>(mask_ | other.mask_)};
    }

    bool Has(char byte) const noexcept {
        return (table_[static_cast<unsigned char>(byte)] & mask_) != 0;
    }

private:
    ByteClass(const unsigned short* table, unsigned short mask) : table_(table), mask_(mask) {}

    const unsigned short* table_;
    unsigned short mask_;
};

/// Whether every byte of [first, last) is in the class.
bool all_in_class(ByteClass members, const char* first, const char* last) noexcept;

/// Drops every byte of the class from [first, last), closes the gaps, gives the new end.
char* remove_class(ByteClass members, char* first, char* last) noexcept;

}  // namespace platform

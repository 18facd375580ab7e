#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

/// Bytes that a program or a call is read from, with zeros behind their end.
class Input {
public:
    Input(const unsigned char* data, std::size_t size) : at_(data), end_(data + size) {}
    bool IsEmpty() const { return at_ == end_; }
    unsigned Byte() { return at_ == end_ ? 0 : *at_++; }
    template <class Value>
    Value Take() {
        Value value{};
        const std::size_t size = std::min(sizeof value, static_cast<std::size_t>(end_ - at_));
        std::memcpy(&value, at_, size);
        at_ += size;
        return value;
    }
    unsigned Below(std::size_t limit) { return Byte() % static_cast<unsigned>(limit); }

private:
    const unsigned char* at_;
    const unsigned char* end_;
};

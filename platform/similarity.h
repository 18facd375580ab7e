#pragma once

namespace platform {

/// Length of the longest common subsequence of the `n` bytes at `a` and the `m` bytes at `b`.
/// Memory is linear in the lengths and small texts need none; without it `std::bad_alloc`.
int common_length(const char* a, int n, const char* b, int m);

}  // namespace platform

#include "similarity.h"

#include <algorithm>
#include <vector>

namespace platform {

int common_length(const char* a, int n, const char* b, int m) {
    const auto width = static_cast<std::size_t>(n);
    std::vector<int> row(width + 1);
    for (int i = 0; i < m; ++i) {
        int diagonal = 0;
        for (std::size_t j = 1; j <= width; ++j) {
            const int above = row[j];
            row[j] = a[j - 1] == b[i] ? diagonal + 1 : std::max(above, row[j - 1]);
            diagonal = above;
        }
    }
    return row[width];
}

}  // namespace platform

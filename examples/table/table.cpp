#include "table.h"

void SplitRow(const Kelm& row, std::vector<Kelm>& fields) {
    int start = 0;
    for (Kelm& field : fields) {
        if (start > row.GetLength()) {
            field.Empty();
            continue;
        }
        const int separator = row.Find(kSeparator, start);
        const int end = separator < 0 ? row.GetLength() : separator;
        field = row.Mid(start, end - start);
        start = end + 1;
    }
}

Kelm JoinRow(const std::vector<Kelm>& fields) {
    int length = static_cast<int>(fields.size());
    for (const Kelm& field : fields) {
        length += field.GetLength();
    }
    Kelm row;
    row.GetBuffer(length);
    for (const Kelm& field : fields) {
        if (&field != &fields.front()) {
            row += kSeparator;
        }
        row += field;
    }
    row.FreeExtra();
    return row;
}

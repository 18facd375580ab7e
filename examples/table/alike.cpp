#include "alike.h"

#include <algorithm>
#include <map>

namespace {

/// One of the different texts.
struct Value {
    Kelm text;
    int rows;
    const Row* first;
};

struct Pair {
    size_t shorter;
    size_t longer;
    float share;
};

/// The different texts of the field by rising length, `limit` of them at most.
std::vector<Value> Values(const Table& table, int field, int limit, Report& report) {
    std::map<Kelm, Value> values;
    int ignored = 0;
    for (const Row& row : table.rows) {
        const Kelm text = row.text.Element(field, kSeparator);
        const auto found = values.find(text);
        if (found != values.end()) {
            ++found->second.rows;
        } else if (static_cast<int>(values.size()) < limit) {
            values.insert({text, {text, 1, &row}});
        } else {
            ++ignored;
        }
    }
    if (ignored > 0) {
        report.FileProblem(Kelm::FromFormat(
            "--alike compares %d different texts; %d rows with others were left out", limit,
            ignored));
    }
    std::vector<Value> sorted;
    for (const auto& [text, value] : values) {
        sorted.push_back(value);
    }
    std::stable_sort(sorted.begin(), sorted.end(), [](const Value& left, const Value& right) {
        return left.text.GetLength() < right.text.GetLength();
    });
    return sorted;
}

std::vector<Pair> Pairs(const std::vector<Value>& values, double share, Report& report) {
    std::vector<Pair> pairs;
    for (size_t i = 0; i < values.size(); ++i) {
        const Kelm& shorter = values[i].text;
        const double longest = shorter.GetLength() / share;  // a longer text has less in common
        for (size_t j = i + 1; j < values.size() && values[j].text.GetLength() <= longest; ++j) {
            // Similar divides by the length of its own text, so the longer one is the strict side.
            const float common = values[j].text.Similar(shorter);
            if (common >= static_cast<float>(share)) {
                pairs.push_back({i, j, common});
            }
        }
        if (i % 16 == 0) {
            report.Progress().Show(Kelm::FromFormat("%d of %d texts compared", static_cast<int>(i),
                                                    static_cast<int>(values.size())));
        }
    }
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const Pair& left, const Pair& right) { return left.share > right.share; });
    return pairs;
}

/// The line of a row, behind the name of its file where there are several.
Kelm PlaceOf(const Table& table, const Row& row) {
    const Kelm& path = table.files[static_cast<size_t>(row.file)];
    const Kelm line = Kelm::From(row.line);
    return table.files.size() < 2 ? line : path.Mid(path.ReverseFind('/') + 1) + ":" + line;
}

}  // namespace

Table FindAlike(const Table& table, int field, double share, int limit, Report& report) {
    const std::vector<Value> values = Values(table, field, limit, report);
    Table result;
    result.names = JoinRow({"Common", "Rows", "First at", "Text", "Rows", "First at", "Text"});
    result.fields = result.names.Count(kSeparator) + 1;
    for (const Pair& pair : Pairs(values, share, report)) {
        const Value& shorter = values[pair.shorter];
        const Value& longer = values[pair.longer];
        result.rows.push_back(
            {JoinRow({Kelm::FromFormat("%.3f", pair.share), Kelm::From(shorter.rows),
                      PlaceOf(table, *shorter.first), shorter.text, Kelm::From(longer.rows),
                      PlaceOf(table, *longer.first), longer.text}),
             0, 0});
    }
    return result;
}

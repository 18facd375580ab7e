#include "plan.h"

#include <algorithm>
#include <utility>

#include "../shared/arguments.h"

namespace {

/// The number, from 0, of a field given by number or name.
int FieldIndex(const Table& table, const Kelm& text) {
    const int byNumber = IsNumber(text) ? text.Int() - 1 : -1;
    if (byNumber >= 0 && byNumber < table.fields) {
        return byNumber;
    }
    const int byName = table.names.IsEmpty() ? -1 : table.names.IndexOfElement(text, kSeparator);
    if (byName >= 0) {
        return byName;
    }
    if (table.names.IsEmpty()) {
        throw WrongUse{Kelm::FromFormat("there is no field %s; the rows have %d, without names",
                                        text.constBuffer(), table.fields)};
    }
    Kelm names = table.names;
    names.Replace(kSeparator, ',');
    throw WrongUse{"there is no field " + text + "; the fields are " + names};
}

/// FIELD/OLD/NEW or FIELD/TEXT, where the first of these marks separates.
Step ParseEdit(const Table& table, const Request& request) {
    const Kelm& text = request.text;
    const int mark = text.FindOneOf("/|:,");
    if (mark < 0) {
        throw WrongUse{"--replace needs FIELD/OLD/NEW and --remove FIELD/TEXT, not " + text};
    }
    const char separator = text[mark];
    Step step{};
    step.kind = request.kind;
    step.field = FieldIndex(table, text.Left(mark));
    step.oldText = text.Element(1, separator);
    step.newText = text.Element(2, separator);
    const int parts = request.kind == Request::Replace ? 2 : 1;
    if (step.oldText.IsEmpty() || text.Count(separator) != parts) {
        throw WrongUse{"--replace needs FIELD/OLD/NEW and --remove FIELD/TEXT, not " + text};
    }
    return step;
}

struct Operator {
    const char* text;
    Test::Kind kind;
};

// Where one begins with another, the longer one stands first.
constexpr Operator kOperators[] = {{"!=", Test::Other},  {"!~", Test::Without}, {"==", Test::Equal},
                                   {"<=", Test::AtMost}, {">=", Test::AtLeast}, {"=", Test::Same},
                                   {"~", Test::With},    {"<", Test::Less},     {">", Test::More},
                                   {"?", Test::Set},     {"!", Test::NotSet}};

Step ParseTest(const Table& table, const Kelm& text) {
    const int position = text.FindOneOf("!=<>~?");
    const Kelm rest = text.Mid(position);
    for (const Operator& known : kOperators) {
        if (position > 0 && rest.Find(known.text) == 0) {
            const Kelm value = rest.Mid(Kelm(known.text).GetLength());
            Step step{};
            step.kind = Request::Keep;
            step.field = FieldIndex(table, text.Left(position));
            step.test = {known.kind, value, value.Double()};
            return step;
        }
    }
    throw WrongUse{"--keep needs a test such as FIELD=TEXT, not " + text};
}

Step ParseTabs(const Kelm& text) {
    Step step{};
    step.kind = Request::Tabs;
    step.tabWidth = text.Int();
    if (!IsNumber(text) || step.tabWidth < 1 || step.tabWidth > 1000) {
        throw WrongUse{"--tabs needs a number from 1 to 1000, not " + text};
    }
    return step;
}

SortKey ParseSortKey(const Table& table, const Kelm& text) {
    SortKey key{FieldIndex(table, text.Element(0, ':')), false, false};
    for (int i = 1; i <= text.Count(':'); ++i) {
        const Kelm word = text.Element(i, ':');
        if (word != "number" && word != "down") {
            throw WrongUse{"--sort needs FIELD[:number][:down], not " + text};
        }
        key.isNumber = key.isNumber || word == "number";
        key.isFalling = key.isFalling || word == "down";
    }
    return key;
}

void TakeRequest(const Request& request, const Table& table, Plan& plan) {
    switch (request.kind) {
        case Request::Replace:
        case Request::Remove:
            plan.steps.push_back(ParseEdit(table, request));
            return;
        case Request::Tabs:
            plan.steps.push_back(ParseTabs(request.text));
            return;
        case Request::Keep:
            plan.steps.push_back(ParseTest(table, request.text));
            return;
        case Request::Sort:
            plan.keys.push_back(ParseSortKey(table, request.text));
            return;
    }
}

void PlanFields(const Kelm& list, const Table& table, Plan& plan) {
    if (list.IsEmpty()) {
        for (int i = 0; i < table.fields; ++i) {
            plan.fields.push_back(i);
        }
        return;
    }
    for (int i = 0; i <= list.Count(','); ++i) {
        plan.fields.push_back(FieldIndex(table, list.Element(i, ',')));
    }
}

void PlanAlike(const Kelm& text, const Table& table, Plan& plan) {
    const int colon = text.ReverseFind(':');
    plan.alikeShare = text.Mid(colon + 1);
    const double share = plan.alikeShare.Double();
    if (colon < 0 || !(share >= 0.5 && share <= 1)) {
        throw WrongUse{"--alike needs FIELD:SHARE with a share from 0.5 to 1, not " + text};
    }
    plan.alikeField = FieldIndex(table, text.Left(colon));
}

void EditField(const Step& step, bool anyCase, Kelm& value) {
    if (!anyCase) {
        value.Replace(step.oldText, step.newText);
    } else if (step.kind == Request::Remove) {
        value.NCRemove(step.oldText);
    } else {
        value.NCReplace(step.oldText, step.newText);
    }
}

template <class Value, class ValueOf, class IsLess>
void SortBy(std::vector<Row>& rows, bool isFalling, ValueOf valueOf, IsLess isLess) {
    struct Keyed {
        Value value;  // read once, compared often
        Row row;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(rows.size());
    for (Row& row : rows) {
        keyed.push_back({valueOf(row.text), std::move(row)});
    }
    std::stable_sort(keyed.begin(), keyed.end(), [&](const Keyed& left, const Keyed& right) {
        return isFalling ? isLess(right.value, left.value) : isLess(left.value, right.value);
    });
    for (size_t i = 0; i < rows.size(); ++i) {
        rows[i] = std::move(keyed[i].row);
    }
}

}  // namespace

bool Test::Passes(const Kelm& value) const {
    switch (kind) {
        case Same:
            return value.CompareNoCase(text) == 0;
        case Other:
            return value.CompareNoCase(text) != 0;
        case With:
            return value.NCFind(text) >= 0;
        case Without:
            return value.NCFind(text) < 0;
        case Equal:
            return value.Double() == number;
        case Less:
            return value.Double() < number;
        case AtMost:
            return value.Double() <= number;
        case More:
            return value.Double() > number;
        case AtLeast:
            return value.Double() >= number;
        case Set:
            return value.Bool();
        case NotSet:
            return !value.Bool();
    }
    return false;
}

Plan MakePlan(const Options& options, const Table& table) {
    Plan plan;
    plan.anyCase = options.anyCase;
    for (const Request& request : options.requests) {
        TakeRequest(request, table, plan);
    }
    PlanFields(options.fields, table, plan);
    if (!options.alike.IsEmpty()) {
        PlanAlike(options.alike, table, plan);
    }
    return plan;
}

bool RunSteps(const Plan& plan, int fields, Kelm& row) {
    if (plan.steps.empty()) {
        return true;
    }
    bool isChanged = false;
    std::vector<Kelm> values(static_cast<size_t>(fields));
    SplitRow(row, values);
    for (const Step& step : plan.steps) {
        Kelm& value = values[static_cast<size_t>(step.field)];
        if (step.kind == Request::Keep) {
            if (!step.test.Passes(value)) {
                return false;
            }
            continue;
        }
        isChanged = true;
        if (step.kind == Request::Tabs) {
            std::for_each(values.begin(), values.end(),
                          [&](Kelm& each) { each.ReplaceTabs(step.tabWidth); });
        } else {
            EditField(step, plan.anyCase, value);
        }
    }
    if (isChanged) {
        row = JoinRow(values);
    }
    return true;
}

void SortRows(const Plan& plan, std::vector<Row>& rows) {
    // Each sort keeps the order of equal rows, so the most important key comes last.
    for (auto key = plan.keys.rbegin(); key != plan.keys.rend(); ++key) {
        const int field = key->field;
        if (key->isNumber) {
            SortBy<double>(
                rows, key->isFalling,
                [=](const Kelm& row) { return row.Element(field, kSeparator).Double(); },
                [](double left, double right) { return left < right; });
        } else {
            SortBy<Kelm>(
                rows, key->isFalling,
                [=](const Kelm& row) { return row.Element(field, kSeparator); },
                [](const Kelm& left, const Kelm& right) { return left.Collate(right) < 0; });
        }
    }
}

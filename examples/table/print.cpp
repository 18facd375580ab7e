#include "print.h"

#include <algorithm>
#include <cstdio>

#include "../shared/source.h"
#include "../shared/terminal.h"

namespace {

void Write(const Kelm& bytes) {
    std::fwrite(bytes.constBuffer(), 1, static_cast<size_t>(bytes.GetLength()), stdout);
}

/// Calls `use` with the position and the text of each chosen field of the row.
template <class Use>
void ForChosen(const Kelm& row, const std::vector<int>& fields, std::vector<Kelm>& all, Use use) {
    SplitRow(row, all);
    for (size_t i = 0; i < fields.size(); ++i) {
        use(i, all[static_cast<size_t>(fields[i])]);
    }
}

/// Whether the text is a number with a sign or a decimal mark or neither.
bool LooksLikeNumber(const Kelm& text) {
    const int sign = text.Char() == '+' || text.Char() == '-' ? 1 : 0;
    const Kelm digits = text.Mid(sign);
    return digits.FindOneOf("0123456789") >= 0 &&
           digits.SpanIncluding("0123456789.,").GetLength() == digits.GetLength();
}

struct Column {
    Kelm name;
    int width = 0;
    bool isNumber = true;  // as long as no row shows otherwise
};

class AlignedPrinter {
public:
    AlignedPrinter(const Table& table, const std::vector<int>& fields, int mostColumns)
        : m_table(table),
          m_fields(fields),
          m_mostColumns(mostColumns),
          m_columns(fields.size()),
          m_all(static_cast<size_t>(table.fields)) {}

    void Print() {
        Measure();
        PrintHeader();
        for (const Row& row : m_table.rows) {
            PrintRow(row.text);
        }
    }

private:
    void Measure() {
        for (const Row& row : m_table.rows) {
            ForChosen(row.text, m_fields, m_all, [this](size_t i, const Kelm& text) {
                Column& column = m_columns[i];
                column.width = std::max(column.width, Columns(Printable(text)));
                column.isNumber = column.isNumber && (text.IsEmpty() || LooksLikeNumber(text));
            });
        }
        ForChosen(m_table.names, m_fields, m_all, [this](size_t i, const Kelm& text) {
            Column& column = m_columns[i];
            column.name = m_table.names.IsEmpty() ? Kelm::From(m_fields[i] + 1) : Printable(text);
            column.width = std::max(column.width, Columns(column.name));
            if (m_mostColumns > 0) {
                column.width = std::min(column.width, m_mostColumns);
            }
        });
    }

    void AddCell(size_t i, const Kelm& text) {
        const Column& column = m_columns[i];
        const Kelm cut = CutTo(text, column.width);
        m_line += column.isNumber ? PadLeft(cut, column.width) : PadRight(cut, column.width);
        m_line += "  ";
    }

    void EndLine() {
        m_line.TrimRight(' ');
        m_line += '\n';
        Write(m_line);
        m_line = "";  // keeps the block, where Empty would give it up
    }

    void PrintHeader() {
        for (size_t i = 0; i < m_columns.size(); ++i) {
            AddCell(i, m_columns[i].name);
        }
        EndLine();
        for (const Column& column : m_columns) {
            m_line.Repeat("-", column.width);
            m_line += "  ";
        }
        EndLine();
    }

    void PrintRow(const Kelm& row) {
        ForChosen(row, m_fields, m_all,
                  [this](size_t i, const Kelm& text) { AddCell(i, Printable(text)); });
        EndLine();
    }

    const Table& m_table;
    const std::vector<int>& m_fields;
    int m_mostColumns;
    std::vector<Column> m_columns;
    std::vector<Kelm> m_all;  // the fields of one row, used again for each
    Kelm m_line;
};

}  // namespace

void PrintAligned(const Table& table, const std::vector<int>& fields, int mostColumns) {
    AlignedPrinter(table, fields, mostColumns).Print();
}

void PrintDelimited(const Table& table, const std::vector<int>& fields, char delimiter,
                    unsigned int codePage, Report& report) {
    std::vector<Kelm> all(static_cast<size_t>(table.fields));
    const Kelm lineEnd = WString(u"\n").ToKelm(codePage);
    Kelm line;
    bool holdsDelimiter = false;
    const auto fill = [&](const Kelm& row) {
        line = "";
        holdsDelimiter = false;
        ForChosen(row, fields, all, [&](size_t i, const Kelm& text) {
            if (i > 0) {
                line += delimiter;
            }
            line += text;
            holdsDelimiter = holdsDelimiter || text.Find(delimiter) >= 0;
        });
    };
    if (!table.names.IsEmpty()) {
        fill(table.names);
        Write(WString(line).ToKelm(codePage) + lineEnd);
    }
    for (const Row& row : table.rows) {
        fill(row.text);
        const Kelm& path = table.files[static_cast<size_t>(row.file)];
        if (holdsDelimiter) {
            report.RowProblem(path, row.line, "a field holds the delimiter of the output");
        }
        const WString wide(line);
        const Kelm bytes = wide.ToKelm(codePage);
        if (WString::FromCodePage(bytes, codePage) != wide) {
            report.RowProblem(path, row.line,
                              "holds what code page " + CodePageName(codePage) + " cannot express");
        }
        Write(bytes + lineEnd);
    }
}

#include "reader.h"

#include <cerrno>
#include <utility>

#include "lines.h"

Reader::Reader(const Options& options, Report& report) : m_options(options), m_report(report) {
    if (options.names.IsEmpty()) {
        return;
    }
    Kelm names = options.names;
    names.Replace(',', kSeparator);
    SetNames(names);
    for (Kelm name;
         (name = m_table.names.Element(m_table.required - 1, kSeparator)).Right(1) == "?";) {
        --m_table.required;
    }
    m_table.names.Remove('?');
}

const Plan& Reader::GetPlan() {
    if (!m_hasPlan) {
        m_plan = MakePlan(m_options, m_table);
        m_hasPlan = true;
    }
    return m_plan;
}

void Reader::ReadFiles() {
    for (const Input& input : m_options.inputs) {
        ReadFile(input);
    }
}

void Reader::Problem(const Kelm& text) {
    m_report.RowProblem(m_input->source.path, m_line, text);
}

void Reader::ReadFile(const Input& input) {
    const Source& source = input.source;
    if (!IsKnownCodePage(source.codePage)) {
        m_report.FileProblem(source.path + ": " + UnknownCodePage(source.codePage));
        return;
    }
    m_input = &input;
    m_awaitsHeader = m_options.hasHeader;
    m_line = 0;
    m_table.files.push_back(source.path);
    const File file = OpenFile(source.path);
    if (file) {
        LineReader lines(file.get(), WString(u"\n").ToKelm(source.codePage).Char());
        for (Kelm bytes; lines.Next(bytes);) {
            ++m_line;
            if (lines.WasCut()) {
                Problem(Kelm::FromFormat("longer than %d bytes: left out", LineReader::kLongest));
            } else {
                TakeLine(bytes);
            }
            if (m_line % 4096 == 0) {
                m_report.Progress().Show(
                    Kelm::FromFormat("%s: %d lines, %d MB", source.path.constBuffer(), m_line,
                                     static_cast<int>(lines.BytesRead() >> 20)));
            }
        }
    }
    if (!file || std::ferror(file.get()) != 0) {
        Kelm message;
        message.FormatMsg(static_cast<std::uint32_t>(errno), "cannot read %s",
                          source.path.constBuffer());
        m_report.FileProblem(message);
    }
}

bool Reader::Decode(const Kelm& bytes, Kelm& text) {
    const unsigned int codePage = m_input->source.codePage;
    WString wide = WString::FromCodePage(bytes, codePage);
    if (m_line == 1 && wide.Char() == u'\uFEFF') {
        wide = wide.Mid(1);
    }
    if (wide.Count(u'\0') > 0) {
        Problem("holds NUL, which is no text: left out");
        return false;
    }
    wide.TrimRight(u'\r');
    const int broken = wide.Find(u'\uFFFD');
    if (broken >= 0) {
        Problem(Kelm::FromFormat("character %d: bytes that code page %s does not define",
                                 broken + 1, CodePageName(codePage).constBuffer()));
    }
    text = wide.ToKelm();
    if (WString(text) != wide) {
        Problem("holds what code page " + CodePageName(0) + " cannot express");
    }
    return true;
}

void Reader::TakeLine(const Kelm& bytes) {
    Kelm row;
    if (!Decode(bytes, row) || row.IsEmpty()) {
        return;
    }
    if (!m_options.comment.IsEmpty() &&
        row.Left(m_options.comment.GetLength()) == m_options.comment) {
        return;
    }
    if (row.Find(kSeparator) >= 0) {
        Problem("holds the control character 0x1f: left out");
        return;
    }
    row.Replace(m_input->delimiter, kSeparator);
    if (m_awaitsHeader) {
        m_awaitsHeader = false;
        TakeHeader(row);
    } else {
        TakeRow(row);
    }
}

void Reader::TakeRow(Kelm& row) {
    if (!HasRightFields(row)) {
        return;
    }
    if (RunSteps(GetPlan(), m_table.fields, row)) {
        m_table.rows.push_back(
            {std::move(row), m_line, static_cast<int>(m_table.files.size()) - 1});
    }
}

void Reader::TakeHeader(const Kelm& row) {
    if (m_table.names.IsEmpty()) {
        SetNames(row);
    } else if (row != m_table.names && m_options.names.IsEmpty()) {
        Problem("names other fields than the first file");
    }
}

void Reader::SetNames(const Kelm& names) {
    m_table.fields = m_table.required = names.Count(kSeparator) + 1;
    m_table.names = names;
}

bool Reader::HasRightFields(const Kelm& row) {
    const int fields = row.Count(kSeparator) + 1;
    if (m_table.fields == 0) {
        m_table.fields = m_table.required = fields;
    }
    if (fields > m_table.fields) {
        Problem(Kelm::FromFormat("has %d fields instead of %d: left out", fields, m_table.fields));
        return false;
    }
    if (fields < m_table.required) {
        Problem(Kelm::FromFormat("has %d of %d fields: the others are empty", fields,
                                 m_table.required));
    }
    return true;
}

#include "pages/decode_table.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "lanes/ascii_runs.h"
#include "pages/converter.h"
#include "pages/corrections.h"
#include "pages/gb18030.h"
#include "pages/utf16_walk.h"

namespace platform {
namespace {

struct Release {
    void operator()(DecodeTable* table) const {
        std::free(table->rows);
        std::free(table->fours);
        std::free(table);
    }
};
using OwnedTable = std::unique_ptr<DecodeTable, Release>;

/// Fills a table by asking the converter for every sequence on its own.
class Builder {
public:
    Builder(const CodePage& page, Converter& converter, DecodeTable& table)
        : page_(page), converter_(converter), table_(table) {}

    /// False where the page does not fit the form of a table.
    bool Build() {
        AddFours();
        FillRow(AddRow(), 0);
        Correct();
        AddBadLeads();
        Describe();
        return fits_;
    }

private:
    using Answer = Converted<wchar_t, 4>;
    static constexpr std::size_t kMaxSequence = 4;

    Answer Ask(std::size_t length) { return convert_alone<4, wchar_t>(converter_, bytes_, length); }

    std::size_t AddRow() {
        constexpr std::size_t kAtOnce = 32;
        if (rowCount_ == DecodeTable::kMaxRows) {
            fits_ = false;
            return 0;
        }
        if (rowCount_ % kAtOnce == 0) {
            void* rows =
                std::realloc(table_.rows, (rowCount_ + kAtOnce) * sizeof(DecodeTable::Row));
            if (rows == nullptr) {
                throw std::bad_alloc();
            }
            table_.rows = static_cast<DecodeTable::Row*>(rows);
        }
        for (char16_t& entry : table_.rows[rowCount_]) {
            entry = DecodeTable::kUndefined;
        }
        return rowCount_++;
    }

    /// The row for the byte behind a prefix of `depth` bytes.
    void FillRow(std::size_t row, std::size_t depth) {
        for (unsigned int byte = 0; fits_ && byte < 256; ++byte) {
            bytes_[depth] = static_cast<char>(byte);
            const char16_t entry = Entry(depth + 1);  // may move the rows
            table_.rows[row][byte] = entry;
        }
    }

    char16_t Entry(std::size_t length) {
        const Answer answer = Ask(length);
        if (answer.error == EINVAL) {
            return Descend(length);
        }
        if (answer.error != 0) {
            return DecodeTable::kUndefined;
        }
        const auto code = static_cast<char32_t>(answer.units[0]);
        fits_ = answer.count == 1 && !is_surrogate(code);
        return code < 0x10000 ? static_cast<char16_t>(code) : AddAstral(code);
    }

    char16_t Descend(std::size_t length) {
        if (length == 2 && page_.number == gb18030::kNumber) {
            return DecodeTable::kFour;
        }
        fits_ = length + 1 < kMaxSequence;
        const std::size_t row = AddRow();
        FillRow(row, length);
        return static_cast<char16_t>(DecodeTable::kNextRow + row);
    }

    char16_t AddAstral(char32_t code) {
        if (table_.astralCount == DecodeTable::kMaxAstral) {
            fits_ = false;
            return DecodeTable::kUndefined;
        }
        table_.astral[table_.astralCount] = code;
        return static_cast<char16_t>(DecodeTable::kAstral + table_.astralCount++);
    }

    void AddFours() {
        if (page_.number != gb18030::kNumber) {
            return;
        }
        table_.fours = static_cast<char16_t*>(std::calloc(gb18030::kBmpCount, sizeof(char16_t)));
        if (table_.fours == nullptr) {
            throw std::bad_alloc();
        }
        for (std::size_t i = 0; i < gb18030::kBmpCount; ++i) {
            const gb18030::Four four = gb18030::four_at(i);
            std::memcpy(bytes_, four.bytes, sizeof four.bytes);
            const Answer answer = Ask(sizeof four.bytes);
            if (answer.error == 0 && answer.count == 1 && answer.units[0] < 0x10000) {
                table_.fours[i] = static_cast<char16_t>(answer.units[0]);
            }
        }
    }

    void Correct() {
        corrections::for_each(page_.number, [this](unsigned int lead, unsigned int trail,
                                                   char16_t unit, bool overrides) {
            const std::size_t row = lead != 0 ? RowBehind(lead) : 0;
            if (row >= rowCount_) {
                return;  // the byte is a character by itself
            }
            char16_t& entry = table_.rows[row][trail];
            if (overrides || entry == DecodeTable::kUndefined) {
                entry = unit;
            }
        });
    }

    std::size_t RowBehind(unsigned int lead) {
        if (table_.rows[0][lead] == DecodeTable::kUndefined) {
            SetNextRow(lead, AddRow());
        }
        return table_.rows[0][lead] - std::size_t{DecodeTable::kNextRow};
    }

    void SetNextRow(std::size_t lead, std::size_t row) {
        table_.rows[0][lead] = static_cast<char16_t>(DecodeTable::kNextRow + row);
    }

    /// A lead byte takes the next byte even where the page has no characters for it.
    void AddBadLeads() {
        if (page_.leadBytes == nullptr) {
            return;
        }
        const std::size_t row = AddRow();
        for (std::size_t byte = 0; byte < 256; ++byte) {
            if (page_.leadBytes[byte] && table_.rows[0][byte] == DecodeTable::kUndefined) {
                SetNextRow(byte, row);
            }
        }
    }

    void Describe() {
        const char16_t* root = table_.rows[0];
        table_.isAscii = true;
        table_.isSingle = true;
        for (std::size_t byte = 0; byte < 256; ++byte) {
            table_.isAscii &= byte >= 0x80 || root[byte] == byte;
            table_.isSingle &= !is_surrogate(root[byte]);
        }
    }

    const CodePage& page_;
    Converter& converter_;
    DecodeTable& table_;
    bool fits_ = true;
    std::size_t rowCount_ = 0;
    char bytes_[kMaxSequence] = {};
};

/// Null where the system has no converter.
OwnedTable build(const CodePage& page) {
    const ErrnoKeeper keeper;
    if (page.converter == nullptr) {
        throw std::bad_alloc();
    }
    Converter converter(kCodePoints, page.converter);
    if (!converter.IsOpen()) {
        return nullptr;
    }
    OwnedTable table(static_cast<DecodeTable*>(std::calloc(1, sizeof(DecodeTable))));
    if (table == nullptr) {
        throw std::bad_alloc();
    }
    table->isStreamed = !Builder(page, converter, *table).Build();
    return table;
}

struct Step {
    char32_t code;
    std::size_t bytes;
};

Step read_four(const DecodeTable& table, const char* p, const char* last) {
    gb18030::Four four{};
    constexpr Step kBadLead = {DecodeTable::kUndefined, 1};
    if (last - p < static_cast<std::ptrdiff_t>(sizeof four.bytes)) {
        return kBadLead;
    }
    std::memcpy(four.bytes, p, sizeof four.bytes);
    if (!gb18030::is_four(four)) {
        return kBadLead;
    }
    const std::size_t index = gb18030::index_of(four);
    if (index < gb18030::kBmpCount) {
        return table.fours[index] != 0 ? Step{table.fours[index], sizeof four.bytes} : kBadLead;
    }
    const std::size_t code = 0x10000 + index - gb18030::kAstralStart;
    const bool isCode = index >= gb18030::kAstralStart && code <= 0x10FFFF;
    return isCode ? Step{static_cast<char32_t>(code), sizeof four.bytes} : kBadLead;
}

/// The character behind a lead byte whose entry is `entry`. What is undefined takes no ASCII byte
/// along.
Step read_any_sequence(const DecodeTable& table, const char* p, const char* last, char16_t entry) {
    const auto available = static_cast<std::size_t>(last - p);
    for (std::size_t i = 1; i < available; ++i) {
        entry = table.rows[entry - DecodeTable::kNextRow][static_cast<unsigned char>(p[i])];
        if (entry == DecodeTable::kUndefined) {
            return {entry, is_ascii(p[i]) ? i : i + 1};
        }
        if (!is_surrogate(entry)) {
            return {entry, i + 1};
        }
        if (entry == DecodeTable::kFour) {
            return read_four(table, p, last);
        }
        if (entry >= DecodeTable::kAstral) {
            return {table.astral[entry - DecodeTable::kAstral], i + 1};
        }
    }
    return {DecodeTable::kUndefined, available};
}

void decode_single(const DecodeTable& table, const char* source, std::size_t length,
                   char16_t* destination) {
    const char16_t* root = table.rows[0];
    std::size_t i = 0;
    for (; i + kAsciiStep <= length; i += kAsciiStep) {
        if (table.isAscii && is_ascii_step(source + i)) {
            transfer_step(source + i, destination + i);
            continue;
        }
        for (std::size_t k = i; k < i + kAsciiStep; ++k) {
            destination[k] = root[static_cast<unsigned char>(source[k])];
        }
    }
    for (; i < length; ++i) {
        destination[i] = root[static_cast<unsigned char>(source[i])];
    }
}

constexpr std::ptrdiff_t kEight = 8;

/// ASCII from `p` on, where there may be much of it: cheap to ask where there is not.
std::size_t ascii_from(const char* p, const char* last) {
    const std::size_t count = ascii_of_eight(p);
    return count < kEight ? count : ascii_run(p, static_cast<std::size_t>(last - p));
}

/// The same, quick for a character of two bytes. The branches foretell where the next one begins;
/// arithmetic on what was read would have to wait for it.
inline Step read_sequence(const DecodeTable& table, const char* p, const char* last,
                          char16_t entry) {
    if (last - p >= 2) {
        const auto trail = static_cast<unsigned char>(p[1]);
        const char16_t unit = table.rows[entry - DecodeTable::kNextRow][trail];
        if (!is_surrogate(unit) && unit != DecodeTable::kUndefined) {
            return {unit, 2};
        }
    }
    return read_any_sequence(table, p, last, entry);
}

}  // namespace

const DecodeTable* first_decode_table(const CodePage& page) {
    return publish(page.tables->decode, build(page));
}

std::size_t table_decoded_size(const DecodeTable& table, const char* source,
                               std::size_t length) noexcept {
    if (table.isSingle) {
        return length;
    }
    const char* const last = source + length;
    std::size_t units = 0;
    for (const char* p = source; p != last;) {
        const char16_t entry = table.rows[0][static_cast<unsigned char>(*p)];
        if (table.isAscii && is_ascii(*p) && last - p >= kEight) {
            const std::size_t ascii = ascii_from(p, last);
            units += ascii;
            p += ascii;
        } else if (!is_surrogate(entry)) {
            ++units;
            ++p;
        } else {
            const Step step = read_sequence(table, p, last, entry);
            units += utf16_units(step.code);
            p += step.bytes;
        }
    }
    return units;
}

void table_decode(const DecodeTable& table, const char* source, std::size_t length,
                  char16_t* destination, std::size_t size) noexcept {
    if (table.isSingle) {
        decode_single(table, source, length, destination);
        return;
    }
    const char* const last = source + length;
    const char16_t* const limit = destination + size;
    char16_t* out = destination;
    for (const char* p = source; p != last;) {
        const char16_t entry = table.rows[0][static_cast<unsigned char>(*p)];
        if (table.isAscii && is_ascii(*p) && last - p >= kEight && limit - out >= kEight) {
            const std::size_t ascii = ascii_from(p, last);
            ascii < kEight ? transfer_step<8>(p, out) : transfer(p, ascii, out);
            out += ascii;
            p += ascii;
            continue;
        }
        if (!is_surrogate(entry)) {
            *out++ = entry;
            ++p;
            continue;
        }
        const Step step = read_sequence(table, p, last, entry);
        out = put_utf16(step.code, out);
        p += step.bytes;
    }
}

std::size_t table_first_sequence(const DecodeTable& table, const char* text) noexcept {
    const char16_t root = table.rows[0][static_cast<unsigned char>(*text)];
    if (!is_surrogate(root)) {
        return 1;
    }
    char16_t entry = root;
    std::size_t count = 1;
    while (entry < DecodeTable::kAstral && is_surrogate(entry) && text[count] != '\0') {
        entry = table.rows[entry - DecodeTable::kNextRow][static_cast<unsigned char>(text[count])];
        ++count;
    }
    if (entry == DecodeTable::kFour) {
        // The fourth byte only where the third does not rule it out.
        count += text[2] != '\0' ? 1 : 0;
        count += count == 3 && !is_ascii(text[2]) && text[3] != '\0' ? 1 : 0;
    }
    return read_sequence(table, text, text + count, root).bytes;
}

}  // namespace platform

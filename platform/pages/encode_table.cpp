#include "pages/encode_table.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "lanes/ascii_runs.h"
#include "pages/converter.h"
#include "pages/corrections.h"
#include "pages/decode_table.h"
#include "pages/gb18030.h"
#include "pages/utf16_walk.h"
#include "pages/utf8.h"

namespace platform {
namespace {

static_assert(std::size(EncodeTable{}.astral) == DecodeTable::kMaxAstral);

struct Release {
    void operator()(EncodeTable* table) const {
        std::free(table->entries);
        std::free(table);
    }
};
using OwnedTable = std::unique_ptr<EncodeTable, Release>;

/// The converter's own answer, which knows more characters than the page decodes to.
std::uint32_t ask(Converter& converter, char32_t code, std::uint32_t otherwise) {
    auto wide = static_cast<wchar_t>(code);
    const auto answer = convert_alone<EncodeTable::kMaxBytes, char>(converter, &wide, 1);
    if (answer.error != 0 || answer.count == 0) {
        return otherwise;
    }
    std::uint32_t entry = 0;
    std::memcpy(&entry, answer.units, answer.count);
    return bytes_low_first(entry);
}

void add_block(EncodeTable& table, const std::uint32_t* block) {
    constexpr std::size_t kBytes = EncodeTable::kBlock * sizeof *block;
    constexpr std::size_t kAtOnce = 16;
    if (table.blockCount % kAtOnce == 0) {
        void* entries = std::realloc(table.entries, (table.blockCount + kAtOnce) * kBytes);
        if (entries == nullptr) {
            throw std::bad_alloc();
        }
        table.entries = static_cast<std::uint32_t*>(entries);
    }
    std::memcpy(table.entries + table.blockCount * EncodeTable::kBlock, block, kBytes);
    ++table.blockCount;
}

void fill(EncodeTable& table, Converter& converter) {
    std::uint32_t block[EncodeTable::kBlock];
    std::fill(std::begin(block), std::end(block), table.replacement);
    add_block(table, block);
    for (std::size_t high = 0; high < 256; ++high) {
        bool isUsed = false;
        for (std::size_t low = 0; low < EncodeTable::kBlock; ++low) {
            const auto code = static_cast<char32_t>(high << 8 | low);
            block[low] =
                is_surrogate(code) ? table.replacement : ask(converter, code, table.replacement);
            isUsed |= block[low] != table.replacement;
        }
        if (!isUsed) {
            continue;
        }
        table.block[high] = static_cast<std::uint16_t>(table.blockCount);
        add_block(table, block);
    }
}

/// The entry of a unit in a block of its own.
std::uint32_t& own_entry(EncodeTable& table, char16_t unit) {
    std::uint16_t& block = table.block[unit >> 8];
    if (block == 0) {
        std::uint32_t none[EncodeTable::kBlock];
        std::fill(std::begin(none), std::end(none), table.replacement);
        block = static_cast<std::uint16_t>(table.blockCount);
        add_block(table, none);
    }
    return table.entries[block * EncodeTable::kBlock + (unit & 0xFF)];
}

void correct(EncodeTable& table, unsigned int page) {
    corrections::for_each(
        page, [&](unsigned int lead, unsigned int trail, char16_t unit, bool overrides) {
            const std::uint32_t bytes = lead != 0 ? lead | trail << 8 : trail;
            std::uint32_t& entry = own_entry(table, unit);
            if (overrides) {
                // What had these bytes is not what they say.
                std::uint32_t* end = table.entries + table.blockCount * EncodeTable::kBlock;
                std::replace(table.entries, end, bytes, table.replacement);
            }
            if (overrides || entry == table.replacement) {
                entry = bytes;
            }
        });
}

std::uint32_t entry_of(const EncodeTable& table, char16_t unit) {
    return table.entries[table.block[unit >> 8] * EncodeTable::kBlock + (unit & 0xFF)];
}

std::size_t entry_bytes(std::uint32_t entry) {
    return 1u + (entry > 0xFF) + (entry > 0xFFFF) + (entry > 0xFFFFFF);
}

/// Counts the bytes of an entry that has at most two.
std::size_t short_entry_bytes(std::uint32_t entry) {
    return 1u + (entry > 0xFF);
}

void describe(EncodeTable& table) {
    table.isAscii = true;
    for (char16_t unit = 0; unit < 0x80; ++unit) {
        table.isAscii &= entry_of(table, unit) == unit;
    }
    std::uint32_t* end = table.entries + table.blockCount * EncodeTable::kBlock;
    const std::uint32_t highest = *std::max_element(table.entries, end);
    table.isSingle = !table.hasFours && highest <= 0xFF;
    table.isDouble = !table.hasFours && highest <= 0xFFFF;
}

/// Null where the system has no converter.
OwnedTable build(const CodePage& page) {
    const ErrnoKeeper keeper;
    const DecodeTable* decode = decode_table(page);
    if (decode == nullptr) {
        return nullptr;
    }
    OwnedTable table(static_cast<EncodeTable*>(std::calloc(1, sizeof(EncodeTable))));
    if (table == nullptr) {
        throw std::bad_alloc();
    }
    table->decode = decode;
    table->isStreamed = decode->isStreamed;
    if (table->isStreamed) {
        return table;
    }
    Converter converter(page.converter, kCodePoints);
    converter.Demand();
    table->hasFours = decode->fours != nullptr;
    table->replacement = ask(converter, U'?', '?');
    for (std::size_t i = 0; i < decode->astralCount; ++i) {
        table->astral[i] = ask(converter, decode->astral[i], table->replacement);
    }
    fill(*table, converter);
    correct(*table, page.number);
    describe(*table);
    return table;
}

std::uint32_t entry_above_bmp(const EncodeTable& table, char32_t code) {
    for (std::size_t i = 0; i < table.decode->astralCount; ++i) {
        if (table.decode->astral[i] == code) {
            return table.astral[i];
        }
    }
    return table.hasFours ? bytes_low_first(std::bit_cast<std::uint32_t>(
                                gb18030::four_at(gb18030::kAstralStart + (code - 0x10000))))
                          : table.replacement;
}

struct Step {
    std::uint32_t entry;
    std::size_t units;
};

Step read_step(const EncodeTable& table, const char16_t* p, const char16_t* last) {
    if (!is_surrogate(*p)) {
        return {entry_of(table, *p), 1};
    }
    const char32_t code = utf16_code(p, last);
    return code < 0x10000 ? Step{table.replacement, 1} : Step{entry_above_bmp(table, code), 2};
}

char* put_entry(std::uint32_t entry, char* out, const char* limit) {
    const std::size_t bytes = entry_bytes(entry);
    const std::uint32_t sequence = bytes_low_first(entry);
    if (limit - out >= static_cast<std::ptrdiff_t>(sizeof sequence)) {
        std::memcpy(out, &sequence, sizeof sequence);
    } else {
        std::memcpy(out, &sequence, bytes);
    }
    return out + bytes;
}

bool has_surrogate_in_step(const char16_t* p) {
    return hit_bits(are_surrogates(load_lanes(p)) |
                    are_surrogates(load_lanes(p + kAsciiStep / 2))) != 0;
}

/// Sixteen units without surrogates, with room for as many of the longest characters.
char* encode_step(const EncodeTable& table, const char16_t* p, char* out) {
    for (std::size_t i = 0; table.isDouble && i < kAsciiStep; ++i) {
        const auto entry = entry_of(table, p[i]);
        const std::uint32_t sequence = bytes_low_first(entry);
        std::memcpy(out, &sequence, 2);
        out += short_entry_bytes(entry);
    }
    for (std::size_t i = 0; !table.isDouble && i < kAsciiStep; ++i) {
        const std::uint32_t entry = entry_of(table, p[i]);
        const std::uint32_t sequence = bytes_low_first(entry);
        std::memcpy(out, &sequence, sizeof sequence);
        out += entry_bytes(entry);
    }
    return out;
}

std::size_t size_of_units(const EncodeTable& table, const char16_t* p, const char16_t* last) {
    std::size_t size = 0;
    for (; table.isDouble && p != last; ++p) {
        size += short_entry_bytes(entry_of(table, *p));
    }
    for (; p != last; ++p) {
        size += entry_bytes(entry_of(table, *p));
    }
    return size;
}

/// Without a surrogate pair, so that every unit is a byte.
void encode_single(const EncodeTable& table, const char16_t* source, std::size_t length,
                   char* destination) {
    std::size_t i = 0;
    for (; i + kAsciiStep <= length; i += kAsciiStep) {
        if (table.isAscii && is_ascii_step(source + i)) {
            transfer_step(source + i, destination + i);
            continue;
        }
        for (std::size_t k = i; k < i + kAsciiStep; ++k) {
            destination[k] = static_cast<char>(entry_of(table, source[k]));
        }
    }
    for (; i < length; ++i) {
        destination[i] = static_cast<char>(entry_of(table, source[i]));
    }
}

}  // namespace

const EncodeTable* first_encode_table(const CodePage& page) {
    return publish(page.tables->encode, build(page));
}

std::size_t table_encoded_size(const EncodeTable& table, const char16_t* source,
                               std::size_t length) noexcept {
    const char16_t* const last = source + length;
    const std::size_t pairs = count_surrogate_pairs(source, length);
    if (table.isSingle) {
        return length - pairs;
    }
    if (pairs == 0) {
        const std::size_t ascii = table.isAscii ? ascii_run(source, length) : 0;
        return ascii + size_of_units(table, source + ascii, last);
    }
    std::size_t size = 0;
    for (const char16_t* p = source; p != last;) {
        const Step step = read_step(table, p, last);
        size += entry_bytes(step.entry);
        p += step.units;
    }
    return size;
}

void table_encode(const EncodeTable& table, const char16_t* source, std::size_t length,
                  char* destination, std::size_t size) noexcept {
    if (table.isSingle && size == length) {
        encode_single(table, source, length, destination);
        return;
    }
    constexpr std::ptrdiff_t kStep = kAsciiStep;
    constexpr std::ptrdiff_t kStepRoom = kStep * EncodeTable::kMaxBytes;
    const char16_t* const last = source + length;
    const char* const limit = destination + size;
    char* out = destination;
    for (const char16_t* p = source; p != last;) {
        if (last - p < kStep || limit - out < kStepRoom || has_surrogate_in_step(p)) {
            const Step step = read_step(table, p, last);
            out = put_entry(step.entry, out, limit);
            p += step.units;
        } else if (table.isAscii && is_ascii_step(p)) {
            transfer_step(p, out);
            out += kStep;
            p += kStep;
        } else {
            out = encode_step(table, p, out);
            p += kStep;
        }
    }
}

}  // namespace platform

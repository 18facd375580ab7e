#include "recoder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "../shared/source.h"
#include "failure.h"
#include "replacement.h"

namespace {

std::vector<Kelm> NamesIn(const Kelm& folder) {
    std::vector<Kelm> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder.constBuffer(), error);
    for (; !error && entry != end(entry); entry.increment(error)) {
        names.emplace_back(entry->path().filename().c_str());
    }
    if (error) {
        errno = error.value();
        throw SystemFailure("cannot be read");
    }
    std::sort(names.begin(), names.end());
    return names;
}

int OpenToRead(const Kelm& path) {
    const int descriptor = open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        throw SystemFailure("cannot be read");
    }
    return descriptor;
}

/// A file that can be read twice, with everything that standard input has.
File SpoolInput() {
    File spool(std::tmpfile(), &std::fclose);
    Kelm bytes;
    size_t count = 1;
    while (spool && count > 0) {
        count = std::fread(bytes.GetBuffer(BUFSIZ), 1, BUFSIZ, stdin);
        CheckInterrupt();
        std::fwrite(bytes.GetBuffer(0), 1, count, spool.get());
    }
    if (std::ferror(stdin) != 0 || !spool || std::fflush(spool.get()) != 0) {
        throw SystemFailure("cannot be read");
    }
    return spool;
}

/// A byte order mark is no text: it goes where the new code page could only refuse it.
bool DropsMark(const Way& way, Piece& piece, Place& place) {
    const WString mark(u"\uFEFF");
    if (place.byte > 0 || piece.text.Left(1) != mark ||
        WString::FromCodePage(mark.ToKelm(way.to), way.to) == mark) {
        return false;
    }
    place.byte = mark.ToKelm(way.from).GetLength();
    piece = {piece.bytes.Mid(static_cast<int>(place.byte)), piece.text.Mid(1)};
    return true;
}

/// Whether the code page defines the whole file and nothing in it is a control from U+0080 to
/// U+009F, save the line end U+0085. Pages that define every byte do so by such controls, and no
/// text has them.
bool IsTextOf(unsigned int codePage, int descriptor) {
    WString controls;
    for (char16_t control = 0x80; control < 0xA0; ++control) {
        controls += control;
    }
    controls.Remove(u'\x85');
    PieceReader reader(descriptor, codePage);
    for (Piece piece; reader.Next(piece);) {
        if (!IsDefined(piece, codePage) || piece.text.FindOneOf(controls) >= 0) {
            return false;
        }
    }
    return true;
}

int Megabytes(long long bytes) {
    return static_cast<int>(bytes >> 20);
}

}  // namespace

void Recoder::Fail(const Kelm& name, const Kelm& text) {
    ++m_failed;
    m_progress.Clear();
    std::fprintf(stderr, "%s: %s\n", name.constBuffer(), text.constBuffer());
}

void Recoder::TakePath(const Kelm& path) {
    try {
        TakeEntry(path);
    } catch (const Failure& failure) {
        Fail(path, failure.text);
    }
}

void Recoder::TakeEntry(const Kelm& path) {
    struct stat status {};
    if (lstat(path, &status) != 0) {
        throw SystemFailure("cannot be read");
    }
    if (S_ISDIR(status.st_mode)) {
        for (const Kelm& name : NamesIn(path)) {
            TakePath(path.Right(1) == "/" ? path + name : path + "/" + name);
        }
    } else if (S_ISLNK(status.st_mode)) {
        throw Failure{"is a link: not followed"};
    } else if (!S_ISREG(status.st_mode)) {
        throw Failure{"is no file"};
    } else if (status.st_nlink > 1) {
        throw Failure{"has other names, which a new file would not have: left as it is"};
    } else {
        TakeFile(path);
    }
}

void Recoder::TakeFile(const Kelm& path) {
    const Descriptor file(OpenToRead(path));
    const Way way{ChoosePage(file.Number()), m_options.to};
    if (Check(path, file.Number(), way)) {
        ++m_same;
        return;
    }
    if (!m_options.isDryRun) {
        Replacement replacement(path, file.Number());
        Rewrite(path, file.Number(), way, [&](const Kelm& bytes) { replacement.Write(bytes); });
        replacement.Commit();
    }
    ++m_done;
    m_progress.Clear();
    std::printf("%s: %s to %s\n", path.constBuffer(), CodePageName(way.from).constBuffer(),
                CodePageName(way.to).constBuffer());
    std::fflush(stdout);
}

void Recoder::TakeStandardInput() {
    try {
        const File spool = SpoolInput();
        const int descriptor = fileno(spool.get());
        const Way way{ChoosePage(descriptor), m_options.to};
        Check("-", descriptor, way);
        if (!m_options.isDryRun) {
            Rewrite("-", descriptor, way, [](const Kelm& bytes) {
                std::fwrite(bytes.constBuffer(), 1, static_cast<size_t>(bytes.GetLength()), stdout);
            });
        }
    } catch (const Failure& failure) {
        Fail("-", failure.text);
    }
}

void Recoder::Summarize() {
    m_progress.Clear();
    std::printf("%d %s, %d the same in both, %d left as they are\n", m_done,
                m_options.isDryRun ? "to re-encode" : "re-encoded", m_same, m_failed);
}

unsigned int Recoder::ChoosePage(int descriptor) const {
    if (m_options.from.size() == 1) {
        return m_options.from[0];  // whose faults are worth more than that there are some
    }
    for (const unsigned int codePage : m_options.from) {
        if (IsTextOf(codePage, descriptor)) {
            return codePage;
        }
    }
    throw Failure{"is in none of the code pages: left as it is"};
}

Recoder::Result Recoder::Recode(const Kelm& name, int descriptor, const Way& way,
                                const Write& write) {
    const size_t most = static_cast<size_t>(m_options.places) + 1;
    Result result;
    Place place;
    PieceReader reader(descriptor, way.from);
    for (Piece piece; result.faults.size() < most && reader.Next(piece);) {
        result.isSame = !DropsMark(way, piece, place) && result.isSame;
        const Kelm bytes = piece.text.ToKelm(way.to);
        if (!IsDefined(piece, way.from) || WString::FromCodePage(bytes, way.to) != piece.text) {
            FindFaults(piece, way, most, place, result.faults);
            continue;
        }
        Advance(piece, place);
        result.isSame = result.isSame && bytes == piece.bytes;
        write(bytes);
        m_progress.Show(Kelm::FromFormat("%d MB of %s", Megabytes(place.byte), name.constBuffer()));
    }
    return result;
}

/// Whether the file has the same bytes in both code pages. Tells of its faults and throws `Failure`
/// if there are any.
bool Recoder::Check(const Kelm& name, int descriptor, const Way& way) {
    const Result result = Recode(name, descriptor, way, [](const Kelm&) {});
    const size_t shown = std::min(result.faults.size(), static_cast<size_t>(m_options.places));
    m_progress.Clear();
    for (size_t i = 0; i < shown; ++i) {
        const auto& [place, text] = result.faults[i];
        const Kelm line =
            Kelm::FromFormat("%I64d:%I64d: byte %I64d", place.line, place.column, place.byte);
        std::fprintf(stderr, "%s:%s: %s\n", name.constBuffer(), line.constBuffer(),
                     text.constBuffer());
    }
    if (shown > 0) {
        throw Failure{shown < result.faults.size() ? "and more: left as it is" : "left as it is"};
    }
    return result.isSame;
}

/// The pass behind `Check`, which found no fault.
void Recoder::Rewrite(const Kelm& name, int descriptor, const Way& way, const Write& write) {
    if (!Recode(name, descriptor, way, write).faults.empty()) {
        throw Failure{"has been changed meanwhile"};
    }
}

#pragma once

#include <Kelm.h>

#include <cstdio>

/// Hands out the lines of a file as they stand there, a piece of the file in memory at a time.
class LineReader {
public:
    /// Of a longer line only a beginning is handed out.
    static constexpr int kLongest = 1 << 20;

    /// `lineEnd` is the byte that ends a line in the code page of the file.
    LineReader(std::FILE* file, char lineEnd) : m_file(file), m_lineEnd(lineEnd) {}

    /// The next line without its end. False at the end of the file, and when reading fails.
    bool Next(Kelm& line);

    bool WasCut() const { return m_wasCut; }  ///< Whether the last line was too long.

    long long BytesRead() const { return m_bytesRead; }

private:
    bool Fill();

    std::FILE* m_file;
    char m_lineEnd;
    Kelm m_piece;
    int m_next = 0;
    long long m_bytesRead = 0;
    bool m_wasCut = false;
};

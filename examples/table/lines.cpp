#include "lines.h"

#include <cstring>

bool LineReader::Fill() {
    constexpr int kRoom = 1 << 18;
    char* buffer = m_piece.GetBuffer(kRoom);
    const size_t count = std::fread(buffer, 1, kRoom, m_file);
    m_piece.ReleaseBuffer(static_cast<int>(count));
    m_bytesRead += static_cast<long long>(count);
    m_next = 0;
    return count > 0;
}

bool LineReader::Next(Kelm& line) {
    bool hasBytes = false;
    m_wasCut = false;
    line.Empty();
    while (m_next < m_piece.GetLength() || Fill()) {
        hasBytes = true;
        // Kelm::Find walks text of the process's code page, and these bytes are not that yet.
        const char* start = m_piece.constBuffer() + m_next;
        const int left = m_piece.GetLength() - m_next;
        const void* end = std::memchr(start, m_lineEnd, static_cast<size_t>(left));
        const int length =
            end == nullptr ? left : static_cast<int>(static_cast<const char*>(end) - start);
        if (length > kLongest - line.GetLength()) {
            m_wasCut = true;
        } else if (line.IsEmpty()) {
            line = Kelm(start, length);
        } else {
            line += Kelm(start, length);
        }
        m_next += length + 1;
        if (end != nullptr) {
            return true;
        }
    }
    return hasBytes;
}

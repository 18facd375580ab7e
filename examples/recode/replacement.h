#pragma once

#include <Kelm.h>
#include <sys/stat.h>

/// A descriptor that is closed with its owner.
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor();

    int Number() const { return m_number; }

private:
    int m_number;
};

/// A new content for a file, which takes the place of the old one at once or not at all: until
/// then it is a file without meaning in the same folder. Everything here throws `Failure`.
class Replacement {
public:
    /// The new content gets the permissions, the attributes and, where that is allowed, the owner
    /// of the open file at the path.
    Replacement(const Kelm& path, int original);
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    void Write(const Kelm& bytes);

    /// Puts the content in its place once it is safe on the disk. Refuses if the file is not what
    /// it was at the beginning.
    void Commit();

private:
    Kelm m_path;
    int m_original;
    struct stat m_before;
    Kelm m_temporary;
    Descriptor m_new;
    bool m_isCommitted = false;
};

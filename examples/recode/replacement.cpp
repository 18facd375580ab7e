#include "replacement.h"

#include <fcntl.h>
#include <linux/limits.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "failure.h"

namespace {

Kelm FolderOf(const Kelm& path) {
    const int slash = path.ReverseFind('/');
    return slash < 0 ? Kelm("./") : path.Left(slash + 1);
}

struct stat StatusOf(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        throw SystemFailure("cannot be read");
    }
    return status;
}

/// Makes a file of a name that the folder does not have, which goes into `path`.
int MakeTemporary(const Kelm& folder, Kelm& path) {
    path = folder + ".recode-XXXXXX";
    const int descriptor = mkostemp(path.GetBuffer(path.GetLength()), O_CLOEXEC);
    if (descriptor < 0) {
        throw SystemFailure("cannot be replaced");
    }
    return descriptor;
}

/// Access lists and whatever else the file system keeps beside the file, where it can.
void CopyAttributes(int from, int to) {
    Kelm names, value;
    const ssize_t length = flistxattr(from, names.GetBuffer(XATTR_LIST_MAX), XATTR_LIST_MAX);
    names.ReleaseBuffer(length < 0 ? 0 : static_cast<int>(length));
    for (int at = 0; at < names.GetLength(); at += Kelm(names.constBuffer() + at).GetLength() + 1) {
        const char* name = names.constBuffer() + at;
        const ssize_t size = fgetxattr(from, name, value.GetBuffer(XATTR_SIZE_MAX), XATTR_SIZE_MAX);
        if (size >= 0) {
            fsetxattr(to, name, value.constBuffer(), static_cast<size_t>(size), 0);
        }
    }
}

void CopyRights(int from, const struct stat& status, int to) {
    const bool isOwnerKept = fchown(to, status.st_uid, status.st_gid) == 0;
    const bool isGroupKept = isOwnerKept || fchown(to, static_cast<uid_t>(-1), status.st_gid) == 0;
    CopyAttributes(from, to);
    // What a group or an identity may do is not for another one.
    const mode_t kept = isOwnerKept ? 07777 : isGroupKept ? 0777 : 0707;
    if (fchmod(to, status.st_mode & kept) != 0) {
        throw SystemFailure("cannot be replaced");
    }
}

bool IsSame(const struct stat& left, const struct stat& right) {
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino &&
           left.st_size == right.st_size && left.st_mtim.tv_sec == right.st_mtim.tv_sec &&
           left.st_mtim.tv_nsec == right.st_mtim.tv_nsec;
}

void SyncFolder(const Kelm& path) {
    const Descriptor folder(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.Number() < 0 || fsync(folder.Number()) != 0) {
        throw SystemFailure("is replaced, but its folder is not safe on the disk");
    }
}

}  // namespace

Descriptor::~Descriptor() {
    if (m_number >= 0) {
        close(m_number);
    }
}

Replacement::Replacement(const Kelm& path, int original)
    : m_path(path),
      m_original(original),
      m_before(StatusOf(original)),
      m_new(MakeTemporary(FolderOf(path), m_temporary)) {}

Replacement::~Replacement() {
    if (!m_isCommitted) {
        unlink(m_temporary);
    }
}

void Replacement::Write(const Kelm& bytes) {
    for (int at = 0; at < bytes.GetLength();) {
        const auto left = static_cast<size_t>(bytes.GetLength() - at);
        const ssize_t count = write(m_new.Number(), bytes.constBuffer() + at, left);
        if (count < 0 && errno != EINTR) {
            throw SystemFailure("cannot be replaced");
        }
        at += count > 0 ? static_cast<int>(count) : 0;
    }
}

void Replacement::Commit() {
    CopyRights(m_original, m_before, m_new.Number());
    if (fsync(m_new.Number()) != 0) {
        throw SystemFailure("cannot be replaced");
    }
    struct stat now {};
    if (lstat(m_path, &now) != 0 || !IsSame(now, m_before)) {
        throw Failure{"has been changed meanwhile"};
    }
    if (std::rename(m_temporary, m_path) != 0) {
        throw SystemFailure("cannot be replaced");
    }
    m_isCommitted = true;
    SyncFolder(FolderOf(m_path));
}

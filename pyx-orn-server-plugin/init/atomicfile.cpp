#include "atomicfile.h"

#include <QFile>
#include <QList>
#include <QPair>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

bool writeAll(int fd, const QByteArray &bytes)
{
    const char *data = bytes.constData();
    size_t left = size_t(bytes.size());
    while (left > 0) {
        const ssize_t written = ::write(fd, data, left);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        data += written;
        left -= size_t(written);
    }
    return true;
}

bool readAll(int fd, QByteArray *bytes)
{
    char buffer[4096];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)
            return true;
        bytes->append(buffer, int(got));
    }
}

// The file's extended attributes at `path`, name and value: its ACL, its security label and the
// rest. False when they cannot be read.
bool readAttributes(const QByteArray &path, QList<QPair<QByteArray, QByteArray>> *attributes)
{
    const ssize_t size = ::llistxattr(path.constData(), nullptr, 0);
    // A file system without them has none to keep.
    if (size < 0)
        return errno == ENOTSUP;
    QByteArray names(int(size), '\0');
    const ssize_t got = ::llistxattr(path.constData(), names.data(), size_t(names.size()));
    if (got < 0)
        return false;
    names.truncate(int(got));
    for (const QByteArray &name : names.split('\0')) {
        if (name.isEmpty())
            continue;
        const ssize_t length = ::lgetxattr(path.constData(), name.constData(), nullptr, 0);
        QByteArray value(int(qMax<ssize_t>(length, 0)), '\0');
        if (length < 0 || ::lgetxattr(path.constData(), name.constData(), value.data(),
                                      size_t(value.size())) != length)
            return false;
        attributes->append({name, value});
    }
    return true;
}

bool writeAttributes(int fd, const QList<QPair<QByteArray, QByteArray>> &attributes)
{
    for (const auto &[name, value] : attributes) {
        if (::fsetxattr(fd, name.constData(), value.constData(), size_t(value.size()), 0) != 0)
            return false;
    }
    return true;
}

bool rewrite(int fd, const QByteArray &content)
{
    return ::lseek(fd, 0, SEEK_SET) == 0 && writeAll(fd, content) &&
           ::ftruncate(fd, off_t(content.size())) == 0 && ::fsync(fd) == 0;
}

// The last resort for a file that cannot be replaced: a failed write puts the old bytes back.
AtomicFile::Result rewriteInPlace(const QByteArray &target, const QByteArray &content)
{
    const int fd = ::open(target.constData(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return AtomicFile::NotOpened;
    QByteArray old;
    AtomicFile::Result result = AtomicFile::NotWritten;
    // Room first: a full file system refuses here, before a byte of the old content is
    // overwritten, instead of halfway through the new one, where only the restore stands
    // between the file and a torn one.
    if (readAll(fd, &old) && (::fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, off_t(content.size())) == 0 ||
                              errno == EOPNOTSUPP)) {
        if (rewrite(fd, content))
            result = AtomicFile::Replaced;
        else
            rewrite(fd, old);
    }
    ::close(fd);
    return result;
}

} // namespace

AtomicFile::Result AtomicFile::replace(const QString &path, const QByteArray &content)
{
    char *resolved = ::realpath(QFile::encodeName(path).constData(), nullptr);
    if (!resolved)
        return NotOpened;
    const QByteArray target(resolved);
    std::free(resolved);
    struct stat old;
    if (::stat(target.constData(), &old) != 0 || !S_ISREG(old.st_mode))
        return NotOpened;

    const int slash = target.lastIndexOf('/');
    const QByteArray folder = target.left(slash + 1);
    QByteArray temporary = folder + '.' + target.mid(slash + 1) + ".XXXXXX";
    QList<QPair<QByteArray, QByteArray>> attributes;
    if (!readAttributes(target, &attributes))
        return NotOpened;
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0)
        return NotOpened;
    // The owner first: giving a file away may clear its mode's special bits. The attributes
    // last: a change of mode would narrow the ACL they carry.
    bool written = writeAll(fd, content) && ::fchown(fd, old.st_uid, old.st_gid) == 0 &&
                   ::fchmod(fd, old.st_mode & 07777) == 0 && writeAttributes(fd, attributes) &&
                   ::fsync(fd) == 0;
    written = ::close(fd) == 0 && written;
    if (written && ::rename(temporary.constData(), target.constData()) == 0) {
        // The new name is on disk only once the folder is.
        const int dir = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (dir >= 0) {
            ::fsync(dir);
            ::close(dir);
        }
        return Replaced;
    }
    const int renameError = errno;
    ::unlink(temporary.constData());
    // A file mounted over (as containers do with /etc/hosts) cannot be replaced, only rewritten.
    if (written && renameError == EBUSY)
        return rewriteInPlace(target, content);
    return NotWritten;
}

#include "secretfile.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

int SecretFile::create(const QString &path)
{
    const QFileInfo info(path);
    const QByteArray name = QFile::encodeName(info.fileName());
    const int folder = ::open(QFile::encodeName(info.absolutePath()).constData(),
                              O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0)
        return -1;
    int fd = -1;
    struct stat status;
    if (::fstat(folder, &status) == 0 && status.st_uid == 0 &&
        (status.st_mode & (S_IWGRP | S_IWOTH)) == 0) {
        const bool exists = ::fstatat(folder, name.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0;
        if (!exists || (S_ISREG(status.st_mode) && ::unlinkat(folder, name.constData(), 0) == 0))
            fd = ::openat(folder, name.constData(),
                          O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    }
    ::close(folder);
    return fd;
}

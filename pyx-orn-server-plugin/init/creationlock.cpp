#include "creationlock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

const char *CreationLock::path()
{
    // /run is root's alone: no user can plant a link or a file of theirs there.
    return "/run/pyx-orn-server-plugin.lock";
}

CreationLock::Result CreationLock::take()
{
    release();
    // Close-on-exec: a service that orn-init starts must not go on holding it.
    const int fd = ::open(path(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0)
        return Unavailable;
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        ::close(fd);
        errno = error;
        return error == EWOULDBLOCK ? HeldElsewhere : Unavailable;
    }
    _fd = fd;
    return Taken;
}

void CreationLock::release()
{
    if (_fd >= 0)
        ::close(_fd);
    _fd = -1;
}

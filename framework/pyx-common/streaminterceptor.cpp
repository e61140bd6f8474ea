#include "streaminterceptor.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

// A process has one fd table: two captures of the same descriptor would restore each other's
// pipes in the wrong order.
std::atomic<bool> s_captureActive{false};

// Whatever keeps writing while we wait must not hold the caller forever.
constexpr std::chrono::seconds DrainTimeout{5};

void closeDescriptor(int &fd)
{
    if (fd >= 0) {
        ::close(fd);
        fd = -1;
    }
}

int retryDup2(int from, int to)
{
    int result;
    do {
        result = ::dup2(from, to);
    } while (result < 0 && (errno == EINTR || errno == EBUSY));
    return result;
}

} // namespace

struct StreamInterceptor::Private
{
    FILE *stream = nullptr;
    int fd = -1;
    int savedFd = -1;
    int readFd = -1;
    int wakeFd = -1;
    bool capturing = false;

    std::thread reader;
    std::mutex mutex;
    std::condition_variable appended;
    QByteArray captured;

    bool start();
    void readLoop();
    // Returns false once every writer has gone.
    bool drainPipe();
    int pendingBytes() const;
};

bool StreamInterceptor::Private::start()
{
    fd = ::fileno(stream);
    if (fd < 0) {
        return false;
    }
    std::fflush(stream);

    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC) < 0) {
        return false;
    }
    readFd = pipeFds[0];
    int writeFd = pipeFds[1];
    // Only the read end: the write end becomes the stream's descriptor, and its writers must
    // keep blocking semantics.
    const int flags = ::fcntl(readFd, F_GETFL);
    wakeFd = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    savedFd = ::fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (flags < 0 || ::fcntl(readFd, F_SETFL, flags | O_NONBLOCK) < 0 || wakeFd < 0
        || savedFd < 0) {
        closeDescriptor(writeFd);
        return false;
    }

    try {
        reader = std::thread(&Private::readLoop, this);
    } catch (const std::system_error &) {
        closeDescriptor(writeFd);
        return false;
    }

    if (retryDup2(writeFd, fd) < 0) {
        closeDescriptor(writeFd);
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto written = ::write(wakeFd, &one, sizeof one);
        reader.join();
        return false;
    }
    closeDescriptor(writeFd);
    return true;
}

void StreamInterceptor::Private::readLoop()
{
    pollfd fds[2] = {{readFd, POLLIN, 0}, {wakeFd, POLLIN, 0}};
    for (;;) {
        if (::poll(fds, 2, -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;
        }
        if (fds[0].revents != 0 && !drainPipe()) {
            // A negative descriptor is ignored by poll(); the wake-up still ends the loop.
            fds[0].fd = -1;
        }
        if (fds[1].revents != 0) {
            // A child may still hold the write end, so EOF may never come: take what is there.
            if (fds[0].fd >= 0) {
                drainPipe();
            }
            return;
        }
    }
}

bool StreamInterceptor::Private::drainPipe()
{
    char buffer[65536];
    for (;;) {
        // Reading under the lock means an empty pipe seen under the same lock implies that
        // everything read so far has been appended.
        std::lock_guard<std::mutex> lock(mutex);
        const ssize_t count = ::read(readFd, buffer, sizeof buffer);
        if (count > 0) {
            captured.append(buffer, static_cast<int>(count));
            appended.notify_all();
            continue;
        }
        appended.notify_all();
        if (count == 0) {
            return false;
        }
        if (errno == EINTR) {
            continue;
        }
        return errno == EAGAIN || errno == EWOULDBLOCK;
    }
}

int StreamInterceptor::Private::pendingBytes() const
{
    int count = 0;
    if (::ioctl(readFd, FIONREAD, &count) < 0) {
        return 0;
    }
    return count;
}

StreamInterceptor::StreamInterceptor(FILE *stream)
    : d(std::make_unique<Private>())
{
    d->stream = stream;
    if (!stream) {
        return;
    }
    bool expected = false;
    if (!s_captureActive.compare_exchange_strong(expected, true)) {
        return;
    }
    d->capturing = d->start();
    if (!d->capturing) {
        closeDescriptor(d->savedFd);
        closeDescriptor(d->readFd);
        closeDescriptor(d->wakeFd);
        s_captureActive = false;
    }
}

StreamInterceptor::~StreamInterceptor()
{
    if (!d->capturing) {
        return;
    }
    std::fflush(d->stream);
    retryDup2(d->savedFd, d->fd);
    closeDescriptor(d->savedFd);

    const std::uint64_t one = 1;
    ssize_t written;
    do {
        written = ::write(d->wakeFd, &one, sizeof one);
    } while (written < 0 && errno == EINTR);
    d->reader.join();

    closeDescriptor(d->readFd);
    closeDescriptor(d->wakeFd);
    s_captureActive = false;
}

QByteArray StreamInterceptor::streamReadAll()
{
    if (!d->capturing) {
        return QByteArray();
    }
    std::fflush(d->stream);
    std::unique_lock<std::mutex> lock(d->mutex);
    d->appended.wait_for(lock, DrainTimeout, [this] { return d->pendingBytes() == 0; });
    return d->captured;
}

bool StreamInterceptor::isCapturing() const
{
    return d->capturing;
}

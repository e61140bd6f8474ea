#include "journalsocket.h"

#include <QCoreApplication>
#include <QFile>
#include <QPointer>
#include <QSocketNotifier>
#include <QtEndian>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

namespace {
// What libsystemd asks for: most entries then fit in one datagram.
constexpr int sendBufferSize = 8 * 1024 * 1024;

QByteArray encode(const JournalSocket::Fields &identity, const JournalSocket::Fields &fields)
{
    QByteArray entry;
    for (const JournalSocket::Fields *list : {&identity, &fields}) {
        for (const auto &[name, value] : *list) {
            entry += name;
            if (value.contains('\n')) {
                char length[8];
                qToLittleEndian<quint64>(quint64(value.size()), length);
                entry += '\n';
                entry.append(length, sizeof length);
            } else {
                entry += '=';
            }
            entry += value;
            entry += '\n';
        }
    }
    return entry;
}
} // namespace

JournalSocket::JournalSocket(const QString &path, qint64 queueLimit, QObject *parent)
    : QObject(parent)
    , _path(QFile::encodeName(path))
    , _queueLimit(queueLimit)
{}

JournalSocket::~JournalSocket()
{
    // One last try, without waiting, for what is still queued.
    if (_fd >= 0)
        drain();
    close();
}

JournalSocket *JournalSocket::instance()
{
    static QPointer<JournalSocket> shared;
    if (!shared)
        shared = new JournalSocket(defaultPath(), defaultQueueLimit, QCoreApplication::instance());
    return shared;
}

void JournalSocket::send(const Fields &identity, const Fields &fields)
{
    const QByteArray entry = encode(identity, fields);
    if (!_queue.isEmpty() || _lost > 0) {
        enqueue(entry, identity);
        return;
    }
    // Connected each time anew while there is no journal, so that one started later is found.
    if (!open())
        return;
    switch (transmit(entry)) {
    case Sent::Whole:
    case Sent::Dropped:
        break;
    case Sent::Later:
        enqueue(entry, identity);
        break;
    case Sent::NoJournal:
        close();
        break;
    }
}

bool JournalSocket::open()
{
    if (_fd >= 0)
        return true;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (size_t(_path.size()) >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, _path.constData(), size_t(_path.size()));
    const int fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return false;
    // Connected, so that poll() tells when the journal's queue has room again.
    if (::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        ::close(fd);
        return false;
    }
    if (::setsockopt(fd, SOL_SOCKET, SO_SNDBUFFORCE, &sendBufferSize, sizeof sendBufferSize) != 0)
        ::setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &sendBufferSize, sizeof sendBufferSize);
    _fd = fd;
    _writable = new QSocketNotifier(fd, QSocketNotifier::Write, this);
    _writable->setEnabled(false);
    connect(_writable, &QSocketNotifier::activated, this, &JournalSocket::drain);
    return true;
}

void JournalSocket::close()
{
    if (_writable) {
        // Possibly from within its own signal.
        _writable->setEnabled(false);
        _writable->deleteLater();
        _writable = nullptr;
    }
    if (_fd >= 0)
        ::close(_fd);
    _fd = -1;
    _queue.clear();
    _pendingBytes = 0;
    _lost = 0;
}

JournalSocket::Sent JournalSocket::transmit(const QByteArray &entry)
{
    iovec part = {const_cast<char *>(entry.constData()), size_t(entry.size())};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    for (;;) {
        if (::sendmsg(_fd, &message, MSG_DONTWAIT | MSG_NOSIGNAL) >= 0)
            return Sent::Whole;
        if (errno == EINTR)
            continue;
        if (errno == EAGAIN)
            return Sent::Later;
        // Too large for a datagram, or for the memory the kernel would give one.
        if (errno == EMSGSIZE || errno == ENOBUFS)
            return transmitInMemoryFile(entry);
        return Sent::NoJournal;
    }
}

JournalSocket::Sent JournalSocket::transmitInMemoryFile(const QByteArray &entry)
{
    const int file = ::memfd_create("journal-entry", MFD_ALLOW_SEALING | MFD_CLOEXEC);
    if (file < 0)
        return Sent::Dropped;
    for (qsizetype done = 0; done < entry.size();) {
        const ssize_t n = ::write(file, entry.constData() + done, size_t(entry.size() - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            ::close(file);
            return Sent::Dropped;
        }
        done += n;
    }
    // The journal takes a memory file only once nobody can change it any more.
    if (::fcntl(file, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) != 0) {
        ::close(file);
        return Sent::Dropped;
    }
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof file)] = {};
    msghdr message = {};
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr *header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof file);
    std::memcpy(CMSG_DATA(header), &file, sizeof file);
    ssize_t sent;
    do {
        sent = ::sendmsg(_fd, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    const int error = errno;
    ::close(file);
    if (sent >= 0)
        return Sent::Whole;
    return error == EAGAIN ? Sent::Later : Sent::Dropped;
}

void JournalSocket::enqueue(const QByteArray &entry, const Fields &identity)
{
    if (_pendingBytes + entry.size() > _queueLimit) {
        ++_lost;
        _lostIdentity = identity;
    } else {
        _queue.enqueue(entry);
        _pendingBytes += entry.size();
    }
    _writable->setEnabled(true);
}

void JournalSocket::drain()
{
    while (!_queue.isEmpty() || _lost > 0) {
        if (_queue.isEmpty()) {
            const QByteArray message =
                "Journal entries lost, as the journal did not take them in time: " +
                QByteArray::number(_lost);
            _queue.enqueue(encode(_lostIdentity, {{"PRIORITY", QByteArray::number(LOG_WARNING)},
                                                  {"MESSAGE", message}}));
            _pendingBytes += _queue.head().size();
            _lost = 0;
        }
        switch (transmit(_queue.head())) {
        case Sent::Whole:
        case Sent::Dropped:
            _pendingBytes -= _queue.dequeue().size();
            break;
        case Sent::Later:
            return;
        case Sent::NoJournal:
            close();
            return;
        }
    }
    _writable->setEnabled(false);
}

#include "journalreader.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstring>

#include <csignal>

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

JournalReader::JournalReader(const QString &recordPath, const QString &logPath)
    : _record(::open(QFile::encodeName(recordPath).constData(),
                     O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644))
    , _log(::open(QFile::encodeName(logPath).constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC,
                  0644))
{
}

JournalReader::~JournalReader()
{
    for (int fd : {_socket, _record, _log}) {
        if (fd >= 0)
            ::close(fd);
    }
}

bool JournalReader::listen(const QString &socketPath)
{
    const QByteArray path = QFile::encodeName(socketPath);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (size_t(path.size()) >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(address.sun_path, path.constData(), size_t(path.size()));
    _socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    // Whoever runs on the simulated host may write to the journal, as on a real one.
    return _socket >= 0 && _record >= 0 && _log >= 0 &&
           ::bind(_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
           ::chmod(path.constData(), 0666) == 0;
}

void JournalReader::run()
{
    // SIGTERM, as a descriptor: whatever was sent before it is recorded, then the reader ends.
    sigset_t term;
    sigemptyset(&term);
    sigaddset(&term, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &term, nullptr);
    pollfd fds[2] = {{_socket, POLLIN, 0}, {::signalfd(-1, &term, SFD_CLOEXEC), POLLIN, 0}};
    QByteArray entry;
    for (;;) {
        if (::poll(fds, 2, -1) < 0 && errno != EINTR)
            return;
        if (fds[1].revents != 0) {
            while (receive(&entry, MSG_DONTWAIT))
                record(entry);
            return;
        }
        if (fds[0].revents != 0 && receive(&entry, 0))
            record(entry);
    }
}

void JournalReader::record(const QByteArray &entry)
{
    if (entry.isEmpty())
        return;
    QJsonObject object;
    QByteArray line = "journal";
    for (const auto &[name, value] : fields(entry)) {
        object.insert(QString::fromUtf8(name), QString::fromUtf8(value));
        line += " {" + name + '=' + QByteArray(value).replace('\n', "\\n") + '}';
    }
    append(_record, QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
    append(_log, line + '\n');
}

bool JournalReader::receive(QByteArray *entry, int flags)
{
    // The size of the next datagram, which the sender may have made as large as 8 MiB.
    char probe;
    const ssize_t size = ::recv(_socket, &probe, 1, MSG_PEEK | MSG_TRUNC | flags);
    if (size < 0)
        return false;
    QByteArray payload(int(std::max<ssize_t>(size, 1)), Qt::Uninitialized);
    iovec part = {payload.data(), size_t(payload.size())};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t got = ::recvmsg(_socket, &message, MSG_CMSG_CLOEXEC | flags);
    if (got < 0)
        return false;
    payload.truncate(int(got));
    *entry = payload;
    const cmsghdr *header = CMSG_FIRSTHDR(&message);
    if (!header || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS)
        return true;
    // A large entry comes as a memory file: its whole content is the entry.
    int fd;
    std::memcpy(&fd, CMSG_DATA(header), sizeof fd);
    entry->clear();
    char buffer[65536];
    for (ssize_t n; (n = ::pread(fd, buffer, sizeof buffer, entry->size())) > 0;)
        entry->append(buffer, int(n));
    ::close(fd);
    return true;
}

JournalReader::Fields JournalReader::fields(const QByteArray &entry)
{
    Fields fields;
    for (int at = 0; at < entry.size();) {
        const int lineFeed = entry.indexOf('\n', at);
        const int equals = entry.indexOf('=', at);
        if (equals >= 0 && (lineFeed < 0 || equals < lineFeed)) {
            const int end = lineFeed < 0 ? entry.size() : lineFeed;
            fields.append({entry.mid(at, equals - at), entry.mid(equals + 1, end - equals - 1)});
            at = end + 1;
            continue;
        }
        if (lineFeed < 0 || lineFeed + 9 > entry.size())
            break;
        quint64 length = 0;
        for (int i = 7; i >= 0; --i)
            length = (length << 8) | quint8(entry.at(lineFeed + 1 + i));
        const int start = lineFeed + 9;
        if (length > quint64(entry.size() - start))
            break;
        fields.append({entry.mid(at, lineFeed - at), entry.mid(start, int(length))});
        at = start + int(length) + 1;
    }
    return fields;
}

void JournalReader::append(int fd, const QByteArray &bytes)
{
    // One write each, in append mode: lines of other writers to the log never tear this one.
    for (qsizetype done = 0; done < bytes.size();) {
        const ssize_t n = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (n <= 0 && errno != EINTR)
            return;
        done += std::max<ssize_t>(n, 0);
    }
}

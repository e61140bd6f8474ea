#include "runjournal.h"

#include "journalsocket.h"
#include "latin1literal.h"

#include <algorithm>
#include <utility>

#include <syslog.h>

#include <systemd/sd-id128.h>

namespace {
constexpr QLatin1String mask = latin1Literal("********");

QString yesNo(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

// What the last entry says of each way a run can end, into `fields` and as its text. A way left
// out does not compile.
using Fields = QList<QPair<const char *, QString>>;

QString endText(const RunJournal::Exited &end, Fields &fields)
{
    fields.append({"PYX_OUTCOME", QStringLiteral("exited")});
    fields.append({"PYX_EXIT_CODE", QString::number(end.exitCode)});
    return QStringLiteral("orn-init exited with code %1").arg(end.exitCode);
}

QString endText(const RunJournal::Crashed &, Fields &fields)
{
    fields.append({"PYX_OUTCOME", QStringLiteral("crashed")});
    return QStringLiteral("orn-init crashed");
}

QString endText(const RunJournal::Aborted &, Fields &fields)
{
    fields.append({"PYX_OUTCOME", QStringLiteral("aborted")});
    return QStringLiteral("orn-init was stopped: the run was aborted");
}

QString endText(const RunJournal::NotStarted &end, Fields &fields)
{
    fields.append({"PYX_OUTCOME", QStringLiteral("not-started")});
    fields.append({"PYX_START_ERROR", end.why});
    return QStringLiteral("orn-init could not be started: %1").arg(end.why);
}
} // namespace

RunJournal::RunJournal(const QStringList &secrets)
{
    for (const QString &secret : secrets) {
        if (!secret.isEmpty())
            _secrets << secret;
    }
    // Longer ones first, so that a password inside another is masked with it.
    std::sort(_secrets.begin(), _secrets.end(),
              [](const QString &a, const QString &b) { return a.size() > b.size(); });
    sd_id128_t id;
    char text[SD_ID128_STRING_MAX];
    if (sd_id128_randomize(&id) == 0)
        _runId = sd_id128_to_string(id, text);
}

RunJournal::RunJournal(const QByteArray &runId)
    : _runId(runId)
{}

void RunJournal::started(bool customNetworkSettings, const QString &hostname,
                         const QString &serverName, const QString &ipAddress)
{
    Fields fields;
    QString user;
    if (qEnvironmentVariableIsSet("SUDO_USER")) {
        fields.append({"PYX_SUDO_USER", qEnvironmentVariable("SUDO_USER")});
        user = QStringLiteral(" for %1").arg(qEnvironmentVariable("SUDO_USER"));
    }
    if (qEnvironmentVariableIsSet("SUDO_UID"))
        fields.append({"PYX_SUDO_UID", qEnvironmentVariable("SUDO_UID")});
    fields.append({"PYX_CUSTOM_NETWORK", yesNo(customNetworkSettings)});
    QString message = QStringLiteral("Creating the directory-domain server%1").arg(user);
    if (customNetworkSettings) {
        fields.append({"PYX_HOSTNAME", hostname});
        fields.append({"PYX_SERVER_NAME", serverName});
        fields.append({"PYX_IP_ADDRESS", ipAddress});
        message += QStringLiteral(" as %1 (%2) at %3").arg(serverName, hostname, ipAddress);
    } else {
        message += QStringLiteral(" with the host's own network settings");
    }
    send("start", LOG_NOTICE, message, fields);
}

void RunJournal::hostnameSet(const QString &hostname, bool changed)
{
    send("hostname", LOG_INFO,
         changed ? QStringLiteral("Host name set to %1").arg(hostname)
                 : QStringLiteral("Host name already was %1").arg(hostname),
         {{"PYX_RESULT", changed ? QStringLiteral("changed") : QStringLiteral("unchanged")},
          {"PYX_HOSTNAME", hostname}});
}

void RunJournal::hostnameDiffers(const QString &asked, const QString &carried,
                                 const QString &paneLine)
{
    send("hostname", LOG_ERR, paneLine,
         {{"PYX_RESULT", QStringLiteral("differs")},
          {"PYX_HOSTNAME", asked},
          {"PYX_HOSTNAME_CARRIED", carried}});
}

void RunJournal::hostsFileRewritten(const QString &entry, const QByteArray &replacedLine)
{
    Fields fields{{"PYX_HOSTS_ENTRY", entry}};
    QString message;
    if (replacedLine.isNull()) {
        fields.prepend({"PYX_RESULT", QStringLiteral("added")});
        message = QStringLiteral("/etc/hosts: added \"%1\"").arg(entry);
    } else {
        const QString old = QString::fromLocal8Bit(replacedLine);
        fields.prepend({"PYX_RESULT", QStringLiteral("replaced")});
        fields.append({"PYX_HOSTS_REPLACED", old});
        message = QStringLiteral("/etc/hosts: \"%1\" replaced by \"%2\"").arg(old, entry);
    }
    send("hosts", LOG_INFO, message, fields);
}

void RunJournal::passwordFileWritten(const QString &path)
{
    send("password-file", LOG_INFO, QStringLiteral("Password file %1 written, mode 0600").arg(path),
         {{"PYX_RESULT", QStringLiteral("written")}, {"PYX_PASSWORD_FILE", path}});
}

void RunJournal::stepFailed(const char *step, const QString &paneLine)
{
    send(step, LOG_ERR, paneLine, {{"PYX_RESULT", QStringLiteral("failed")}});
}

void RunJournal::inhibitorTaken(const QString &what, const QString &error)
{
    if (error.isEmpty()) {
        send("inhibitor", LOG_INFO,
             QStringLiteral("Inhibitor lock taken: %1 blocked while orn-init runs").arg(what),
             {{"PYX_RESULT", QStringLiteral("taken")}, {"PYX_INHIBIT_WHAT", what}});
    } else {
        send("inhibitor", LOG_WARNING,
             QStringLiteral("No inhibitor lock taken, the run goes on without: %1").arg(error),
             {{"PYX_RESULT", QStringLiteral("not-taken")}, {"PYX_INHIBIT_ERROR", error}});
    }
}

void RunJournal::inhibitorReleased()
{
    send("inhibitor", LOG_INFO, QStringLiteral("Inhibitor lock released"),
         {{"PYX_RESULT", QStringLiteral("released")}});
}

void RunJournal::output(const QString &text, bool standardError)
{
    QString &partial = _partialLine[standardError];
    const int end = text.lastIndexOf(QLatin1Char('\n')) + 1;
    if (end == 0) {
        partial += text;
        return;
    }
    QString lines = partial + text.leftRef(end);
    partial = text.mid(end);
    while (lines.endsWith(QLatin1Char('\n')))
        lines.chop(1);
    sendOutput(lines, standardError);
}

void RunJournal::sendOutput(const QString &text, bool standardError)
{
    send("output", LOG_INFO, text,
         {{"PYX_CHANNEL", standardError ? QStringLiteral("stderr") : QStringLiteral("stdout")}});
}

void RunJournal::ended(const Outcome &outcome)
{
    for (const bool standardError : {false, true}) {
        if (!_partialLine[standardError].isEmpty())
            sendOutput(std::exchange(_partialLine[standardError], QString()), standardError);
    }
    const auto *exited = std::get_if<Exited>(&outcome);
    const bool success = exited && exited->exitCode == 0;
    Fields fields{{"PYX_RESULT", success ? QStringLiteral("succeeded") : QStringLiteral("failed")}};
    QString text = std::visit([&fields](const auto &end) { return endText(end, fields); }, outcome);
    text += success ? QStringLiteral("; the server was created")
                    : QStringLiteral("; the server was not created");
    send("end", success ? LOG_NOTICE : LOG_ERR, text, fields);
}

void RunJournal::rebootRequested()
{
    send("reboot", LOG_NOTICE,
         QStringLiteral("Reboot requested by the administrator after the change of host name"),
         {{"PYX_RESULT", QStringLiteral("requested")}});
}

void RunJournal::send(const char *step, int priority, const QString &message, const Fields &fields)
{
    // No CODE_FILE, CODE_LINE or CODE_FUNC: every entry comes from these few lines, so they would
    // say nothing.
    JournalSocket::Fields entry{
        {"PRIORITY", QByteArray::number(priority)},
        {"PYX_STEP", step},
        {"MESSAGE", masked(message)},
    };
    for (const auto &[name, value] : fields)
        entry.append({name, masked(value)});
    // Without a journal the entry is dropped at once; that changes nothing for the run.
    JournalSocket::instance()->send(
        {{"SYSLOG_IDENTIFIER", "pyx-orn-server-plugin"}, {"PYX_RUN_ID", _runId}}, entry);
}

QByteArray RunJournal::masked(const QString &value) const
{
    if (_secrets.isEmpty())
        return value.toUtf8();
    QString text = value;
    for (const QString &secret : _secrets)
        text.replace(secret, mask);
    return text.toUtf8();
}

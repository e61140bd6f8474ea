#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

#include <variant>

// The record that one initialisation run leaves in the system journal, under the identifier
// "pyx-orn-server-plugin": where it started, what each step did, everything the tool said, how
// it ended. Every entry carries the run's PYX_RUN_ID and a PYX_STEP; the passwords are masked in
// whatever an entry would hold. Without a journal nothing is written and nothing waits.
class RunJournal
{
public:
    // A new run's record; `secrets` never reach an entry.
    explicit RunJournal(const QStringList &secrets);
    // The record of the run `runId`, for what follows its end (a reboot). It knows no secrets.
    explicit RunJournal(const QByteArray &runId);

    const QByteArray &runId() const { return _runId; }

    void started(bool customNetworkSettings, const QString &hostname, const QString &serverName,
                 const QString &ipAddress);
    void hostnameSet(const QString &hostname, bool changed);
    // The host carries `carried` instead of the `asked` name, as the pane's line says.
    void hostnameDiffers(const QString &asked, const QString &carried, const QString &paneLine);
    // `replacedLine` null: the entry was added after the last line.
    void hostsFileRewritten(const QString &entry, const QByteArray &replacedLine);
    void passwordFileWritten(const QString &path);
    // A step that failed, with the line the output pane shows for it.
    void stepFailed(const char *step, const QString &paneLine);
    // `error` empty: the lock was taken.
    void inhibitorTaken(const QString &what, const QString &error);
    void inhibitorReleased();
    // Output of the tool as it arrives. Whole lines only are sent, those of one piece in one
    // entry: a password that arrives in two pieces is masked all the same. A line without its end
    // waits for the next piece of its channel, or for the end of the run.
    void output(const QString &text, bool standardError);
    // How the run ended, each way with what it has to tell. Only a tool that exited with code 0
    // created the server.
    struct Exited
    {
        int exitCode;
    };
    struct Crashed
    {
    };
    // Stopped by Abort or by the dialog's end.
    struct Aborted
    {
    };
    struct NotStarted
    {
        // Why it could not start, or why it was not started.
        QString why;
    };
    using Outcome = std::variant<Exited, Crashed, Aborted, NotStarted>;
    void ended(const Outcome &outcome);
    void rebootRequested();

private:
    using Fields = QList<QPair<const char *, QString>>;
    void send(const char *step, int priority, const QString &message, const Fields &fields = {});
    QByteArray masked(const QString &value) const;

    void sendOutput(const QString &text, bool standardError);

    QByteArray _runId;
    QStringList _secrets;
    // The start of a line on each channel, standard output first.
    QString _partialLine[2];
};

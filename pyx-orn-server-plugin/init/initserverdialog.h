#pragma once

#include "groupleaderprocess.h"
#include "inhibitorlock.h"
#include "runjournal.h"

#include <QDialog>
#include <QFile>
#include <QMap>
#include <QStringList>
#include <QVariant>

#include <optional>
#include <utility>

#include <sys/types.h>

class OutputPaneFeeder;
class QAbstractButton;

namespace Ui {
class InitServerDialog;
}

// The window in which the directory server is created: it prepares the host, hands the
// passwords to `orn-init` and shows what the tool says until it has ended.
class InitServerDialog : public QDialog
{
    Q_OBJECT

public:
    InitServerDialog(const QMap<QString, QVariant> &request, QWidget *parent = nullptr);
    ~InitServerDialog() override;

    // Runs a short command to its end, with 30 s to start and 30 s to finish. Returns one line
    // that says what went wrong, or an empty text.
    static QString runCommand(const QString &program, const QStringList &arguments);
    // What one chunk of the tool's output says: its text up to a NUL, without colour sequences.
    // The journal takes it as it is; the pane shows it as one paragraph, without the line feeds
    // at its end.
    static QString outputText(const QByteArray &chunk);
    static QString removeTrailingNewlines(const QString &text);

    // Ignored while the tool runs.
    void reject() override;

    // Where the run's record in the system journal is found, for what follows it (a reboot).
    const QByteArray &runId() const { return _journal.runId(); }

signals:
    void hostnameChanged();
    void serverCreatedSuccsessfully();

public slots:
    int exec() override;

private slots:
    void readProcessOutput(int channel);
    void initFinished();
    void buttonClicked(QAbstractButton *button);

private:
    // False when the host does not carry the name asked for; then nothing else is changed.
    bool prepareHost();
    // Whether the host now carries `hostname`.
    bool setHostname(const QString &hostname);
    bool updateHostsFile(const QString &hostname, const QString &serverName,
                         const QString &ipAddress);
    bool writePasswordFile();
    void startInitTool();
    void toolFailedToStart(QProcess::ProcessError error);
    // The pane's line for a program that could not be started, or that did not finish in time.
    static QString commandFailure(bool started, const QString &program,
                                  const QStringList &arguments);
    // The run ends, as a failed one, without the tool: its start would not be sound.
    void withholdTool(const QString &why);
    // A step's failure: one line in the pane and in the journal. Returns false.
    bool stepFailed(const char *step, const QString &line);
    void removePasswordFile();
    // Once the tool has ended, however: the passwords and the inhibitor lock go, and the journal
    // learns how the run ended.
    void endRun();
    bool toolSucceeded() const;
    // How the run ended: one decision for the journal and for a screen reader, which hears it
    // in a few words.
    RunJournal::Outcome outcome() const;
    QString outcomeText() const;
    static QString abortedText();
    // The pane shows everything it was given: a run whose tool has ended ends now.
    void outputShown();

    Ui::InitServerDialog *_ui;
    // Every line the run shows goes through it, in order, into the form's pane.
    OutputPaneFeeder *_pane;
    GroupLeaderProcess _process;
    QFile _tempFile;
    QMap<QString, QVariant> _request;
    // The password file this run created (device, inode): the only one it may remove.
    std::optional<std::pair<dev_t, ino_t>> _passwordFile;
    // Why the tool was not started; empty once it has been asked to start.
    QString _withheldBecause;
    // The tool has ended; the run ends once the pane shows everything it said.
    bool _finishAfterOutput = false;
    RunJournal _journal;
    // Shutdown, sleep and the lid switch wait while the tool runs.
    InhibitorLock _inhibitor;
    // Stopped by Abort or by the dialog's end rather than ended by itself.
    bool _stopped = false;
    bool _runEnded = false;
};

#include "initserverdialog.h"

#include "ui_initserverdialog.h"

#include "hostsfile.h"
#include "initrequest.h"
#include "latin1literal.h"
#include "outputpanefeeder.h"
#include "secretfile.h"
#include "systemprogram.h"

#include <QFileInfo>
#include <QHostInfo>
#include <QPushButton>
#include <QRegularExpression>

#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr int commandTimeoutMs = 30000;
constexpr QLatin1String hostsPath = latin1Literal("/etc/hosts");
constexpr QLatin1String passwordFilePath = latin1Literal("/etc/orn/tempFile");
constexpr QLatin1String toolName = latin1Literal("orn-init");
// What a half-done provisioning must not meet.
constexpr QLatin1String inhibited = latin1Literal("shutdown:sleep:idle:handle-lid-switch");
} // namespace

InitServerDialog::InitServerDialog(const QMap<QString, QVariant> &request, QWidget *parent)
    : QDialog(parent)
    , _ui(new Ui::InitServerDialog)
    , _tempFile(passwordFilePath)
    , _request(request)
    , _journal({request.value(InitRequest::kerberosPassword).toString(),
                request.value(InitRequest::adminPassword).toString()})
{
    _ui->setupUi(this);
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::CustomizeWindowHint);
    _process.setProgram(toolName);
    // A dialog's push buttons take Return by default, which would make one stray Return kill the
    // tool halfway through rebuilding the directory. Abort is pressed by a click or Space only.
    _ui->_buttonBox->button(QDialogButtonBox::Abort)->setAutoDefault(false);
    connect(_ui->_buttonBox, &QDialogButtonBox::clicked, this, &InitServerDialog::buttonClicked);
    _pane = new OutputPaneFeeder(_ui->_plainTextEdit, this);
    connect(_pane, &OutputPaneFeeder::drained, this, &InitServerDialog::outputShown);
}

InitServerDialog::~InitServerDialog()
{
    // The console may quit while the tool runs: the tool must neither outlive the run nor report
    // to a dialog that is going away, and the passwords must not stay on disk.
    if (_process.state() != QProcess::NotRunning) {
        disconnect(&_process, nullptr, this, nullptr);
        _stopped = true;
        _process.killGroup();
        _process.waitForFinished();
        initFinished();
    }
    delete _ui;
}

QString InitServerDialog::runCommand(const QString &program, const QStringList &arguments)
{
    QProcess process;
    if (!SystemProgram::prepare(process, program, arguments))
        return commandFailure(false, program, arguments);
    process.start(QIODevice::ReadWrite);
    process.closeWriteChannel();
    const bool started = process.waitForStarted(commandTimeoutMs);
    if (!started || !process.waitForFinished(commandTimeoutMs)) {
        // Stuck on the way in or at work: either way it is ended and reaped here (both calls do
        // nothing to a process that is not running).
        process.kill();
        process.waitForFinished();
        return commandFailure(started, program, arguments);
    }
    // A crash leaves the signal's number as the exit code, so the code alone decides.
    if (process.exitCode() == 0)
        return QString();
    return QStringLiteral("Process %1 %2 finished with error: %3")
        .arg(program, arguments.join(QLatin1Char(' ')),
             QString::fromLocal8Bit(process.readAllStandardError()));
}

QString InitServerDialog::commandFailure(bool started, const QString &program,
                                         const QStringList &arguments)
{
    return QStringLiteral("%1: %2 %3")
        .arg(started ? tr("Process finish error") : tr("Process start error"), program,
             arguments.join(QLatin1Char(' ')));
}

QString InitServerDialog::outputText(const QByteArray &chunk)
{
    // What follows a NUL in a chunk is not text the tool meant to show.
    const int length = int(qstrnlen(chunk.constData(), uint(chunk.size())));
    QString text = QString::fromLocal8Bit(chunk.constData(), length);
    static const QRegularExpression colour(QLatin1Char('\x1b') + QStringLiteral("\\[.{2,4}m"),
                                           QRegularExpression::DotMatchesEverythingOption);
    return text.remove(colour);
}

QString InitServerDialog::removeTrailingNewlines(const QString &text)
{
    int end = text.size();
    while (end > 0 && text.at(end - 1) == QLatin1Char('\n'))
        --end;
    return text.left(end);
}

void InitServerDialog::reject()
{
    // An Escape or a close request must not abandon a half-done provisioning or orphan the tool,
    // nor cut off its last output.
    if (_process.state() == QProcess::NotRunning && !_pane->hasPending())
        QDialog::reject();
}

int InitServerDialog::exec()
{
    _pane->clear();
    const bool custom = _request.value(InitRequest::customNetworkSettings, false).toBool();
    _journal.started(custom, _request.value(InitRequest::hostname).toString(),
                     _request.value(InitRequest::serverName).toString(),
                     _request.value(InitRequest::ipAddress).toString());
    // `orn-init --force` destroys the directory there is: it starts only on a host that carries
    // the name asked for, and with the passwords in a file that no one else could have written.
    if (custom && !prepareHost())
        withholdTool(QStringLiteral("the host does not carry the name asked for"));
    else if (!writePasswordFile())
        withholdTool(QStringLiteral("the password file could not be written safely"));
    else
        startInitTool();
    return QDialog::exec();
}

bool InitServerDialog::prepareHost()
{
    const QString hostname = _request.value(InitRequest::hostname).toString();
    if (!setHostname(hostname))
        return false;
    updateHostsFile(hostname, _request.value(InitRequest::serverName).toString(),
                    _request.value(InitRequest::ipAddress).toString());
    return true;
}

bool InitServerDialog::setHostname(const QString &hostname)
{
    const QString previous = QHostInfo::localHostName();
    // One argument whatever the name holds: no shell and no splitting sees it.
    const QString error =
        runCommand(QStringLiteral("hostnamectl"), {QStringLiteral("set-hostname"), hostname});
    if (!error.isEmpty())
        stepFailed("hostname", error);
    // hostnamectl stores what it likes of a name it dislikes, and reports success; what counts
    // is the name the host carries now.
    const QString carried = QHostInfo::localHostName();
    if (carried != previous)
        emit hostnameChanged();
    if (carried != hostname) {
        const QString line = tr("The host is called %1, not %2: /etc/hosts is left as it is and "
                                "orn-init is not started")
                                 .arg(carried, hostname);
        _pane->append(line);
        _journal.hostnameDiffers(hostname, carried, line);
        return false;
    }
    if (error.isEmpty())
        _journal.hostnameSet(hostname, previous != hostname);
    return true;
}

bool InitServerDialog::updateHostsFile(const QString &hostname, const QString &serverName,
                                       const QString &ipAddress)
{
    const QString path = QFileInfo(hostsPath).absoluteFilePath();
    QByteArray replacedLine;
    QString failure;
    switch (HostsFile::update(path, hostname, serverName, ipAddress, &replacedLine)) {
    case AtomicFile::Replaced:
        _journal.hostsFileRewritten(HostsFile::entry(hostname, serverName, ipAddress),
                                    replacedLine);
        return true;
    case AtomicFile::NotOpened:
        failure = tr("File %1 can not be opened").arg(path);
        break;
    case AtomicFile::NotWritten:
        failure = tr("Write error in file %1").arg(path);
        break;
    }
    return stepFailed("hosts", failure);
}

bool InitServerDialog::writePasswordFile()
{
    const QString path = passwordFilePath;
    const auto fail = [this](const QString &line) { return stepFailed("password-file", line); };
    // Owner-only from birth: no instant in which another user could read the passwords.
    const int fd = SecretFile::create(path);
    struct stat created;
    if (fd >= 0 && ::fstat(fd, &created) == 0)
        _passwordFile = {created.st_dev, created.st_ino};
    if (fd < 0 || !_tempFile.open(fd, QIODevice::WriteOnly | QIODevice::Unbuffered,
                                  QFileDevice::AutoCloseHandle)) {
        if (fd >= 0)
            ::close(fd);
        return fail(tr("File %1 can not be created").arg(path));
    }
    const QByteArray content =
        (QStringLiteral("K/M:%1").arg(_request.value(InitRequest::kerberosPassword).toString()) +
         QLatin1Char('\n') +
         QStringLiteral("admin/admin:%1")
             .arg(_request.value(InitRequest::adminPassword).toString()))
            .toUtf8();
    if (_tempFile.write(content) != content.size())
        return fail(tr("Write error in file %1").arg(path));
    if (!_tempFile.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        return fail(tr("Error set permissions for file %1").arg(path));
    _tempFile.close();
    _journal.passwordFileWritten(path);
    return true;
}

void InitServerDialog::startInitTool()
{
    const QStringList arguments{QStringLiteral("init"), QStringLiteral("--force"),
                                QStringLiteral("--pass-file=%1").arg(passwordFilePath)};
    _process.setArguments(arguments);
    // The locale only: KRB5CCNAME, DBUS_SYSTEM_BUS_ADDRESS and the like of whoever started the
    // console must not steer the tool.
    if (!SystemProgram::prepare(_process, toolName, arguments)) {
        stepFailed("tool", commandFailure(false, toolName, _process.arguments()));
        withholdTool(QStringLiteral("%1 is not in %2").arg(toolName, SystemProgram::searchPath()));
        return;
    }
    connect(&_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            &InitServerDialog::initFinished);
    connect(&_process, &QProcess::channelReadyRead, this, &InitServerDialog::readProcessOutput);
    connect(&_process, &QProcess::errorOccurred, this, &InitServerDialog::toolFailedToStart);
    // Just before the start: from here until the tool has ended, a lid closed or a shutdown
    // asked for must not cut the provisioning short.
    _journal.inhibitorTaken(
        inhibited, _inhibitor.take(inhibited, tr("System management console: ORN server"),
                                   tr("The directory-domain server is being created; stopping "
                                      "now would leave it half-built"),
                                   QStringLiteral("block")));
    _process.start(QIODevice::ReadWrite);
    // Nothing is ever written to the tool: a question it asks meets the end of its input.
    _process.closeWriteChannel();
}

void InitServerDialog::toolFailedToStart(QProcess::ProcessError error)
{
    // The one failure that no finished notification follows.
    if (error != QProcess::FailedToStart)
        return;
    stepFailed("tool", commandFailure(false, toolName, _process.arguments()));
    initFinished();
}

void InitServerDialog::withholdTool(const QString &why)
{
    _withheldBecause = why;
    initFinished();
}

void InitServerDialog::readProcessOutput(int channel)
{
    _process.setReadChannel(QProcess::ProcessChannel(channel));
    const QString text = outputText(_process.readAll());
    _journal.output(text, channel == QProcess::StandardError);
    _pane->append(removeTrailingNewlines(text));
}

bool InitServerDialog::stepFailed(const char *step, const QString &line)
{
    _pane->append(line);
    _journal.stepFailed(step, line);
    return false;
}

void InitServerDialog::removePasswordFile()
{
    // Opened from a descriptor, the file object has forgotten its name.
    _tempFile.close();
    _tempFile.setFileName(passwordFilePath);
    // Only the file this run created goes; whatever else is found at the path was never ours.
    struct stat status;
    if (_passwordFile &&
        ::lstat(QFile::encodeName(_tempFile.fileName()).constData(), &status) == 0 &&
        S_ISREG(status.st_mode) && status.st_dev == _passwordFile->first &&
        status.st_ino == _passwordFile->second)
        _tempFile.remove();
    _passwordFile.reset();
}

void InitServerDialog::endRun()
{
    // The passwords go as soon as the tool is done with them, even while its last output is
    // still being shown; so does the lock.
    removePasswordFile();
    if (_inhibitor.release())
        _journal.inhibitorReleased();
    if (std::exchange(_runEnded, true))
        return;
    _journal.ended(outcome());
}

void InitServerDialog::outputShown()
{
    if (std::exchange(_finishAfterOutput, false))
        initFinished();
}

// A tool that never ran, or was killed, has no exit code to believe.
bool InitServerDialog::toolSucceeded() const
{
    return _withheldBecause.isEmpty() && _process.error() != QProcess::FailedToStart &&
           _process.exitStatus() == QProcess::NormalExit && _process.exitCode() == 0;
}

QString InitServerDialog::abortedText()
{
    return tr("The server creation was aborted.");
}

RunJournal::Outcome InitServerDialog::outcome() const
{
    if (!_withheldBecause.isEmpty())
        return RunJournal::NotStarted{_withheldBecause};
    if (_process.error() == QProcess::FailedToStart)
        return RunJournal::NotStarted{_process.errorString()};
    // A tool that had succeeded just before Abort came created the server all the same.
    if (_stopped && !toolSucceeded())
        return RunJournal::Aborted{};
    if (_process.exitStatus() == QProcess::CrashExit)
        return RunJournal::Crashed{};
    return RunJournal::Exited{_process.exitCode()};
}

QString InitServerDialog::outcomeText() const
{
    const RunJournal::Outcome end = outcome();
    if (const auto *exited = std::get_if<RunJournal::Exited>(&end)) {
        if (exited->exitCode == 0)
            return tr("The server has been created.");
        return tr("The server was not created: orn-init exited with code %1.")
            .arg(exited->exitCode);
    }
    if (std::holds_alternative<RunJournal::Crashed>(end))
        return tr("The server was not created: orn-init crashed.");
    if (std::holds_alternative<RunJournal::Aborted>(end))
        return abortedText();
    return tr("The server was not created: orn-init could not be started.");
}

void InitServerDialog::initFinished()
{
    // The run itself ends after the tool's last output has been shown.
    endRun();
    if (_pane->hasPending()) {
        _finishAfterOutput = true;
        return;
    }
    // Abort runs this step twice; the success is told once.
    const bool again = _ui->_buttonBox->button(QDialogButtonBox::Close) != nullptr;
    _ui->_progressBar->setMaximum(100);
    _ui->_progressBar->setValue(100);
    _ui->_buttonBox->setStandardButtons(QDialogButtonBox::Close);
    // Once the run is over, Return closes wherever the focus is. The focus goes to Close, from
    // the pane too, so that a screen reader tells that the run has ended; the description, how.
    QPushButton *closeButton = _ui->_buttonBox->button(QDialogButtonBox::Close);
    closeButton->setDefault(true);
    closeButton->setFocus();
    const QString outcome = outcomeText();
    setAccessibleDescription(outcome);
    _ui->_plainTextEdit->setAccessibleDescription(outcome);
    if (!again && toolSucceeded())
        emit serverCreatedSuccsessfully();
}

void InitServerDialog::buttonClicked(QAbstractButton *button)
{
    if (_ui->_buttonBox->standardButton(button) == QDialogButtonBox::Abort) {
        // The tool may have started helpers that read the passwords; they end with it.
        if (_process.state() != QProcess::NotRunning)
            _stopped = true;
        _process.killGroup();
        _process.close();
        // After the last of the tool's output, which otherwise just breaks off.
        if (std::holds_alternative<RunJournal::Aborted>(outcome()))
            _pane->append(abortedText());
        initFinished();
    } else {
        close();
    }
}

#include "initserverdialog.h"

#include "ui_initserverdialog.h"

#include "hostsfile.h"
#include "initrequest.h"
#include "latin1literal.h"
#include "secretfile.h"
#include "systemprogram.h"

#include <QElapsedTimer>
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
// A flood of output reaches the pane in appends of at most sliceLines lines and sliceChars
// characters, and the event loop gets a turn once a slice of appends has taken about
// sliceBudgetMs, so that the window keeps answering. Every append lays out the pane's last
// screenful of lines again, however little it adds, so a few large appends cost far less than many
// small ones; the limits keep one append to a few milliseconds.
constexpr int sliceLines = 1000;
constexpr int sliceChars = 65536;
constexpr int sliceBudgetMs = 8;
// While output waits, the pane is repainted at most this often: each paint lays out, draws and
// sends to the display a screenful that the next append makes stale at once.
constexpr int frameMs = 40;

// Where the next piece of `text`, from `from` on, ends: at the text's end when the rest has at most
// `lines` lines and `chars` characters; else at the last line feed within those limits at which the
// text may be cut: after at least one character, and not ending a CR LF (the pane takes the pair as
// one line end, and would take a CR left at a piece's end as one more). Failing that, when
// `forced`, at the first such line feed beyond them or at the text's end; else -1.
// Appending the pieces of a text cut at such line feeds gives the text of appending it whole.
int pieceEnd(const QString &text, int from, int lines, int chars, bool forced)
{
    const QLatin1Char lineFeed('\n'), carriageReturn('\r');
    int cut = -1;
    int line = 1;
    for (int at = text.indexOf(lineFeed, from); at >= 0;
         at = text.indexOf(lineFeed, at + 1), ++line) {
        const bool within = line <= lines && at - from <= chars;
        if (!within && (cut >= 0 || !forced))
            return cut;
        if (at > from && text.at(at - 1) != carriageReturn) {
            cut = at;
            if (!within)
                return cut;
        }
    }
    if (line <= lines && text.size() - from <= chars)
        return text.size();
    return cut >= 0 || !forced ? cut : text.size();
}
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
    _outputTimer.setSingleShot(true);
    _outputTimer.setInterval(0);
    connect(&_outputTimer, &QTimer::timeout, this, &InitServerDialog::showPendingOutput);
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
    const QString failure = QStringLiteral("%1: %2 %3");
    const QString joined = arguments.join(QLatin1Char(' '));
    QProcess process;
    if (!SystemProgram::prepare(process, program, arguments))
        return failure.arg(tr("Process start error"), program, joined);
    process.start(QIODevice::ReadWrite);
    process.closeWriteChannel();
    if (!process.waitForStarted(commandTimeoutMs)) {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished();
        }
        return failure.arg(tr("Process start error"), program, joined);
    }
    if (!process.waitForFinished(commandTimeoutMs)) {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished();
        }
        return failure.arg(tr("Process finish error"), program, joined);
    }
    // A crash leaves the signal's number as the exit code, so the code alone decides.
    if (process.exitCode() == 0)
        return QString();
    return QStringLiteral("Process %1 %2 finished with error: %3")
        .arg(program, joined, QString::fromLocal8Bit(process.readAllStandardError()));
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
    if (_process.state() == QProcess::NotRunning && _pendingOutput.isEmpty())
        QDialog::reject();
}

int InitServerDialog::exec()
{
    _ui->_plainTextEdit->clear();
    _pendingOutput.clear();
    _pendingFrom = 0;
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
        insertText(line);
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
        stepFailed("tool", startError());
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
    stepFailed("tool", startError());
    initFinished();
}

QString InitServerDialog::startError() const
{
    return QStringLiteral("%1: %2 %3")
        .arg(tr("Process start error"), toolName, _process.arguments().join(QLatin1Char(' ')));
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
    appendToPane(removeTrailingNewlines(text));
}

bool InitServerDialog::stepFailed(const char *step, const QString &line)
{
    insertText(line);
    _journal.stepFailed(step, line);
    return false;
}

void InitServerDialog::insertText(const QString &text)
{
    appendToPane(text);
}

void InitServerDialog::appendToPane(const QString &text)
{
    _pendingOutput.append(text);
    // While slices wait, the timer shows them, in order.
    if (!_outputTimer.isActive())
        showPendingOutput();
}

void InitServerDialog::showPendingOutput()
{
    QElapsedTimer clock;
    clock.start();
    // An append takes about as long as the one before it: the turn comes before one that would
    // run past the budget rather than after it. The first append of a slice always goes ahead.
    qint64 appendNs = 0;
    while (!_pendingOutput.isEmpty()) {
        if (appendNs > 0 && clock.nsecsElapsed() + appendNs > sliceBudgetMs * 1000000LL) {
            _outputTimer.start();
            // The event loop's next turn paints the pane only when a frame is due, and not after
            // a slice that ran long (the text document now and then copies its tables whole):
            // then it waits a turn.
            const bool paint = (!_lastFrame.isValid() || _lastFrame.hasExpired(frameMs)) &&
                               !clock.hasExpired(2 * sliceBudgetMs);
            if (paint)
                _lastFrame.start();
            _ui->_plainTextEdit->setUpdatesEnabled(paint);
            return;
        }
        const qint64 before = clock.nsecsElapsed();
        _ui->_plainTextEdit->appendPlainText(takePendingSlice());
        // Undo stays enabled, as the pane is defined, but no one can undo in a read-only pane.
        // Kept, its history (two entries a line) would be copied whole each time it doubles, in
        // one append of tens of milliseconds at a few hundred thousand lines.
        _ui->_plainTextEdit->document()->clearUndoRedoStacks();
        appendNs = clock.nsecsElapsed() - before;
    }
    _ui->_plainTextEdit->setUpdatesEnabled(true);
    _lastFrame.invalidate();
    if (std::exchange(_finishAfterOutput, false))
        initFinished();
}

QString InitServerDialog::takePendingSlice()
{
    // Many paragraphs go in one append: a paragraph separator starts a line as a further append
    // would, and unlike a line feed it never pairs with a CR before it. An empty pane takes an
    // empty paragraph as no line at all, so nothing separates it from what follows.
    const QChar separator(QChar::ParagraphSeparator);
    const bool paneEmpty = _ui->_plainTextEdit->document()->isEmpty();
    QString slice;
    int lines = sliceLines, chars = sliceChars;
    for (bool first = true; !_pendingOutput.isEmpty() && lines > 0 && chars > 0; first = false) {
        const QString &text = _pendingOutput.constFirst();
        const int end = pieceEnd(text, _pendingFrom, lines, chars, first);
        if (end < 0)
            break;
        if (!first && !(paneEmpty && slice.isEmpty()))
            slice += separator;
        const QStringRef piece = text.midRef(_pendingFrom, end - _pendingFrom);
        slice += piece;
        lines -= piece.count(QLatin1Char('\n')) + 1;
        chars -= piece.size() + 1;
        if (end < text.size()) {
            _pendingFrom = end + 1;
            break;
        }
        _pendingOutput.removeFirst();
        _pendingFrom = 0;
    }
    return slice;
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
    if (!_pendingOutput.isEmpty()) {
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
            appendToPane(abortedText());
        initFinished();
    } else {
        close();
    }
}

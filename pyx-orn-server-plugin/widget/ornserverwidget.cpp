#include "ornserverwidget.h"

#include "ui_ornserverwidget.h"

#include "creationlock.h"
#include "desktopuser.h"
#include "element.h"
#include "elementdata.h"
#include "grouptitlestyle.h"
#include "hostnamerule.h"
#include "initrequest.h"
#include "initserverdialog.h"
#include "passwordtextmask.h"
#include "runjournal.h"
#include "serverproperties.h"
#include "systemprogram.h"

#include <QAccessible>
#include <QFile>
#include <QMessageBox>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>

#include <cerrno>
#include <cstring>

namespace {

// A host name typed with its domain: "domain" is the tail from the first dot on.
const QRegularExpression hostDomainPattern(QStringLiteral("^(?P<hostname>.*?)(?P<domain>\\..*)$"));

// A tool runs on its own and outlives the console, as `user` when one is given; one that cannot
// start leaves the form as it was. The line is split at blanks, a quoted part kept whole, which is
// how the command lines are written.
void startTool(const QString &commandLine, const DesktopUser *user = nullptr)
{
    QStringList words = QProcess::splitCommand(commandLine);
    const QString name = words.takeFirst();
    QProcess process;
    if (user)
        user->startDetached(name, words);
    else if (SystemProgram::prepare(process, name, words, SystemProgram::desktopEnvironment()))
        process.startDetached();
}

// An unchecked group box keeps its fields disabled and, once checked, enables all but those
// disabled on their own. While it is unchecked a field's own state is only noted for that moment,
// so that the field cannot be edited before.
void setOwnEnabled(QWidget *field, const QGroupBox *group, bool enabled)
{
    if (group->isChecked()) {
        field->setEnabled(enabled);
    } else {
        field->setEnabled(false);
        field->setAttribute(Qt::WA_ForceDisabled, !enabled);
    }
}

// An unchecked group box disables each new field as soon as it becomes the field's parent, before
// the field's own constructor has run; the accessibility update for that change leaves in Qt's
// cache a plain widget's interface, which would stand for the field from then on: a screen reader
// would find unnamed fillers in place of the IP box, the name fields and their labels. Dropped,
// each interface is made again from the whole field when it is next asked for.
void forgetEarlyInterfaces(const QGroupBox *group)
{
    for (QWidget *field : group->findChildren<QWidget *>()) {
        if (QAccessibleInterface *early = QAccessible::queryAccessibleInterface(field))
            QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(early));
    }
}

// The "Error" box: what is wrong, and OK.
void showError(QWidget *parent, const QString &text)
{
    QMessageBox::critical(parent, OrnServerWidget::tr("Error"), text, QMessageBox::Ok,
                          QMessageBox::NoButton);
}

// The boxes that stand before the database is destroyed and before a reboot. They have no
// default button, yet Qt hands the focus, and with it Return, to their first button, Yes; the
// focus starts on No instead, so that one stray Return answers No. Otherwise the box is the one
// QMessageBox's static helpers build.
QMessageBox::StandardButton askYesNo(QWidget *parent, QMessageBox::Icon icon, const QString &title,
                                     const QString &text)
{
    QMessageBox box(icon, title, text, QMessageBox::Yes | QMessageBox::No, parent);
    box.button(QMessageBox::No)->setFocus();
    box.exec();
    return box.standardButton(box.clickedButton());
}

} // namespace

OrnServerWidget::OrnServerWidget(Module &module, Permission permission, QWidget *parent)
    : ViewEditElementWidget(module, permission, parent)
    , _ui(new Ui::OrnServerWidget)
{
    elementTypeName = QStringLiteral("OrnServer");
    parentElementType = QStringLiteral("OrnDomain");
    contextValue = 600;
    _ui->setupUi(this);
    forgetEarlyInterfaces(_ui->_networkGroupBox);
    PasswordTextMask::install();
    // Made after the form's widgets, so that it outlives the group box it draws.
    auto *titleStyle = new GroupTitleStyle;
    titleStyle->setParent(this);
    _ui->_networkGroupBox->setStyle(titleStyle);

    // The slots read the controls themselves, so what a signal carries is not needed.
    connect(_ui->_hostnameLineEdit, &QLineEdit::textChanged, this,
            &OrnServerWidget::hostnameLineEditTextChanged);
    connect(_ui->_domainNameLineEdit, &QLineEdit::textChanged, this,
            &OrnServerWidget::domainNameLineEditLineEditTextChanged);
    connect(_ui->_expertModePushButton, &QPushButton::clicked, this,
            &OrnServerWidget::openExpertMode);
    connect(_ui->_networkSettingPushButton, &QPushButton::clicked, this,
            &OrnServerWidget::openNetworkUtility);
    connect(_ui->_initServerPushButton, &QPushButton::clicked, this,
            &OrnServerWidget::createServer);
    connect(_ui->_editOrnConfPushButton, &QPushButton::clicked, this,
            &OrnServerWidget::editOrnConf);
}

OrnServerWidget::~OrnServerWidget()
{
    delete _ui;
}

void OrnServerWidget::afterSuccessfulRead(Element *element, ElementData *data)
{
    // A record of another element, or none at all, leaves the form as it is.
    if (element != contextElement || !data)
        return;
    if (!editBlocked)
        blockEditWidget(true);

    const QMap<QString, QVariant> &properties = data->properties;
    // A record that says nothing about the service offers the re-creation.
    if (properties.value(ServerProperties::ifServerOn, true).toBool()) {
        _ui->_initServerPushButton->setText(tr("Re-create server"));
        _ui->_statusLabel->setText(tr("on"));
    } else {
        _ui->_initServerPushButton->setText(tr("Create server"));
        _ui->_statusLabel->setText(tr("off"));
    }
    if (properties.value(ServerProperties::ornServerCommonInstalled, false).toBool())
        _ui->_macWarningLabel->setText(
            tr("ORN server will be created with support of mandatory labes"));
    else
        _ui->_macWarningLabel->setText(tr("ORN server will be created without support of "
                                          "mandatory labes (package required orn-server-common)"));

    _ui->_ipComboBox->clear();
    _ui->_ipComboBox->addItems(properties.value(ServerProperties::ipAddresses).toStringList());
    const QString currentAddress = properties.value(ServerProperties::currentIpAddress).toString();
    if (currentAddress.isEmpty()) {
        _ui->_ipComboBox->setCurrentIndex(-1);
    } else {
        // The address in use is offered even when the interfaces did not list it.
        if (_ui->_ipComboBox->findText(currentAddress) < 0)
            _ui->_ipComboBox->addItem(currentAddress);
        _ui->_ipComboBox->setCurrentIndex(_ui->_ipComboBox->findText(currentAddress));
    }

    // The domain first: a host name that carries its own domain then overrides it.
    _ui->_domainNameLineEdit->setText(properties.value(ServerProperties::domainName).toString());
    _ui->_hostnameLineEdit->setText(properties.value(ServerProperties::hostname).toString());

    ViewEditElementWidget::afterSuccessfulRead(element, data);
}

void OrnServerWidget::openExpertMode()
{
    startTool(QStringLiteral("vex-term --noclose -e bash -c \"orn-init --help && orn-init cmd\""));
}

void OrnServerWidget::openNetworkUtility()
{
    startTool(QStringLiteral("nm-connection-editor"));
}

void OrnServerWidget::editOrnConf()
{
    // Run as root, the editor refuses (or opens a root window on the user's desktop); run as the
    // user, it asks for rights when it saves.
    const DesktopUser user = DesktopUser::fromSudo();
    if (!user.isValid()) {
        return showError(this,
                         tr("orn.conf is opened in the editor as the desktop user who started "
                            "the console through sudo, but SUDO_USER names no such user. "
                            "Start the console with sudo from the desktop session."));
    }
    startTool(QStringLiteral("kate /etc/orn/orn.conf"), &user);
}

void OrnServerWidget::createServer()
{
    const QStringList errors = checkDataForCreateServer() + checkHostIdentity();
    if (!errors.isEmpty()) {
        return showError(this, errors.join(QLatin1Char('\n')));
    }
    const QMessageBox::StandardButton answer = askYesNo(
        this, QMessageBox::Warning, tr("Warning"),
        tr("The creation of the server will destroy the entire database LDAP and Kerberos! Also "
           "during execution of this command can be stopped and restarted LDAP, Kerberos "
           "NFS/Samba and some other services!\nDo you really want to continue?"));
    // A box closed without an answer (the console quitting, a session ending) is no Yes.
    if (answer != QMessageBox::Yes)
        return;
    CreationLock lock;
    const CreationLock::Result taken = lock.take();
    const int lockError = errno;
    switch (taken) {
    case CreationLock::Taken:
        break;
    case CreationLock::HeldElsewhere:
        return showError(this, tr("Another console is creating the server on this host. Wait "
                                  "until it has finished, then try again."));
    case CreationLock::Unavailable:
        return showError(this, tr("The lock %1, which keeps two consoles from creating the "
                                  "server at once, cannot be taken: %2")
                                   .arg(QFile::decodeName(CreationLock::path()),
                                        QString::fromLocal8Bit(std::strerror(lockError))));
    }

    // The domain session would hold on to the directory that is about to be replaced.
    Element *own = element();
    auto *parentElement = qobject_cast<Element *>(own ? own->parentNode() : nullptr);
    if (parentElement && parentElement->elementData() &&
        parentElement->elementData()->properties.value(QStringLiteral("isLogin"), false).toBool())
        parentElement->performOperation(OperationType::Logout, nullptr, 0);

    const bool custom = _ui->_networkGroupBox->isChecked();
    const QMap<QString, QVariant> request = InitRequest::make(
        _ui->_kerberosPasswordLineEdit->text(), _ui->_adminPasswordLineEdit->text(), custom,
        _ui->_ipComboBox->currentText(), _ui->_hostnameLineEdit->text(),
        _ui->_serverNameLabel->text());

    InitServerDialog dialog(request, this);
    bool hostnameChanged = false;
    bool created = false;
    // Connected before exec: the host name is set before the window appears.
    connect(&dialog, &InitServerDialog::hostnameChanged, this,
            [&hostnameChanged] { hostnameChanged = true; });
    connect(&dialog, &InitServerDialog::serverCreatedSuccsessfully, this,
            [&created] { created = true; });
    dialog.exec();
    lock.release();

    _ui->_kerberosPasswordLineEdit->clear();
    _ui->_repeatKerberosPasswordLineEdit->clear();
    _ui->_adminPasswordLineEdit->clear();
    _ui->_repeatAdminPasswordLineEdit->clear();

    if (contextElement)
        contextElement->elementContext()->performOperation(OperationType::Read, nullptr, 0);

    if (!hostnameChanged)
        return;
    if (!created) {
        QMessageBox::warning(this, tr("Warning"),
                             tr("Hostname was changed but server initialization was not "
                                "successful. After correctly configuring server recommended to "
                                "reboot."),
                             QMessageBox::Ok, QMessageBox::NoButton);
        return;
    }
    if (askYesNo(this, QMessageBox::Question, tr("Reboot"),
                 tr("Hostname was changed. For correct operation of the system you must "
                    "reboot.\nDo you want reboot now?")) == QMessageBox::Yes) {
        RunJournal(dialog.runId()).rebootRequested();
        reboot();
    }
}

// The window manager reboots on behalf of the desktop user who started the console through
// sudo; it finds that user's session through the runtime folder.
void OrnServerWidget::reboot()
{
    QProcessEnvironment environment = SystemProgram::desktopEnvironment();
    const QString user = QString::fromLatin1(qgetenv("SUDO_UID"));
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), QStringLiteral("/run/user/%1").arg(user));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("/usr/bin/vex-wmfunc"), {QStringLiteral("VEXWM_REBOOT")},
                  QIODevice::ReadWrite);
    if (!process.waitForFinished(30000) && process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
    }
}

QStringList OrnServerWidget::checkDataForCreateServer()
{
    // Every check runs, so the administrator sees all that is wrong at once.
    const QString pattern = QStringLiteral("%1 %2");
    QStringList messages;

    const QString kerberosPassword = _ui->_kerberosPasswordLineEdit->text();
    const QString kerberosEmpty = checkPassword(kerberosPassword);
    if (!kerberosEmpty.isEmpty())
        messages << pattern.arg(tr("Kerberos"), kerberosEmpty);
    if (_ui->_repeatKerberosPasswordLineEdit->text() != kerberosPassword)
        messages << pattern.arg(tr("Kerberos"), tr("password do not match"));

    const QString adminPassword = _ui->_adminPasswordLineEdit->text();
    const QString adminEmpty = checkPassword(adminPassword);
    if (!adminEmpty.isEmpty())
        messages << pattern.arg(tr("ORN admin"), adminEmpty);
    if (_ui->_repeatAdminPasswordLineEdit->text() != adminPassword)
        messages << pattern.arg(tr("ORN admin"), tr("password do not match"));

    if (_ui->_networkGroupBox->isChecked()) {
        if (_ui->_hostnameLineEdit->text().isEmpty())
            messages << tr("Hostname is empty");
        if (_ui->_domainNameLineEdit->text().isEmpty())
            messages << tr("Domain name is empty");
    }
    return messages;
}

void OrnServerWidget::hostnameLineEditTextChanged()
{
    // A host name typed with its domain owns the domain; the domain field only mirrors it.
    const QString hostname = _ui->_hostnameLineEdit->text();
    const QRegularExpressionMatch match = hostDomainPattern.match(hostname);
    if (match.hasMatch()) {
        setOwnEnabled(_ui->_domainNameLineEdit, _ui->_networkGroupBox, false);
        _ui->_domainNameLineEdit->setText(match.captured(QStringLiteral("domain")));
        _ui->_serverNameLabel->setText(hostname);
    } else {
        setOwnEnabled(_ui->_domainNameLineEdit, _ui->_networkGroupBox, true);
        makeupFullDomainName();
    }
}

void OrnServerWidget::domainNameLineEditLineEditTextChanged()
{
    makeupFullDomainName();
}

void OrnServerWidget::makeupFullDomainName()
{
    // The domain name carries its own leading dot.
    _ui->_serverNameLabel->setText(QStringLiteral("%1%2").arg(_ui->_hostnameLineEdit->text(),
                                                              _ui->_domainNameLineEdit->text()));
}

QStringList OrnServerWidget::checkHostIdentity()
{
    // What the host name command, the hosts line and the new directory are given must be what the
    // host will carry: a name hostnamectl alters, or a pasted line feed that would add a line of
    // its own to /etc/hosts, goes no further. An empty name has its message already.
    QStringList messages;
    if (!_ui->_networkGroupBox->isChecked())
        return messages;
    if (_ui->_ipComboBox->currentText().isEmpty())
        messages << tr("IP address is empty");
    const QString hostname = _ui->_hostnameLineEdit->text();
    if (HostnameRule::hasBlankOrControl(hostname))
        messages << tr("Hostname contains a blank or a control character");
    else if (!hostname.isEmpty() && !HostnameRule::isKeptAsTyped(hostname))
        messages << tr("Hostname can hold only Latin letters, digits, hyphens and dots, at most 64 "
                       "characters; a part between dots may not be empty, nor begin or end with a "
                       "hyphen");
    if (HostnameRule::hasBlankOrControl(_ui->_domainNameLineEdit->text()))
        messages << tr("Domain name contains a blank or a control character");
    return messages;
}

QString OrnServerWidget::checkPassword(const QString &password)
{
    if (password.isEmpty())
        return tr("password is empty");
    return QString();
}

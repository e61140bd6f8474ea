#include "ornserverwidget.h"

#include "ui_ornserverwidget.h"

#include "elementdata.h"
#include "serverproperties.h"

#include <QProcess>
#include <QRegularExpression>

namespace {

// A host name typed with its domain: "domain" is the tail from the first dot on.
const QRegularExpression hostDomainPattern(QStringLiteral("^(?P<hostname>.*?)(?P<domain>\\..*)$"));

// A tool runs on its own and outlives the console; one that cannot start leaves the form as it
// was. The one-string form splits the line at blanks and keeps a quoted part whole, which is how
// the command lines are written.
void startTool(const QString &commandLine)
{
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    QProcess::startDetached(commandLine);
    QT_WARNING_POP
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

} // namespace

OrnServerWidget::OrnServerWidget(Module &module, Permission permission, QWidget *parent)
    : ViewEditElementWidget(module, permission, parent)
    , _ui(new Ui::OrnServerWidget)
{
    elementTypeName = QStringLiteral("OrnServer");
    parentElementType = QStringLiteral("OrnDomain");
    contextValue = 600;
    _ui->setupUi(this);

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
    startTool(QStringLiteral("kate /etc/orn/orn.conf"));
}

void OrnServerWidget::createServer() {}

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

QString OrnServerWidget::checkPassword(const QString &password)
{
    if (password.isEmpty())
        return tr("password is empty");
    return QString();
}

#include "ornserverwidget.h"

#include "ui_ornserverwidget.h"

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

    ViewEditElementWidget::afterSuccessfulRead(element, data);
}

void OrnServerWidget::openExpertMode() {}

void OrnServerWidget::openNetworkUtility() {}

void OrnServerWidget::editOrnConf() {}

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

void OrnServerWidget::hostnameLineEditTextChanged() {}

void OrnServerWidget::domainNameLineEditLineEditTextChanged() {}

void OrnServerWidget::makeupFullDomainName() {}

QString OrnServerWidget::checkPassword(const QString &password)
{
    if (password.isEmpty())
        return tr("password is empty");
    return QString();
}

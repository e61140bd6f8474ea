#pragma once

#include "vieweditelementwidget.h"

#include <QStringList>

namespace Ui {
class OrnServerWidget;
}

// The server element's editor: shows whether the directory server runs and creates it.
class OrnServerWidget : public ViewEditElementWidget
{
    Q_OBJECT

public:
    OrnServerWidget(Module &module, Permission permission, QWidget *parent = nullptr);
    ~OrnServerWidget() override;

    void afterSuccessfulRead(Element *element, ElementData *data) override;

private slots:
    void openExpertMode();
    void openNetworkUtility();
    void editOrnConf();
    void createServer();
    QStringList checkDataForCreateServer();
    void hostnameLineEditTextChanged();
    void domainNameLineEditLineEditTextChanged();
    void makeupFullDomainName();

private:
    QString checkPassword(const QString &password);
    // The creation's own checks of the network settings, beyond checkDataForCreateServer's.
    QStringList checkHostIdentity();
    void reboot();

    Ui::OrnServerWidget *_ui;
};

#pragma once

// The server form, kept in the shape of generated form code so that it can be exchanged for a
// designer file without touching the widget.

#include <QtCore/QVariant>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QFrame>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpacerItem>
#include <QtWidgets/QVBoxLayout>
#include <QtWidgets/QWidget>

QT_BEGIN_NAMESPACE

class Ui_OrnServerWidget
{
public:
    QVBoxLayout *verticalLayout;
    QGridLayout *gridLayout_2;
    QLineEdit *_adminPasswordLineEdit;
    QLabel *label;
    QLineEdit *_repeatKerberosPasswordLineEdit;
    QLineEdit *_kerberosPasswordLineEdit;
    QLabel *label_2;
    QLineEdit *_repeatAdminPasswordLineEdit;
    QLabel *label_9;
    QLabel *label_10;
    QLabel *label_7;
    QLabel *_statusLabel;
    QFrame *line;
    QGroupBox *_networkGroupBox;
    QFormLayout *formLayout;
    QLabel *label_3;
    QComboBox *_ipComboBox;
    QLabel *label_4;
    QLineEdit *_hostnameLineEdit;
    QLabel *label_5;
    QLineEdit *_domainNameLineEdit;
    QLabel *label_6;
    QLabel *_serverNameLabel;
    QHBoxLayout *horizontalLayout;
    QPushButton *_expertModePushButton;
    QPushButton *_networkSettingPushButton;
    QPushButton *_editOrnConfPushButton;
    QSpacerItem *horizontalSpacer;
    QPushButton *_initServerPushButton;
    QSpacerItem *verticalSpacer;
    QLabel *label_11;
    QLabel *label_8;
    QLabel *_macWarningLabel;

    void setupUi(QWidget *OrnServerWidget)
    {
        if (OrnServerWidget->objectName().isEmpty())
            OrnServerWidget->setObjectName(QString::fromUtf8("OrnServerWidget"));
        OrnServerWidget->resize(611, 492);
        verticalLayout = new QVBoxLayout(OrnServerWidget);
        verticalLayout->setObjectName(QString::fromUtf8("verticalLayout"));
        gridLayout_2 = new QGridLayout();
        gridLayout_2->setObjectName(QString::fromUtf8("gridLayout_2"));
        _adminPasswordLineEdit = new QLineEdit(OrnServerWidget);
        _adminPasswordLineEdit->setObjectName(QString::fromUtf8("_adminPasswordLineEdit"));
        _adminPasswordLineEdit->setEchoMode(QLineEdit::Password);

        gridLayout_2->addWidget(_adminPasswordLineEdit, 4, 1, 1, 1);

        label = new QLabel(OrnServerWidget);
        label->setObjectName(QString::fromUtf8("label"));

        gridLayout_2->addWidget(label, 2, 0, 1, 1);

        _repeatKerberosPasswordLineEdit = new QLineEdit(OrnServerWidget);
        _repeatKerberosPasswordLineEdit->setObjectName(
            QString::fromUtf8("_repeatKerberosPasswordLineEdit"));
        _repeatKerberosPasswordLineEdit->setEchoMode(QLineEdit::Password);

        gridLayout_2->addWidget(_repeatKerberosPasswordLineEdit, 3, 1, 1, 1);

        _kerberosPasswordLineEdit = new QLineEdit(OrnServerWidget);
        _kerberosPasswordLineEdit->setObjectName(QString::fromUtf8("_kerberosPasswordLineEdit"));
        _kerberosPasswordLineEdit->setInputMethodHints(Qt::ImhHiddenText | Qt::ImhSensitiveData
                                                       | Qt::ImhNoAutoUppercase
                                                       | Qt::ImhNoPredictiveText);
        _kerberosPasswordLineEdit->setFrame(true);
        _kerberosPasswordLineEdit->setEchoMode(QLineEdit::Password);
        _kerberosPasswordLineEdit->setDragEnabled(false);
        _kerberosPasswordLineEdit->setClearButtonEnabled(false);

        gridLayout_2->addWidget(_kerberosPasswordLineEdit, 2, 1, 1, 1);

        label_2 = new QLabel(OrnServerWidget);
        label_2->setObjectName(QString::fromUtf8("label_2"));

        gridLayout_2->addWidget(label_2, 4, 0, 1, 1);

        _repeatAdminPasswordLineEdit = new QLineEdit(OrnServerWidget);
        _repeatAdminPasswordLineEdit->setObjectName(
            QString::fromUtf8("_repeatAdminPasswordLineEdit"));
        _repeatAdminPasswordLineEdit->setEchoMode(QLineEdit::Password);

        gridLayout_2->addWidget(_repeatAdminPasswordLineEdit, 5, 1, 1, 1);

        label_9 = new QLabel(OrnServerWidget);
        label_9->setObjectName(QString::fromUtf8("label_9"));
        label_9->setAlignment(Qt::AlignLeading | Qt::AlignLeft | Qt::AlignVCenter);

        gridLayout_2->addWidget(label_9, 3, 0, 1, 1);

        label_10 = new QLabel(OrnServerWidget);
        label_10->setObjectName(QString::fromUtf8("label_10"));
        label_10->setAlignment(Qt::AlignLeading | Qt::AlignLeft | Qt::AlignVCenter);

        gridLayout_2->addWidget(label_10, 5, 0, 1, 1);

        label_7 = new QLabel(OrnServerWidget);
        label_7->setObjectName(QString::fromUtf8("label_7"));
        QSizePolicy sizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
        sizePolicy.setHorizontalStretch(0);
        sizePolicy.setVerticalStretch(0);
        sizePolicy.setHeightForWidth(label_7->sizePolicy().hasHeightForWidth());
        label_7->setSizePolicy(sizePolicy);
        label_7->setAlignment(Qt::AlignLeading | Qt::AlignLeft | Qt::AlignVCenter);

        gridLayout_2->addWidget(label_7, 0, 0, 1, 1);

        _statusLabel = new QLabel(OrnServerWidget);
        _statusLabel->setObjectName(QString::fromUtf8("_statusLabel"));
        QSizePolicy sizePolicy1(QSizePolicy::Maximum, QSizePolicy::Preferred);
        sizePolicy1.setHorizontalStretch(0);
        sizePolicy1.setVerticalStretch(0);
        sizePolicy1.setHeightForWidth(_statusLabel->sizePolicy().hasHeightForWidth());
        _statusLabel->setSizePolicy(sizePolicy1);

        gridLayout_2->addWidget(_statusLabel, 0, 1, 1, 1);

        line = new QFrame(OrnServerWidget);
        line->setObjectName(QString::fromUtf8("line"));
        line->setFrameShape(QFrame::HLine);
        line->setFrameShadow(QFrame::Sunken);

        gridLayout_2->addWidget(line, 1, 0, 1, 2);


        verticalLayout->addLayout(gridLayout_2);

        _networkGroupBox = new QGroupBox(OrnServerWidget);
        _networkGroupBox->setObjectName(QString::fromUtf8("_networkGroupBox"));
        _networkGroupBox->setCheckable(true);
        _networkGroupBox->setChecked(false);
        formLayout = new QFormLayout(_networkGroupBox);
        formLayout->setObjectName(QString::fromUtf8("formLayout"));
        label_3 = new QLabel(_networkGroupBox);
        label_3->setObjectName(QString::fromUtf8("label_3"));

        formLayout->setWidget(0, QFormLayout::LabelRole, label_3);

        _ipComboBox = new QComboBox(_networkGroupBox);
        _ipComboBox->setObjectName(QString::fromUtf8("_ipComboBox"));
        QSizePolicy sizePolicy2(QSizePolicy::Expanding, QSizePolicy::Fixed);
        sizePolicy2.setHorizontalStretch(0);
        sizePolicy2.setVerticalStretch(0);
        sizePolicy2.setHeightForWidth(_ipComboBox->sizePolicy().hasHeightForWidth());
        _ipComboBox->setSizePolicy(sizePolicy2);

        formLayout->setWidget(0, QFormLayout::FieldRole, _ipComboBox);

        label_4 = new QLabel(_networkGroupBox);
        label_4->setObjectName(QString::fromUtf8("label_4"));

        formLayout->setWidget(1, QFormLayout::LabelRole, label_4);

        _hostnameLineEdit = new QLineEdit(_networkGroupBox);
        _hostnameLineEdit->setObjectName(QString::fromUtf8("_hostnameLineEdit"));

        formLayout->setWidget(1, QFormLayout::FieldRole, _hostnameLineEdit);

        label_5 = new QLabel(_networkGroupBox);
        label_5->setObjectName(QString::fromUtf8("label_5"));

        formLayout->setWidget(2, QFormLayout::LabelRole, label_5);

        _domainNameLineEdit = new QLineEdit(_networkGroupBox);
        _domainNameLineEdit->setObjectName(QString::fromUtf8("_domainNameLineEdit"));

        formLayout->setWidget(2, QFormLayout::FieldRole, _domainNameLineEdit);

        label_6 = new QLabel(_networkGroupBox);
        label_6->setObjectName(QString::fromUtf8("label_6"));

        formLayout->setWidget(3, QFormLayout::LabelRole, label_6);

        _serverNameLabel = new QLabel(_networkGroupBox);
        _serverNameLabel->setObjectName(QString::fromUtf8("_serverNameLabel"));

        formLayout->setWidget(3, QFormLayout::FieldRole, _serverNameLabel);


        verticalLayout->addWidget(_networkGroupBox);

        horizontalLayout = new QHBoxLayout();
        horizontalLayout->setObjectName(QString::fromUtf8("horizontalLayout"));
        _expertModePushButton = new QPushButton(OrnServerWidget);
        _expertModePushButton->setObjectName(QString::fromUtf8("_expertModePushButton"));

        horizontalLayout->addWidget(_expertModePushButton);

        _networkSettingPushButton = new QPushButton(OrnServerWidget);
        _networkSettingPushButton->setObjectName(QString::fromUtf8("_networkSettingPushButton"));

        horizontalLayout->addWidget(_networkSettingPushButton);

        _editOrnConfPushButton = new QPushButton(OrnServerWidget);
        _editOrnConfPushButton->setObjectName(QString::fromUtf8("_editOrnConfPushButton"));

        horizontalLayout->addWidget(_editOrnConfPushButton);

        horizontalSpacer = new QSpacerItem(40, 20, QSizePolicy::Expanding, QSizePolicy::Minimum);

        horizontalLayout->addItem(horizontalSpacer);

        _initServerPushButton = new QPushButton(OrnServerWidget);
        _initServerPushButton->setObjectName(QString::fromUtf8("_initServerPushButton"));
        _initServerPushButton->setEnabled(true);

        horizontalLayout->addWidget(_initServerPushButton);


        verticalLayout->addLayout(horizontalLayout);

        verticalSpacer = new QSpacerItem(20, 40, QSizePolicy::Minimum, QSizePolicy::Expanding);

        verticalLayout->addItem(verticalSpacer);

        label_11 = new QLabel(OrnServerWidget);
        label_11->setObjectName(QString::fromUtf8("label_11"));

        verticalLayout->addWidget(label_11);

        label_8 = new QLabel(OrnServerWidget);
        label_8->setObjectName(QString::fromUtf8("label_8"));

        verticalLayout->addWidget(label_8);

        _macWarningLabel = new QLabel(OrnServerWidget);
        _macWarningLabel->setObjectName(QString::fromUtf8("_macWarningLabel"));

        verticalLayout->addWidget(_macWarningLabel);

#if QT_CONFIG(shortcut)
        label->setBuddy(_kerberosPasswordLineEdit);
        label_2->setBuddy(_adminPasswordLineEdit);
        label_9->setBuddy(_repeatKerberosPasswordLineEdit);
        label_10->setBuddy(_repeatAdminPasswordLineEdit);
        label_7->setBuddy(_statusLabel);
        label_3->setBuddy(_ipComboBox);
        label_4->setBuddy(_hostnameLineEdit);
        label_5->setBuddy(_domainNameLineEdit);
        label_6->setBuddy(_serverNameLabel);
#endif // QT_CONFIG(shortcut)
        QWidget::setTabOrder(_kerberosPasswordLineEdit, _repeatKerberosPasswordLineEdit);
        QWidget::setTabOrder(_repeatKerberosPasswordLineEdit, _adminPasswordLineEdit);
        QWidget::setTabOrder(_adminPasswordLineEdit, _repeatAdminPasswordLineEdit);
        QWidget::setTabOrder(_repeatAdminPasswordLineEdit, _networkGroupBox);
        QWidget::setTabOrder(_networkGroupBox, _ipComboBox);
        QWidget::setTabOrder(_ipComboBox, _hostnameLineEdit);
        QWidget::setTabOrder(_hostnameLineEdit, _domainNameLineEdit);
        QWidget::setTabOrder(_domainNameLineEdit, _expertModePushButton);
        QWidget::setTabOrder(_expertModePushButton, _networkSettingPushButton);
        QWidget::setTabOrder(_networkSettingPushButton, _editOrnConfPushButton);
        QWidget::setTabOrder(_editOrnConfPushButton, _initServerPushButton);

        retranslateUi(OrnServerWidget);

        QMetaObject::connectSlotsByName(OrnServerWidget);
    } // setupUi

    void retranslateUi(QWidget *OrnServerWidget)
    {
        OrnServerWidget->setWindowTitle(
            QCoreApplication::translate("OrnServerWidget", "ORN server creation", nullptr));
        label->setText(
            QCoreApplication::translate("OrnServerWidget", "Kerberos database password", nullptr));
        label_2->setText(
            QCoreApplication::translate("OrnServerWidget", "ORN admin password", nullptr));
        label_9->setText(
            QCoreApplication::translate("OrnServerWidget", "Repeat Kerberos password", nullptr));
        label_10->setText(
            QCoreApplication::translate("OrnServerWidget", "Repeat ORN admin password", nullptr));
        label_7->setText(QCoreApplication::translate("OrnServerWidget", "Status", nullptr));
        _statusLabel->setText(QString());
        _networkGroupBox->setTitle(
            QCoreApplication::translate("OrnServerWidget", "Use custom network settings", nullptr));
        label_3->setText(QCoreApplication::translate("OrnServerWidget", "IP address", nullptr));
        label_4->setText(QCoreApplication::translate("OrnServerWidget", "Hostname", nullptr));
        label_5->setText(QCoreApplication::translate("OrnServerWidget", "Domain name", nullptr));
        label_6->setText(QCoreApplication::translate("OrnServerWidget", "Server name:", nullptr));
        _serverNameLabel->setText(QString());
        _expertModePushButton->setText(
            QCoreApplication::translate("OrnServerWidget", "Expert mode", nullptr));
        _networkSettingPushButton->setText(
            QCoreApplication::translate("OrnServerWidget", "Network settings", nullptr));
        _editOrnConfPushButton->setText(
            QCoreApplication::translate("OrnServerWidget", "Edit orn.conf", nullptr));
        _initServerPushButton->setText(
            QCoreApplication::translate("OrnServerWidget", "Create server", nullptr));
        label_11->setText(QCoreApplication::translate(
            "OrnServerWidget", "ORN server will be created and runing on current work station.",
            nullptr));
        label_8->setText(QCoreApplication::translate(
            "OrnServerWidget",
            "File /etc/hosts always should contain a server IP address, domain and hostname.",
            nullptr));
        _macWarningLabel->setText(QString());
    } // retranslateUi
};

namespace Ui {
class OrnServerWidget : public Ui_OrnServerWidget
{
};
} // namespace Ui

QT_END_NAMESPACE

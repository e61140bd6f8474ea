#pragma once

// The initialisation window, kept in the shape of generated form code so that it can be
// exchanged for a designer file without touching the dialog.

#include <QtCore/QVariant>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QVBoxLayout>

QT_BEGIN_NAMESPACE

class Ui_InitServerDialog
{
public:
    QVBoxLayout *verticalLayout;
    QPlainTextEdit *_plainTextEdit;
    QProgressBar *_progressBar;
    QDialogButtonBox *_buttonBox;

    void setupUi(QDialog *InitServerDialog)
    {
        if (InitServerDialog->objectName().isEmpty())
            InitServerDialog->setObjectName(QString::fromUtf8("InitServerDialog"));
        InitServerDialog->resize(491, 483);
        verticalLayout = new QVBoxLayout(InitServerDialog);
        verticalLayout->setObjectName(QString::fromUtf8("verticalLayout"));
        _plainTextEdit = new QPlainTextEdit(InitServerDialog);
        _plainTextEdit->setObjectName(QString::fromUtf8("_plainTextEdit"));
        _plainTextEdit->setEnabled(true);
        _plainTextEdit->setMouseTracking(false);
        _plainTextEdit->setTabletTracking(false);
        _plainTextEdit->setAcceptDrops(false);
        _plainTextEdit->setUndoRedoEnabled(true);
        _plainTextEdit->setReadOnly(true);
        _plainTextEdit->setOverwriteMode(false);
        _plainTextEdit->setCenterOnScroll(false);

        verticalLayout->addWidget(_plainTextEdit);

        _progressBar = new QProgressBar(InitServerDialog);
        _progressBar->setObjectName(QString::fromUtf8("_progressBar"));
        _progressBar->setMaximum(0);
        _progressBar->setValue(0);
        _progressBar->setTextVisible(false);
        _progressBar->setInvertedAppearance(true);

        verticalLayout->addWidget(_progressBar);

        _buttonBox = new QDialogButtonBox(InitServerDialog);
        _buttonBox->setObjectName(QString::fromUtf8("_buttonBox"));
        _buttonBox->setOrientation(Qt::Horizontal);
        _buttonBox->setStandardButtons(QDialogButtonBox::Abort);

        verticalLayout->addWidget(_buttonBox);

        retranslateUi(InitServerDialog);

        QMetaObject::connectSlotsByName(InitServerDialog);
    } // setupUi

    void retranslateUi(QDialog *InitServerDialog)
    {
        InitServerDialog->setWindowTitle(
            QCoreApplication::translate("InitServerDialog", "Initialization ORN server", nullptr));
#if QT_CONFIG(accessibility)
        _plainTextEdit->setAccessibleName(
            QCoreApplication::translate("InitServerDialog", "Tool output", nullptr));
#endif // QT_CONFIG(accessibility)
#if QT_CONFIG(accessibility)
        _progressBar->setAccessibleName(
            QCoreApplication::translate("InitServerDialog", "Creation progress", nullptr));
#endif // QT_CONFIG(accessibility)
    } // retranslateUi
};

namespace Ui {
class InitServerDialog : public Ui_InitServerDialog
{
};
} // namespace Ui

QT_END_NAMESPACE

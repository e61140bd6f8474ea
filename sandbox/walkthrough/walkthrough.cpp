#include "walkthrough.h"

#include "consolewindow.h"
#include "element.h"
#include "elementwidget.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>

#include <cstdio>

namespace {

// The suite that plays the walkthrough waits 45 s for it: giving up first leaves the reason in
// what the suite reports.
constexpr int walkthroughLimitMs = 30000;

QMessageBox *messageBox(QMessageBox::Icon icon)
{
    auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    return box && box->icon() == icon ? box : nullptr;
}

QWidget *initDialog()
{
    QWidget *modal = QApplication::activeModalWidget();
    return modal && modal->inherits("InitServerDialog") ? modal : nullptr;
}

// The click opens a modal loop of its own; it must not run inside our poll.
void press(QAbstractButton *button)
{
    if (button)
        QMetaObject::invokeMethod(button, "click", Qt::QueuedConnection);
}

} // namespace

Walkthrough::Walkthrough(ConsoleWindow &window, const QString &folder)
    : m_window(window)
    , m_folder(folder)
{
    // Counted, not flagged: a read may settle before the step that waits for it has begun.
    connect(&window, &ConsoleWindow::currentElementSettled, this, [this] { ++m_settledReads; });
    m_timer.setInterval(50);
    connect(&m_timer, &QTimer::timeout, this, &Walkthrough::poll);

    auto createButton = [this] { return formControl<QPushButton>("_initServerPushButton"); };
    auto status = [this] { return formControl<QLabel>("_statusLabel")->text(); };

    m_steps = {
        {QStringLiteral("01-form-as-read.png"),
         [this, status] { return m_settledReads > 0 && !status().isEmpty(); },
         [createButton] { press(createButton()); }},
        {QStringLiteral("02-error-for-an-empty-form.png"),
         [] { return messageBox(QMessageBox::Critical) != nullptr; },
         [] { press(messageBox(QMessageBox::Critical)->button(QMessageBox::Ok)); }},
        {QString(), [] { return QApplication::activeModalWidget() == nullptr; },
         [this] {
             for (const char *name : {"_kerberosPasswordLineEdit", "_repeatKerberosPasswordLineEdit"})
                 formControl<QLineEdit>(name)->setText(QStringLiteral("Kerberos-2026"));
             for (const char *name : {"_adminPasswordLineEdit", "_repeatAdminPasswordLineEdit"})
                 formControl<QLineEdit>(name)->setText(QStringLiteral("Admin-2026"));
             formControl<QGroupBox>("_networkGroupBox")->setChecked(true);
             formControl<QLineEdit>("_hostnameLineEdit")->setText(QStringLiteral("dc1"));
             formControl<QLineEdit>("_domainNameLineEdit")->setText(QStringLiteral(".corp.lan"));
         }},
        {QStringLiteral("03-filled-with-custom-network-settings.png"),
         [this] {
             return formControl<QLabel>("_serverNameLabel")->text()
                    == QLatin1String("dc1.corp.lan");
         },
         [createButton] { press(createButton()); }},
        {QStringLiteral("04-destruction-warning.png"),
         [] { return messageBox(QMessageBox::Warning) != nullptr; },
         [] { press(messageBox(QMessageBox::Warning)->button(QMessageBox::Yes)); }},
        {QStringLiteral("05-initialisation-streaming.png"),
         [] {
             QWidget *dialog = initDialog();
             return dialog
                    && dialog->findChild<QPlainTextEdit *>(QStringLiteral("_plainTextEdit"))
                               ->blockCount()
                           >= 8;
         },
         [] {}},
        {QString(),
         [] {
             QWidget *dialog = initDialog();
             return dialog
                    && dialog->findChild<QDialogButtonBox *>(QStringLiteral("_buttonBox"))
                           ->button(QDialogButtonBox::Close);
         },
         [] {
             auto *pane = initDialog()->findChild<QPlainTextEdit *>(QStringLiteral("_plainTextEdit"));
             pane->moveCursor(QTextCursor::End);
             pane->ensureCursorVisible();
         }},
        {QStringLiteral("06-initialisation-finished.png"), [] { return true; },
         [this] {
             // Closing the dialog requests the re-read, which may settle while the reboot
             // question is still open.
             m_readsBeforeClose = m_settledReads;
             press(initDialog()
                       ->findChild<QDialogButtonBox *>(QStringLiteral("_buttonBox"))
                       ->button(QDialogButtonBox::Close));
         }},
        {QStringLiteral("07-reboot-question.png"),
         [] { return messageBox(QMessageBox::Question) != nullptr; },
         [] { press(messageBox(QMessageBox::Question)->button(QMessageBox::Yes)); }},
        {QStringLiteral("08-form-after-the-re-read.png"),
         [this, status] {
             return !QApplication::activeModalWidget() && m_settledReads > m_readsBeforeClose
                    && status() == QCoreApplication::translate("OrnServerWidget", "on");
         },
         [] { QApplication::exit(0); }},
    };
}

void Walkthrough::start()
{
    QDir().mkpath(m_folder);
    if (!m_window.openType(QStringLiteral("OrnServer"))) {
        std::fprintf(stderr, "walkthrough: the console has no ORN server element\n");
        QApplication::exit(1);
        return;
    }
    m_clock.start();
    m_timer.start();
}

void Walkthrough::poll()
{
    if (m_current >= m_steps.size())
        return;
    const Step &step = m_steps.at(m_current);
    if (!step.ready()) {
        if (m_clock.elapsed() > walkthroughLimitMs) {
            std::fprintf(stderr, "walkthrough: gave up after %d s waiting for step %d%s\n",
                         walkthroughLimitMs / 1000, m_current + 1,
                         qPrintable(step.picture.isEmpty()
                                        ? QString()
                                        : QStringLiteral(" for ") + step.picture));
            photograph(QStringLiteral("failed-step-%1.png").arg(m_current + 1));
            m_timer.stop();
            QApplication::exit(1);
        }
        return;
    }
    if (!step.picture.isEmpty() && !photograph(step.picture)) {
        m_timer.stop();
        QApplication::exit(1);
        return;
    }
    ++m_current;
    step.act();
}

// Offscreen there is no window manager to compose the screen, so a modal window is painted
// over the centre of the console as it would appear.
bool Walkthrough::photograph(const QString &picture)
{
    QImage image = m_window.grab().toImage();
    // The line printed for the picture names the buttons of the window on top, as shown.
    QString buttons;
    if (QWidget *modal = QApplication::activeModalWidget()) {
        for (const QAbstractButton *button : modal->findChildren<QAbstractButton *>()) {
            if (button->isVisibleTo(modal))
                buttons += QStringLiteral(" [%1]").arg(button->text());
        }
        const QImage top = modal->grab().toImage();
        QPainter painter(&image);
        painter.fillRect(image.rect(), QColor(0, 0, 0, 60));
        painter.drawImage((image.width() - top.width()) / 2, (image.height() - top.height()) / 2,
                          top);
    }
    const QString file = QDir(m_folder).filePath(picture);
    if (!image.save(file)) {
        std::fprintf(stderr, "walkthrough: cannot write %s\n", qPrintable(file));
        return false;
    }
    std::printf("%s\n", (file + buttons).toUtf8().constData());
    std::fflush(stdout);
    return true;
}

QWidget *Walkthrough::form() const
{
    Element *element = m_window.currentElement();
    return element ? element->elementWidget(ElementWidgetRole::Edit) : nullptr;
}

template<typename T> T *Walkthrough::formControl(const char *name) const
{
    return form()->findChild<T *>(QLatin1String(name));
}

#include "plugintranslations.h"

#include <QCoreApplication>
#include <QLocale>
#include <QThread>
#include <QTimer>
#include <QTranslator>

QTranslator *installPluginTranslator(const QLocale &locale, const QString &folder)
{
    QCoreApplication *app = QCoreApplication::instance();
    auto *translator = new QTranslator(app);
    if (!translator->load(locale, QStringLiteral("pyx-orn-server-plugin"), QStringLiteral("_"),
                          folder)) {
        delete translator;
        return nullptr;
    }
    QCoreApplication::installTranslator(translator);
    return translator;
}

namespace {

void loadSystemTranslations()
{
    installPluginTranslator(QLocale::system(), QStringLiteral(PYX_TRANSLATIONS_DIR));
}

// Runs when the library is loaded into a process that has an application object, or when the
// application object is made; translators belong to the application's thread.
void translationsStartup()
{
    QCoreApplication *app = QCoreApplication::instance();
    if (QThread::currentThread() == app->thread())
        loadSystemTranslations();
    else
        QTimer::singleShot(0, app, &loadSystemTranslations);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(translationsStartup)

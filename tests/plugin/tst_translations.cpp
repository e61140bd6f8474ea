#include <QProcess>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

// The Russian catalogue must cover every text the code shows, and nothing else.
class TestTranslations : public QObject
{
    Q_OBJECT

    // "context::source" of every message, and those of them without a finished translation.
    static QPair<QSet<QString>, QStringList> read(const QString &fileName)
    {
        QPair<QSet<QString>, QStringList> catalogue;
        QFile file(fileName);
        QXmlStreamReader xml(file.open(QIODevice::ReadOnly) ? &file : nullptr);
        QString context, source;
        while (!xml.atEnd()) {
            if (!xml.readNextStartElement())
                continue;
            if (xml.name() == "name")
                context = xml.readElementText();
            else if (xml.name() == "source")
                catalogue.first.insert(source = context + "::" + xml.readElementText());
            else if (xml.name() == "translation" &&
                     (xml.attributes().hasAttribute("type") || xml.readElementText().isEmpty()))
                catalogue.second << source;
        }
        return catalogue;
    }

private slots:
    void catalogueMatchesTheCode()
    {
        const QString shippedFile = PYX_TS_DIR "/pyx-orn-server-plugin_ru.ts";
        QTemporaryDir dir;
        const QString refreshed = dir.filePath("refreshed_ru.ts");
        QVERIFY(QFile::copy(shippedFile, refreshed));
        QProcess lupdate;
        lupdate.start(PYX_LUPDATE, {"-no-obsolete", "-locations", "none", PYX_PLUGIN_SOURCE_DIR,
                                    "-ts", refreshed});
        QVERIFY(lupdate.waitForFinished(40000) && lupdate.exitCode() == 0);

        const QSet<QString> code = read(refreshed).first;
        const auto [shipped, untranslated] = read(shippedFile);
        const QStringList missing = (code - shipped).values(), stale = (shipped - code).values();
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(" | ")));
        QVERIFY2(stale.isEmpty(), qPrintable(stale.join(" | ")));
        QVERIFY2(untranslated.isEmpty(), qPrintable(untranslated.join(" | ")));
    }
};

QTEST_GUILESS_MAIN(TestTranslations)
#include "tst_translations.moc"

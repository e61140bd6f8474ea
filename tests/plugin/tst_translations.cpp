#include <QtTest>

// Each Russian catalogue, the plug-in's and the console's, must cover every text its code shows,
// and nothing else.
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
    void catalogueMatchesTheCode_data()
    {
        QTest::addColumn<QString>("catalogue");
        QTest::addColumn<QString>("sources");
        QTest::newRow("plug-in") << "pyx-orn-server-plugin_ru.ts" << "pyx-orn-server-plugin";
        QTest::newRow("console") << "pyx-console_ru.ts" << "framework";
    }

    void catalogueMatchesTheCode()
    {
        QFETCH(QString, catalogue);
        QFETCH(QString, sources);
        const QString shippedFile = PYX_SOURCE_DIR "/translations/" + catalogue;
        QTemporaryDir dir;
        const QString refreshed = dir.filePath("refreshed_ru.ts");
        QVERIFY(QFile::copy(shippedFile, refreshed));
        QProcess lupdate;
        lupdate.start(PYX_LUPDATE, {"-no-obsolete", "-locations", "none",
                                    PYX_SOURCE_DIR "/" + sources, "-ts", refreshed});
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

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTranslator>
#include <QXmlStreamReader>
#include <QtTest>

// The Russian catalogue must cover every text the code shows, and nothing else.
class TestTranslations : public QObject
{
    Q_OBJECT

private slots:
    void catalogueMatchesTheCode();
    void compiledCatalogueTranslates();
};

namespace {

struct Catalogue
{
    QSet<QString> sources;
    QStringList untranslated;
};

Catalogue readCatalogue(const QString &fileName)
{
    Catalogue catalogue;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return catalogue;
    QXmlStreamReader xml(&file);
    QString context;
    QString source;
    while (!xml.atEnd()) {
        if (!xml.readNextStartElement())
            continue;
        if (xml.name() == QLatin1String("name")) {
            context = xml.readElementText();
        } else if (xml.name() == QLatin1String("source")) {
            source = context + QLatin1String("::") + xml.readElementText();
            catalogue.sources.insert(source);
        } else if (xml.name() == QLatin1String("translation")) {
            const QString type = xml.attributes().value(QLatin1String("type")).toString();
            if (!type.isEmpty() || xml.readElementText().isEmpty())
                catalogue.untranslated << source;
        }
    }
    return catalogue;
}

} // namespace

void TestTranslations::catalogueMatchesTheCode()
{
    const QString checkedIn = QStringLiteral(PYX_TS_DIR "/pyx-orn-server-plugin_ru.ts");
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString refreshed = dir.filePath(QStringLiteral("refreshed_ru.ts"));
    QVERIFY(QFile::copy(checkedIn, refreshed));

    QProcess lupdate;
    lupdate.start(QStringLiteral(PYX_LUPDATE),
                  {QStringLiteral("-no-obsolete"), QStringLiteral("-locations"),
                   QStringLiteral("none"), QStringLiteral(PYX_PLUGIN_SOURCE_DIR),
                   QStringLiteral("-ts"), refreshed});
    QVERIFY(lupdate.waitForFinished(60000));
    QCOMPARE(lupdate.exitCode(), 0);

    const Catalogue code = readCatalogue(refreshed);
    const Catalogue shipped = readCatalogue(checkedIn);
    QVERIFY(!shipped.sources.isEmpty());
    const QStringList missing = (code.sources - shipped.sources).values();
    const QStringList stale = (shipped.sources - code.sources).values();
    QVERIFY2(missing.isEmpty(), qPrintable(QStringLiteral("not in the catalogue: ")
                                           + missing.join(QStringLiteral(" | "))));
    QVERIFY2(stale.isEmpty(), qPrintable(QStringLiteral("no longer in the code: ")
                                         + stale.join(QStringLiteral(" | "))));
    QVERIFY2(shipped.untranslated.isEmpty(),
             qPrintable(QStringLiteral("untranslated: ")
                        + shipped.untranslated.join(QStringLiteral(" | "))));
}

void TestTranslations::compiledCatalogueTranslates()
{
    QTranslator translator;
    QVERIFY(translator.load(QStringLiteral(PYX_QM_DIR "/pyx-orn-server-plugin_ru.qm")));
    QCOMPARE(translator.translate("OrnServerPlugin", "Support ORN server"),
             QStringLiteral("Поддержка сервера ORN"));
}

QTEST_GUILESS_MAIN(TestTranslations)
#include "tst_translations.moc"

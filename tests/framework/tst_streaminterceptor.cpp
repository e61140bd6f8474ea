#include "streaminterceptor.h"

#include <QDir>
#include <QTest>

#include <chrono>
#include <cstdio>
#include <future>
#include <iostream>
#include <memory>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace {

enum class Writer { Stdio, Iostream, QtMessage, Mixed };

// Each line carries its number, so a lost, doubled or reordered chunk changes the bytes.
QByteArrayList numberedLines(int count)
{
    QByteArrayList lines;
    for (int i = 0; i < count; ++i) {
        lines << QByteArray::number(i).rightJustified(8, '0') + QByteArray(55, 'a' + i % 26);
    }
    return lines;
}

QByteArray joined(const QByteArrayList &lines)
{
    QByteArray all;
    for (const QByteArray &line : lines) {
        all.append(line).append('\n');
    }
    return all;
}

// QTest's own handler keeps messages off stderr; Qt's default one writes them there.
class DefaultMessageHandler
{
public:
    DefaultMessageHandler() : m_previous(qInstallMessageHandler(nullptr)) {}
    ~DefaultMessageHandler() { qInstallMessageHandler(m_previous); }

private:
    QtMessageHandler m_previous;
};

void writeLine(Writer writer, const QByteArray &line)
{
    switch (writer) {
    case Writer::Stdio:
        std::fprintf(stderr, "%s\n", line.constData());
        break;
    case Writer::Iostream:
        std::cerr << line.constData() << '\n';
        break;
    case Writer::QtMessage:
        qWarning("%s", line.constData());
        break;
    case Writer::Mixed:
        break;
    }
}

void writeLines(Writer writer, const QByteArrayList &lines)
{
    const DefaultMessageHandler handler;
    for (int i = 0; i < lines.size(); ++i) {
        writeLine(writer == Writer::Mixed ? Writer(i % 3) : writer, lines.at(i));
    }
}

int openDescriptorCount()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

bool sameFile(const struct stat &a, const struct stat &b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace

Q_DECLARE_METATYPE(Writer)

class TestStreamInterceptor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void capturesEverySource_data();
    void capturesEverySource();
    void capturesOtherThreads();
    void readsAreCumulative();
    void restoresDescriptorWithoutLeaks();
    void stopsWhileAnotherWriterHoldsThePipe();
    void secondCaptureIsInert();
};

void TestStreamInterceptor::initTestCase()
{
    // Qt's default handler must write the bare message to stderr, whatever the caller's setup.
    qputenv("QT_FORCE_STDERR_LOGGING", "1");
    qputenv("QT_MESSAGE_PATTERN", "%{message}");
}

void TestStreamInterceptor::capturesEverySource_data()
{
    QTest::addColumn<Writer>("writer");
    QTest::addColumn<int>("lineCount");

    // 16384 lines of 64 bytes make 1 MiB, far beyond what a pipe buffers.
    const int mebibyte = 16384;
    QTest::newRow("stdio, one line") << Writer::Stdio << 1;
    QTest::newRow("stdio, 1 MiB") << Writer::Stdio << mebibyte;
    QTest::newRow("iostream, one line") << Writer::Iostream << 1;
    QTest::newRow("iostream, 1 MiB") << Writer::Iostream << mebibyte;
    QTest::newRow("Qt message, one line") << Writer::QtMessage << 1;
    QTest::newRow("Qt message, 1 MiB") << Writer::QtMessage << mebibyte;
    QTest::newRow("all three interleaved, 1 MiB") << Writer::Mixed << mebibyte;
}

void TestStreamInterceptor::capturesEverySource()
{
    QFETCH(Writer, writer);
    QFETCH(int, lineCount);
    const QByteArrayList lines = numberedLines(lineCount);

    StreamInterceptor interceptor(stderr);
    QVERIFY(interceptor.isCapturing());
    writeLines(writer, lines);
    const QByteArray captured = interceptor.streamReadAll();

    QCOMPARE(captured.size(), lineCount * 64);
    QCOMPARE(captured, joined(lines));
}

void TestStreamInterceptor::capturesOtherThreads()
{
    const QByteArrayList lines = numberedLines(16384);
    StreamInterceptor interceptor(stderr);

    std::thread writer([&lines] { writeLines(Writer::Stdio, lines); });
    writer.join();

    QCOMPARE(interceptor.streamReadAll(), joined(lines));
}

void TestStreamInterceptor::readsAreCumulative()
{
    StreamInterceptor interceptor(stderr);
    QVERIFY(interceptor.isCapturing());
    QCOMPARE(interceptor.streamReadAll(), QByteArray());

    std::fputs("first\n", stderr);
    QCOMPARE(interceptor.streamReadAll(), QByteArray("first\n"));
    std::fputs("second\n", stderr);
    QCOMPARE(interceptor.streamReadAll(), QByteArray("first\nsecond\n"));
}

void TestStreamInterceptor::restoresDescriptorWithoutLeaks()
{
    struct stat before = {};
    QCOMPARE(fstat(STDERR_FILENO, &before), 0);
    const int descriptorsBefore = openDescriptorCount();
    {
        StreamInterceptor interceptor(stderr);
        QVERIFY(interceptor.isCapturing());
        std::fputs("inside\n", stderr);
        QCOMPARE(interceptor.streamReadAll(), QByteArray("inside\n"));

        struct stat during = {};
        QCOMPARE(fstat(STDERR_FILENO, &during), 0);
        QVERIFY(!sameFile(before, during));
    }
    struct stat after = {};
    QCOMPARE(fstat(STDERR_FILENO, &after), 0);
    QVERIFY(sameFile(before, after));
    QCOMPARE(openDescriptorCount(), descriptorsBefore);
}

void TestStreamInterceptor::stopsWhileAnotherWriterHoldsThePipe()
{
    const int descriptorsBefore = openDescriptorCount();
    auto interceptor = std::make_unique<StreamInterceptor>(stderr);
    QVERIFY(interceptor->isCapturing());
    // Stands in for a child process that inherited the captured stderr and outlives the capture.
    int lingeringWriter = dup(STDERR_FILENO);
    QVERIFY(lingeringWriter >= 0);

    auto stopped = std::async(std::launch::async, [&interceptor] { interceptor.reset(); });
    const bool stoppedInTime =
        stopped.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    // Lets a capture that waits for end-of-file finish, so a failure does not hang the run.
    close(lingeringWriter);
    stopped.wait();

    QVERIFY(stoppedInTime);
    QCOMPARE(openDescriptorCount(), descriptorsBefore);
}

void TestStreamInterceptor::secondCaptureIsInert()
{
    struct stat before = {};
    QCOMPARE(fstat(STDERR_FILENO, &before), 0);
    {
        StreamInterceptor first(stderr);
        QVERIFY(first.isCapturing());
        {
            StreamInterceptor second(stderr);
            QVERIFY(!second.isCapturing());
            std::fputs("while both live\n", stderr);
            QCOMPARE(second.streamReadAll(), QByteArray());
        }
        std::fputs("after the second\n", stderr);
        QCOMPARE(first.streamReadAll(), QByteArray("while both live\nafter the second\n"));
    }
    struct stat after = {};
    QCOMPARE(fstat(STDERR_FILENO, &after), 0);
    QVERIFY(sameFile(before, after));

    // The first capture's end frees the slot.
    StreamInterceptor third(stderr);
    QVERIFY(third.isCapturing());
}

QTEST_GUILESS_MAIN(TestStreamInterceptor)
#include "tst_streaminterceptor.moc"

#include "streaminterceptor.h"

#include <QDir>
#include <QTest>

#include <cstdio>
#include <iostream>
#include <thread>

#include <sys/stat.h>
#include <unistd.h>

namespace {

int openDescriptorCount()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
        .size();
}

QByteArray stderrDeviceAndInode()
{
    struct stat st = {};
    fstat(STDERR_FILENO, &st);
    return QByteArray::number(quint64(st.st_dev)) + ':' + QByteArray::number(quint64(st.st_ino));
}

// 1 MiB, far beyond what a pipe buffers, in numbered lines so a lost, doubled or reordered chunk
// changes the bytes. QTest's own handler keeps messages off stderr; Qt's default one writes there.
QByteArray writeThroughEveryWriter()
{
    const QtMessageHandler previous = qInstallMessageHandler(nullptr);
    QByteArray expected;
    for (int i = 0; i < 16384; ++i) {
        const QByteArray line =
            QByteArray::number(i).rightJustified(8, '0') + QByteArray(55, char('a' + i % 26));
        expected += line + '\n';
        if (i % 3 == 0) {
            std::fprintf(stderr, "%s\n", line.constData());
        } else if (i % 3 == 1) {
            std::cerr << line.constData() << '\n';
        } else {
            qWarning("%s", line.constData());
        }
    }
    qInstallMessageHandler(previous);
    return expected;
}

} // namespace

class TestStreamInterceptor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("QT_FORCE_STDERR_LOGGING", "1");
        qputenv("QT_MESSAGE_PATTERN", "%{message}");
    }

    void capturesEveryWriterAndRestores_data()
    {
        QTest::addColumn<bool>("fromOtherThread");
        QTest::newRow("this thread") << false;
        QTest::newRow("other thread") << true;
    }

    void capturesEveryWriterAndRestores()
    {
        QFETCH(bool, fromOtherThread);
        const QByteArray fileBefore = stderrDeviceAndInode();
        const int descriptorsBefore = openDescriptorCount();
        // Stands in for a child that inherited the captured stderr: the capture must still end.
        int lingeringWriter = -1;
        {
            StreamInterceptor interceptor(stderr);
            QVERIFY(interceptor.isCapturing());
            QVERIFY(stderrDeviceAndInode() != fileBefore);
            QByteArray expected;
            if (fromOtherThread) {
                std::thread([&expected] { expected = writeThroughEveryWriter(); }).join();
            } else {
                expected = writeThroughEveryWriter();
            }
            const QByteArray captured = interceptor.streamReadAll();
            QCOMPARE(captured.size(), expected.size());
            QCOMPARE(captured, expected);
            lingeringWriter = dup(STDERR_FILENO);
        }
        close(lingeringWriter);
        QCOMPARE(stderrDeviceAndInode(), fileBefore);
        QCOMPARE(openDescriptorCount(), descriptorsBefore);
    }

    void secondCaptureIsInert()
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
};

QTEST_GUILESS_MAIN(TestStreamInterceptor)
#include "tst_streaminterceptor.moc"

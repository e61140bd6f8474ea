#include "streaminterceptor.h"

#include <QDir>
#include <QTest>

#include <cstdio>
#include <future>
#include <iostream>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

// Which file fd 2 is and how many descriptors are open: a capture must leave both as it found them.
QString descriptorState()
{
    struct stat st = {};
    fstat(STDERR_FILENO, &st);
    const int open = QDir("/proc/self/fd")
                         .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                         .size();
    return QString("fd 2 is %1:%2, %3 open").arg(st.st_dev).arg(st.st_ino).arg(open);
}

// Over 1 MiB, far beyond what a pipe buffers, in numbered lines so that a lost, doubled or
// reordered chunk changes the bytes. QTest's own handler keeps messages off stderr; Qt's default
// one, told to print the bare message, writes them there.
QByteArray writeThroughEveryWriter()
{
    qputenv("QT_FORCE_STDERR_LOGGING", "1");
    qputenv("QT_MESSAGE_PATTERN", "%{message}");
    const QtMessageHandler previous = qInstallMessageHandler(nullptr);
    QByteArray expected;
    // `+=` of a built string reserves exactly the new size: without this room every line would
    // copy the whole array again, which under AddressSanitizer takes minutes.
    expected.reserve(3 * 6000 * 64);
    const auto next = [&expected] {
        const int n = expected.size() / 64;
        const QByteArray line = QByteArray::number(n).rightJustified(63, char('a' + n % 26));
        expected += line + '\n';
        return line;
    };
    for (int i = 0; i < 6000; ++i) {
        std::fprintf(stderr, "%s\n", next().constData());
        std::cerr << next().constData() << '\n';
        qWarning("%s", next().constData());
    }
    qInstallMessageHandler(previous);
    return expected;
}

class TestStreamInterceptor : public QObject
{
    Q_OBJECT

private slots:
    void capturesEveryWriterAndRestores_data()
    {
        QTest::addColumn<bool>("fromOtherThread");
        QTest::newRow("this thread") << false;
        QTest::newRow("other thread") << true;
    }

    void capturesEveryWriterAndRestores()
    {
        QFETCH(bool, fromOtherThread);
        const QString before = descriptorState();
        // Stands in for a child that inherited the captured stderr: the capture must end anyway.
        int lingeringWriter = -1;
        {
            StreamInterceptor interceptor(stderr);
            QVERIFY(interceptor.isCapturing());
            // One capture at a time: a second one sees nothing and must not undo the first.
            auto second = std::make_unique<StreamInterceptor>(stderr);
            QVERIFY(!second->isCapturing());
            QByteArray expected =
                fromOtherThread ? std::async(std::launch::async, writeThroughEveryWriter).get()
                                : writeThroughEveryWriter();
            QCOMPARE(second->streamReadAll(), QByteArray());
            second.reset();
            const QByteArray captured = interceptor.streamReadAll();
            QCOMPARE(captured.size(), expected.size());
            QCOMPARE(captured, expected);
            // Each read must hold what was written just before it.
            for (char c = 'a'; c <= 'z'; ++c) {
                std::fputc(c, stderr);
                expected += c;
                QCOMPARE(interceptor.streamReadAll(), expected);
            }
            lingeringWriter = dup(STDERR_FILENO);
        }
        close(lingeringWriter);
        QCOMPARE(descriptorState(), before);
    }
};

QTEST_GUILESS_MAIN(TestStreamInterceptor)
#include "tst_streaminterceptor.moc"

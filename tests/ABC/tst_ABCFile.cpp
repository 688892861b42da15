#include "ABC/ABCFile.h"

#include "AbcTestSupport.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <memory>
#include <thread>

#include <sys/stat.h>

using namespace AbcTest;

class TestABCFile : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { std::signal(SIGPIPE, SIG_IGN); }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    void readsATune()
    {
        const QString path = write("X:1\nK:C\nCD|");
        Track track = loadABCFile(path);
        QCOMPARE(notes(track), "60@0+30240 62@30240+30240"_s);
        QCOMPARE(track.fileName(), path);
        QCOMPARE(track.abc(), "X:1\nK:C\nCD|"_s);
    }
    void readsUtf8()
    {
        QCOMPARE(loadABCFile(write("X:1\nT:Jos\xC3\xA9\nK:C\nC")).header("T"_s), "José"_s);
        QCOMPARE(loadABCFile(write("\xEF\xBB\xBFX:1\nT:x\nK:C\nC")).header("T"_s), "x"_s);
        QCOMPARE(loadABCFile(write("X:1\nT:\xFF\nK:C\nC")).header("T"_s), QString(QChar(0xFFFD)));
    }
    void readsUpToTheFirstNul()
    {
        QCOMPARE(loadABCFile(write(QByteArray("X:1\nK:C\nC\0D*\0", 13))).abc(), "X:1\nK:C\nC"_s);
        const QByteArray longTune = "X:1\nK:C\n" + QByteArray(100000, 'C');
        QCOMPARE(loadABCFile(write(longTune)).noteCount(), 100000);
        QCOMPARE(loadABCFile(write(longTune + QByteArray(1, '\0') + "D")).noteCount(), 100000);
    }
    void readsAnEndlessFileUpToItsNul()
    {
        LogRecorder recorder;
        QCOMPARE(loadABCFile("/dev/zero"_s).eventCount(), 0);
    }
    void stopsReadingWhatHasNoEnd()
    {
        // 300 MiB without a byte on the disk; the parser would take minutes for them.
        QFile file(m_dir->filePath("endless"_s));
        QVERIFY(::mkfifo(QFile::encodeName(file.fileName()).constData(), 0600) == 0);
        std::thread writer([&file] {
            QFile pipe(file.fileName());
            const QByteArray block(1 << 20, 'C');
            if (!pipe.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
                return;
            for (int i = 0; i < 300 && pipe.write(block) == block.size(); ++i) { }
        });
        QCOMPARE(thrownBy([&] { loadABCFile(file.fileName()); }), "The file is too large."_s);
        writer.join();
    }
    void passesTheParsersMessageOn()
    {
        const QString path = write("X:1\nK:C\n*");
        QCOMPARE(thrownBy([&] { loadABCFile(path); }),
                 "Unknown token found in ABC body at line 3, column 1."_s);
    }
    void failsOnWhatItCannotOpen_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("missing") << "/nonexistent/tune.abc"_s;
        QTest::newRow("a directory") << "/"_s;
        QTest::newRow("opened but not readable") << "/proc/self/mem"_s;
    }
    void failsOnWhatItCannotOpen()
    {
        QFETCH(QString, path);
        QCOMPARE(thrownBy([&] { loadABCFile(path); }), "Could not open file."_s);
    }

    void savesUtf8ThatItReadsAgain()
    {
        const QString path = m_dir->filePath("tune.abc"_s);
        const QString text = "X:1\nT:José \U0001D11E\nK:C\nC"_s;
        saveABCFile(path, text);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("X:1\nT:Jos\xC3\xA9 \xF0\x9D\x84\x9E\nK:C\nC"));
        QCOMPARE(loadABCFile(path).abc(), text);
    }
    void failsOnWhatItCannotSave()
    {
        QCOMPARE(thrownBy([] { saveABCFile("/nonexistent/tune.abc"_s, "X:1"_s); }),
                 "Could not open the file for saving."_s);
        QCOMPARE(thrownBy([] { saveABCFile("/dev/full"_s, "X:1"_s); }),
                 "Could not write the file: No space left on device"_s);
    }

private:
    QString write(const QByteArray &bytes) const
    {
        QFile file(m_dir->filePath("tune.abc"_s));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("could not write the test's file");
        return file.fileName();
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

QTEST_APPLESS_MAIN(TestABCFile)
#include "tst_ABCFile.moc"

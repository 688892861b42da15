#include "MIDI/MidiFile.h"

#include "MidiTestSupport.h"

#include "support/MidiBuilder.h"
#include "support/Thrown.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <memory>
#include <thread>

#include <sys/stat.h>

using namespace MidiTest;
using namespace MidiBuilder;

namespace {

const QString Song = "Track 1 - Acoustic Grand Piano: 60@0+30240"_s;

QByteArray song()
{
    return file({noteOn(0, 0, 60) + noteOff(480, 0, 60), noteOn(0, 3, 62)});
}

} // namespace

class tst_MidiFile : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { std::signal(SIGPIPE, SIG_IGN); }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    void loadsTheTracksWithNotes()
    {
        const QList<Track> tracks = loadMidiFile(write("song.mid"_s, song()), Merged);
        QCOMPARE(songs(tracks), {Song});
        QVERIFY(tracks.first().fileName().isEmpty());
    }
    void loadsAFileWithoutNotes()
    {
        QVERIFY(loadMidiFile(write("song.mid"_s, file({})), Merged).isEmpty());
    }
    void followsTheOptions()
    {
        const QString path = write("song.mid"_s, file({noteOn(0, 9, 60) + noteOff(480, 9, 60)}));
        QCOMPARE(songs(loadMidiFile(path, Merged)), {"Track 10 - Percussion: 60@0+30240"_s});
        QCOMPARE(songs(loadMidiFile(path, PerChunk)), {"Track 1 - Percussion: 60@0+30240"_s});
    }
    void defaultsAreMergedRealignedAndBent()
    {
        const MidiOptions options = MidiOptions::defaults();
        QVERIFY(options.mergeChannels);
        QVERIFY(options.autoRealign);
        QVERIFY(options.pitchBend);
    }
    void readsAnOpenFile()
    {
        QFile opened(write("song.mid"_s, song()));
        QVERIFY(opened.open(QIODevice::ReadOnly));
        QCOMPARE(songs(readMidi(opened, Merged)), {Song});
    }
    void readsAPipe()
    {
        const QString path = pipe();
        std::thread writer([&path] {
            QFile end(path);
            if (!end.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
                return;
            const QByteArray bytes = song();
            // In pieces, as they may come.
            for (int i = 0; i < bytes.size(); i += 7)
                end.write(bytes.mid(i, 7));
        });
        QFile opened(path);
        const bool isOpen = opened.open(QIODevice::ReadOnly);
        const QStringList read = isOpen ? songs(readMidi(opened, Merged)) : QStringList();
        writer.join();
        QCOMPARE(read, {Song});
    }
    void stopsReadingWhatHasNoEnd()
    {
        const QString path = pipe();
        std::thread writer([&path] {
            QFile end(path);
            const QByteArray block(1 << 20, 'x');
            if (!end.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
                return;
            for (int i = 0; i < 300 && end.write(block) == block.size(); ++i) { }
        });
        const QString message = thrownBy([&] { loadMidiFile(path, Merged); });
        writer.join();
        QCOMPARE(message, "The file is too large."_s);
    }
    void readsUpTo256MiB()
    {
        // Zeros without a place on the disk: a chunk that is not there.
        QFile sparse(write("large.mid"_s, song()));
        QVERIFY(sparse.resize(qint64{256} << 20U));
        QCOMPARE(songs(loadMidiFile(sparse.fileName(), Merged)), {Song});
        QVERIFY(sparse.resize((qint64{256} << 20U) + 1));
        QCOMPARE(thrownBy([&] { loadMidiFile(sparse.fileName(), Merged); }),
                 "The file is too large."_s);
    }
    void passesTheParsersMessageOn()
    {
        const QString path = write("song.mid"_s, "X:1\nK:C\nC");
        QCOMPARE(thrownBy([&] { loadMidiFile(path, Merged); }), "Invalid MIDI file."_s);
    }
    void failsOnWhatItCannotOpen_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("missing") << "/nonexistent/song.mid"_s;
        QTest::newRow("a directory") << "/"_s;
        QTest::newRow("opened but not readable") << "/proc/self/mem"_s;
    }
    void failsOnWhatItCannotOpen()
    {
        QFETCH(QString, path);
        QCOMPARE(thrownBy([&] { loadMidiFile(path, Merged); }), "Could not open file."_s);
    }

    void knowsMidiFilesByTheirName_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("isMidi");
        QTest::newRow(".mid") << "/nonexistent/song.mid"_s << true;
        QTest::newRow(".MID") << "song.MID"_s << true;
        QTest::newRow(".midi") << "song.Midi"_s << true;
        QTest::newRow(".kar") << "song.kar"_s << true;
        QTest::newRow(".abc") << "/nonexistent/song.abc"_s << false;
        QTest::newRow("no suffix") << "/nonexistent/mid"_s << false;
        QTest::newRow("a suffix further in") << "/nonexistent/song.mid.abc"_s << false;
        QTest::newRow("nothing") << ""_s << false;
        QTest::newRow("standard input") << "-"_s << false;
    }
    void knowsMidiFilesByTheirName()
    {
        QFETCH(QString, path);
        QFETCH(bool, isMidi);
        QCOMPARE(isMidiFile(path), isMidi);
    }
    void knowsMidiFilesByTheirFirstBytes()
    {
        QVERIFY(isMidiFile(write("song"_s, song())));
        QVERIFY(isMidiFile(write("song.abc"_s, "MThd")));
        QVERIFY(!isMidiFile(write("tune.abc"_s, "X:1\nK:C\nC")));
        QVERIFY(!isMidiFile(write("short"_s, "MTh")));
        QVERIFY(!isMidiFile(write("empty"_s, "")));
        QVERIFY(!isMidiFile(m_dir->path()));
    }
    void takesNothingFromAPipe()
    {
        // It would wait for ever for a writer.
        QVERIFY(!isMidiFile(pipe()));
    }

private:
    QString write(const QString &name, const QByteArray &bytes) const
    {
        QFile target(m_dir->filePath(name));
        if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size())
            qFatal("could not write the test's file");
        return target.fileName();
    }
    QString pipe() const
    {
        QString path = m_dir->filePath("pipe"_s);
        if (::mkfifo(QFile::encodeName(path).constData(), 0600) != 0)
            qFatal("could not make the test's pipe");
        return path;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

QTEST_APPLESS_MAIN(tst_MidiFile)
#include "tst_MidiFile.moc"

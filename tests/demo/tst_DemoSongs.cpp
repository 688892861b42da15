#include "demo/DemoGame.h"

#include "ABC/ABCParser.h"
#include "demo/Instruments.h"
#include "support/MessageCapture.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <set>

class tst_DemoSongs : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void givesEachSongAFolderOfItsOwn();
    void everyPartParsesWithoutAWarning_data();
    void everyPartParsesWithoutAWarning();
    void everyPartFillsItsBars_data();
    void everyPartFillsItsBars();
    void everyPartHasItsTitlesAndAnInstrumentOfTheGame_data();
    void everyPartHasItsTitlesAndAnInstrumentOfTheGame();
    void partsOfASongFitTogether_data();
    void partsOfASongFitTogether();
    void songsAreOfTheLengthThatIsMeant_data();
    void songsAreOfTheLengthThatIsMeant();
    void writesTheSongsAgain();
    void keepsASongThatTheUserChanged();
    void writesAMidiFileOfSeveralTracks();
    void midiFileHoldsTheNotesOfTheParts();

private:
    QStringList songs() const;
    QVector<Track> tracksOf(const QString &song) const;
    void addPartRows() const;
    void addSongRows() const;

    QTemporaryDir m_dir;
};

namespace {

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

Track parsed(const QString &path)
{
    return ABCParser().parse(QString::fromUtf8(contentsOf(path)));
}

/// The text with each bar line replaced by one that the parser does not move the time for: what
/// each bar holds then shows in the times of what follows.
QString withoutMeter(QString text)
{
    const int start = text.indexOf(QStringLiteral("\nM:"));
    return text.remove(start, text.indexOf(QLatin1Char('\n'), start + 1) - start);
}

} // namespace

void tst_DemoSongs::initTestCase()
{
    QVERIFY(m_dir.isValid());
    writeDemoSongs(m_dir.path());
}

QStringList tst_DemoSongs::songs() const
{
    return QDir(m_dir.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
}

QVector<Track> tst_DemoSongs::tracksOf(const QString &song) const
{
    QVector<Track> tracks;
    const QDir dir(m_dir.filePath(song));
    for (const QString &part : dir.entryList(QDir::Files, QDir::Name))
        tracks.append(parsed(dir.filePath(part)));
    return tracks;
}

void tst_DemoSongs::addPartRows() const
{
    QTest::addColumn<QString>("path");
    for (const QString &song : songs()) {
        const QDir dir(m_dir.filePath(song));
        for (const QString &part : dir.entryList(QDir::Files, QDir::Name))
            QTest::newRow(qPrintable(song + QLatin1Char('/') + part)) << dir.filePath(part);
    }
}

void tst_DemoSongs::addSongRows() const
{
    QTest::addColumn<QString>("song");
    for (const QString &song : songs())
        QTest::newRow(qPrintable(song)) << song;
}

void tst_DemoSongs::givesEachSongAFolderOfItsOwn()
{
    QCOMPARE(songs(),
             (QStringList{QStringLiteral("Canon in D"), QStringLiteral("Deck the Halls"),
                          QStringLiteral("Frere Jacques"), QStringLiteral("Greensleeves"),
                          QStringLiteral("Minuet in G"), QStringLiteral("Ode to Joy"),
                          QStringLiteral("The Irish Washerwoman")}));
    QCOMPARE(QDir(m_dir.filePath(QStringLiteral("Canon in D"))).entryList(QDir::Files, QDir::Name),
             (QStringList{QStringLiteral("01 Fiddle.abc"), QStringLiteral("02 Flute.abc"),
                          QStringLiteral("03 Clarinet.abc"), QStringLiteral("04 Harp.abc"),
                          QStringLiteral("05 Cello.abc")}));
}

void tst_DemoSongs::everyPartParsesWithoutAWarning_data()
{
    addPartRows();
}

void tst_DemoSongs::everyPartParsesWithoutAWarning()
{
    QFETCH(QString, path);
    const MessageCapture capture;
    const Track track = parsed(path);
    QCOMPARE(capture.texts(), QStringList());
    QVERIFY(track.noteCount() > 10);
}

void tst_DemoSongs::everyPartFillsItsBars_data()
{
    addPartRows();
}

void tst_DemoSongs::everyPartFillsItsBars()
{
    QFETCH(QString, path);
    const Track free = ABCParser().parse(withoutMeter(QString::fromUtf8(contentsOf(path))));
    const Track track = parsed(path);
    QCOMPARE(free.length(), track.length());
    QCOMPARE(free.noteCount(), track.noteCount());
    for (int i = 0; i < track.eventCount(); ++i)
        QCOMPARE(free.event(i).time(), track.event(i).time());
}

void tst_DemoSongs::everyPartHasItsTitlesAndAnInstrumentOfTheGame_data()
{
    addPartRows();
}

void tst_DemoSongs::everyPartHasItsTitlesAndAnInstrumentOfTheGame()
{
    QFETCH(QString, path);
    const Track track = parsed(path);
    const QString song = QFileInfo(path).dir().dirName();
    const QString part = QFileInfo(path).completeBaseName().mid(3);
    QCOMPARE(track.headers(QStringLiteral("T")), (QStringList{part, song}));
    QStringList instruments;
    for (const Demo::InstrumentPlan &plan : Demo::gameInstruments())
        instruments << QStringLiteral("instrument ") + plan.name;
    QCOMPARE(track.headers(QStringLiteral("I")).size(), 1);
    QVERIFY(instruments.contains(track.header(QStringLiteral("I"))));
}

void tst_DemoSongs::partsOfASongFitTogether_data()
{
    addSongRows();
}

void tst_DemoSongs::partsOfASongFitTogether()
{
    QFETCH(QString, song);
    const QVector<Track> tracks = tracksOf(song);
    QVERIFY(tracks.size() >= 4);
    for (const Track &track : tracks) {
        QCOMPARE(track.ticksPerMinute(), tracks.first().ticksPerMinute());
        QCOMPARE(track.measureLength(), tracks.first().measureLength());
        QCOMPARE(track.length(), tracks.first().length());
        for (const TrackEvent &event : track.events())
            QVERIFY(event.isNote() && event.duration() > 0);
    }
}

void tst_DemoSongs::songsAreOfTheLengthThatIsMeant_data()
{
    addSongRows();
}

void tst_DemoSongs::songsAreOfTheLengthThatIsMeant()
{
    QFETCH(QString, song);
    const double seconds = tracksOf(song).first().duration();
    QVERIFY2(seconds > 45.0 && seconds < 120.0, qPrintable(QString::number(seconds)));
}

void tst_DemoSongs::writesTheSongsAgain()
{
    const QString path = m_dir.filePath(QStringLiteral("Greensleeves/01 Flute.abc"));
    const QByteArray before = contentsOf(path);
    QVERIFY(QFile::remove(path));
    writeDemoSongs(m_dir.path());
    QCOMPARE(contentsOf(path), before);
}

void tst_DemoSongs::keepsASongThatTheUserChanged()
{
    const QTemporaryDir other;
    writeDemoSongs(other.path());
    QFile file(other.filePath(QStringLiteral("Greensleeves/01 Flute.abc")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("X:1\nK:C\nC");
    file.close();
    writeDemoSongs(other.path());
    QCOMPARE(contentsOf(file.fileName()), QByteArray("X:1\nK:C\nC"));
}

void tst_DemoSongs::writesAMidiFileOfSeveralTracks()
{
    const QByteArray midi = contentsOf(m_dir.filePath(QStringLiteral("The Irish Washerwoman.mid")));
    QCOMPARE(midi.left(14), QByteArray("MThd\0\0\0\6\0\1\0\7\1\xE0", 14));
    // 116 beats of three eighths a minute, 6/8.
    QCOMPARE(midi.mid(14, 31),
             QByteArray("MTrk\0\0\0\x13\0\xFF\x51\x03\x05\x42\xFB\0\xFF\x58\x04\x06\x03\x18\x08\0"
                        "\xFF\x2F\0MTrk",
                        31));
}

void tst_DemoSongs::midiFileHoldsTheNotesOfTheParts()
{
    const QByteArray midi = contentsOf(m_dir.filePath(QStringLiteral("The Irish Washerwoman.mid")));
    std::multiset<int> expected;
    for (const Track &track : tracksOf(QStringLiteral("The Irish Washerwoman")))
        expected.insert(track.noteCount());
    std::multiset<int> found;
    for (int at = midi.indexOf("MTrk", 18 + 19); at >= 0; at = midi.indexOf("MTrk", at + 1)) {
        const int next = midi.indexOf("MTrk", at + 1);
        const QByteArray track = midi.mid(at, next < 0 ? -1 : next - at);
        int starts = 0;
        // A note on of the one velocity used: 0x9n, note, 0x60.
        for (int i = 0; i + 2 < track.size(); ++i) {
            const bool isStart = (track.at(i) & 0xF0) == 0x90 && track.at(i + 2) == 0x60;
            starts += isStart && track.at(i + 1) >= 0 ? 1 : 0;
        }
        found.insert(starts);
    }
    QCOMPARE(found.size(), size_t{6});
    QVERIFY(found == expected);
}

QTEST_GUILESS_MAIN(tst_DemoSongs)
#include "tst_DemoSongs.moc"

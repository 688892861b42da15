#include "MIDI/Transforms.h"

#include "ABC/ABCParser.h"
#include "ABC/KeyTable.h"
#include "TrackSupport.h"
#include "support/MessageCapture.h"

#include <QtTest>

#include <limits>

using namespace TrackSupport;
using namespace Transforms;
using E = TrackEvent;

namespace {

/// A note of each pitch, one behind the other.
Track scale(quint32 lowest, quint32 highest)
{
    Track track;
    for (quint32 pitch = lowest; pitch <= highest; ++pitch)
        track.addEvent(E::makeNote(pitch, quint64{pitch - lowest} * 15120, 15120));
    track.sortEvents();
    return track;
}

QVector<quint32> pitches(const Track &track)
{
    QVector<quint32> result;
    for (const E &event : track.events()) {
        if (event.isNote())
            result << event.note();
    }
    return result;
}

QVector<quint32> range(quint32 lowest, quint32 highest)
{
    return pitches(scale(lowest, highest));
}

/// With every field other than a fresh track's.
Track fullTrack()
{
    Track track;
    track.addHeader("T"_s, "first"_s);
    track.addHeader("T"_s, "second"_s);
    track.addHeader("T"_s, "third"_s);
    track.addHeader("Q"_s, "1/4=90"_s);
    track.addHeader("K"_s, "Eb"_s);
    track.addHeader("L"_s, "1/8"_s);
    track.addHeader("L"_s, "1/16"_s);
    track.setTicksPerMinute(2721600);
    track.setMeasure(90720, 3);
    track.setFileName("/music/a.abc"_s);
    track.addEvent(E::makeKey(0, 10, 0));
    track.addEvent(E::makeNote(60, 0, 30240));
    track.addEvent(E::makeNote(64, 0, 60480));
    track.addEvent(E::makeTempo(30240, 1, 4, 120));
    track.addEvent(E::makeMeter(60480, 3, 4));
    track.addEvent(E::makeUnitLength(60480, 1, 16));
    track.addEvent(E::makeNote(67, 60480, 30240));
    track.sortEvents();
    track.setAbc("as it was written"_s);
    return track;
}

Track randomTrack(Random &random)
{
    Track track;
    quint64 time = 0;
    for (quint32 i = random.below(60); i > 0; --i) {
        if (random.below(8) == 0)
            track.addEvent(E::makeTempo(time, 1, 4, 10 + i));
        else
            track.addEvent(
                E::makeNote(21 + random.below(88), time, quint64{945} * (1 + random.below(64))));
        time += quint64{945} * random.below(40);
    }
    track.sortEvents();
    return track;
}

/// Without those that would not survive being moved by `semitones`.
Track playableAfter(const Track &track, int semitones)
{
    Track result;
    for (const E &event : track.events()) {
        const int pitch = static_cast<int>(event.note()) + semitones;
        if (!event.isNote() || (pitch >= 21 && pitch <= 108))
            result.addEvent(event);
    }
    result.sortEvents();
    return result;
}

QStringList allKeys()
{
    QStringList keys;
    for (quint32 mode = 0; mode < KeyTable::ModeCount; ++mode) {
        for (quint32 row = 0; row < KeyTable::RowCount; ++row)
            keys << KeyTable::displayName(row, mode);
    }
    return keys;
}

/// The keys with which `track` has other notes when its text is read again.
QString keysThatChangeNotes(const Track &track, const QStringList &keys)
{
    const MessageCapture capture;
    QStringList changing;
    for (const QString &key : keys) {
        if (notes(reread(withKey(track, key))) != notes(track))
            changing << key;
    }
    return changing.join(QLatin1Char(' '));
}

} // namespace

class TestTransforms : public QObject {
    Q_OBJECT

private slots:
    void transposesAndDropsWhatLeavesThePiano_data()
    {
        QTest::addColumn<int>("semitones");
        QTest::addColumn<QVector<quint32>>("expected");
        QTest::newRow("0") << 0 << range(21, 108);
        QTest::newRow("+1 drops 108") << 1 << range(22, 108);
        QTest::newRow("-1 drops 21") << -1 << range(21, 107);
        QTest::newRow("-48 drops all below 69") << -48 << range(21, 60);
        QTest::newRow("+48") << 48 << range(69, 108);
        QTest::newRow("+87 keeps 21") << 87 << QVector<quint32>{108};
        QTest::newRow("-87 keeps 108") << -87 << QVector<quint32>{21};
        QTest::newRow("+88") << 88 << QVector<quint32>{};
        QTest::newRow("-88") << -88 << QVector<quint32>{};
        QTest::newRow("least") << std::numeric_limits<int>::min() << QVector<quint32>{};
        QTest::newRow("greatest") << std::numeric_limits<int>::max() << QVector<quint32>{};
    }
    void transposesAndDropsWhatLeavesThePiano()
    {
        QFETCH(int, semitones);
        QFETCH(QVector<quint32>, expected);
        const Track track = transposeTrack(scale(21, 108), semitones);
        QCOMPARE(pitches(track), expected);
        QCOMPARE(track.noteCount(), expected.size());
        QCOMPARE(track.eventCount(), expected.size());
    }
    void transposesEveryPitchByEveryInterval()
    {
        for (int pitch = 0; pitch < 256; ++pitch) {
            const Track track = sortedTrackOf({E::makeNote(static_cast<quint32>(pitch), 5, 7)});
            for (int semitones = -300; semitones <= 300; ++semitones) {
                const int moved = pitch + semitones;
                const QString expected =
                    moved < 21 || moved > 108 ? QString() : QStringLiteral("%1@5+7").arg(moved);
                QCOMPARE(notes(transposeTrack(track, semitones)), expected);
            }
        }
        const Track absurd = sortedTrackOf({E::makeNote(4294967295U, 0, 1)});
        QCOMPARE(notes(transposeTrack(absurd, 61)), QString());
        QCOMPARE(notes(transposeTrack(absurd, -2147483647)), QString());
    }
    void transposesWithTheTimesAsTheyWere()
    {
        QCOMPARE(notes(transposeTrack(fullTrack(), 3)), "63@0+30240 67@0+60480 70@60480+30240"_s);
    }
    void transposesByNothingIntoTheSameEventsSorted()
    {
        const Track track = trackOf({E::makeNote(62, 30240, 10), E::makeNote(60, 0, 20),
                                     E::makeNote(61, 0, 10), E::makeKey(0, 8, 0)});
        Track sorted = track;
        sorted.sortEvents();
        QVERIFY(transposeTrack(track, 0) == sorted);
    }
    void transposesIntoAFreshTrackWithTheFields()
    {
        Track track = transposeTrack(fullTrack(), 1);
        QCOMPARE(track.ticksPerMinute(), quint64{3628800});
        QCOMPARE(track.measureLength(), 120960U);
        QCOMPARE(track.beatsPerMeasure(), 4U);
        QCOMPARE(track.fileName(), QString());
        QCOMPARE(track.length(), quint64{90720});
        QCOMPARE(track.noteCount(), 3);
        QCOMPARE(track.allHeaders(), fullTrack().allHeaders());
        QCOMPARE(track.headers("T"_s), QStringList({"third"_s, "second"_s, "first"_s}));
        QCOMPARE(track.headers("L"_s), QStringList({"1/16"_s, "1/8"_s}));
        QVERIFY(track.abc().startsWith("X: 1\nT: third\n"_s));
    }
    void leavesTheTrackThatItTransposes()
    {
        const Track track = fullTrack();
        transposeTrack(track, 12);
        octaveUp(track);
        withKey(track, "D"_s);
        QVERIFY(track == fullTrack());
    }
    void keepsATempoThatOnlyAFreshTrackWouldHave()
    {
        // 120, which a fresh track has, after the 90 of the fields.
        QVERIFY(transposeTrack(fullTrack(), 1).events().contains(E::makeTempo(30240, 1, 4, 120)));
        QCOMPARE(reread(transposeTrack(fullTrack(), 1)).ticksPerMinute(), quint64{2721600});
        QVERIFY(reread(transposeTrack(fullTrack(), 1))
                    .events()
                    .contains(E::makeTempo(30240, 1, 4, 120)));
    }
    void dropsATempoThatTheTrackHasAlready()
    {
        Track track = trackOf({E::makeTempo(0, 1, 4, 90), E::makeNote(60, 0, 5)});
        track.setTicksPerMinute(2721600);
        QCOMPARE(transposeTrack(track, 0).events(), QVector<E>({E::makeNote(60, 0, 5)}));
    }
    void keepsOtherEventsWhateverTheInterval()
    {
        const QVector<E> events{E::makeKey(0, 8, 0), E::makeMeter(0, 3, 4),
                                E::makeUnitLength(0, 1, 8), E::makeTempo(0, 1, 8, 77)};
        for (const int semitones : {-48, 0, 48, 1000}) {
            QCOMPARE(transposeTrack(sortedTrackOf(events), semitones).events(), events);
        }
        QCOMPARE(octaveUp(sortedTrackOf(events)).events(), events);
        QCOMPARE(octaveDown(sortedTrackOf(events)).events(), events);
    }
    void transposesThereAndBackWhereNothingLeavesThePiano()
    {
        Random random(1);
        for (int i = 0; i < 500; ++i) {
            const int semitones = static_cast<int>(random.below(97)) - 48;
            const Track track = playableAfter(randomTrack(random), semitones);
            QVERIFY(transposeTrack(transposeTrack(track, semitones), -semitones) == track);
        }
    }

    void movesEveryPitchByAnOctaveWithinItsWindow()
    {
        for (quint32 pitch = 0; pitch < 256; ++pitch) {
            const Track track = sortedTrackOf({E::makeNote(pitch, 5, 7)});
            const bool goesUp = pitch >= 9 && pitch <= 96;
            const bool goesDown = pitch >= 33 && pitch <= 120;
            QCOMPARE(octaveUp(track).events(),
                     QVector<E>({E::makeNote(goesUp ? pitch + 12 : pitch, 5, 7)}));
            QCOMPARE(octaveDown(track).events(),
                     QVector<E>({E::makeNote(goesDown ? pitch - 12 : pitch, 5, 7)}));
        }
    }
    void keepsThePianoByTheOctave()
    {
        QVector<quint32> up = range(33, 108) + range(97, 108);
        QVector<quint32> down = range(21, 32) + range(21, 96);
        QCOMPARE(pitches(octaveUp(scale(21, 108))), up);
        QCOMPARE(pitches(octaveDown(scale(21, 108))), down);
        QVERIFY(octaveDown(octaveUp(scale(21, 96))) == scale(21, 96));
    }
    void copiesTempoAndFieldsByTheOctave()
    {
        const Track full = fullTrack();
        for (Track track : {octaveUp(full), octaveDown(full)}) {
            QCOMPARE(track.ticksPerMinute(), quint64{2721600});
            QCOMPARE(track.allHeaders(), full.allHeaders());
            QCOMPARE(track.measureLength(), 120960U);
            QCOMPARE(track.beatsPerMeasure(), 4U);
            QCOMPARE(track.fileName(), QString());
            QCOMPARE(track.length(), quint64{90720});
            QCOMPARE(track.noteCount(), 3);
            QCOMPARE(track.eventCount(), full.eventCount());
            QVERIFY(track.events().contains(E::makeTempo(30240, 1, 4, 120)));
            QVERIFY(track.abc().startsWith("X: 1\nT: third\n"_s));
        }
        QCOMPARE(notes(octaveUp(full)), "72@0+30240 76@0+60480 79@60480+30240"_s);
        QCOMPARE(notes(octaveDown(full)), "48@0+30240 52@0+60480 55@60480+30240"_s);
    }
    void sortsByTheOctave()
    {
        const Track track = trackOf({E::makeNote(60, 10, 1), E::makeNote(62, 0, 1)});
        QCOMPARE(notes(octaveUp(track)), "74@0+1 72@10+1"_s);
    }

    void setsTheUnitLength()
    {
        Track expected = fullTrack();
        expected.setHeader("L"_s, "1/64"_s);
        expected.setAbc(QString());
        QVERIFY(withUnitLength(fullTrack(), "1/64"_s) == expected);
        QCOMPARE(withUnitLength(fullTrack(), "1/64"_s).headers("L"_s), QStringList({"1/64"_s}));
        Track track = withUnitLength(scale(60, 62), "1/64"_s);
        QCOMPARE(track.abc(),
                 "X: 1\nT: Untitled\nZ: ABC Generated by Quillmoor Composer\n"
                 "L: 1/64\nK: C\nC8 ^C8 D8 \n"_s);
    }
    void setsTheKey()
    {
        Track expected = fullTrack();
        expected.setHeader("K"_s, "Ebm"_s);
        expected.setAbc(QString());
        QVERIFY(withKey(fullTrack(), "Ebm"_s) == expected);
        Track track = withKey(scale(60, 62), "Db"_s);
        QCOMPARE(track.abc(),
                 "X: 1\nT: Untitled\nZ: ABC Generated by Quillmoor Composer\n"
                 "L: 1/4\nK: Db\nC/ D/ =D/ \n"_s);
    }

    void rereadsFieldsIntoTempoAndMeasure()
    {
        Track track = scale(60, 61);
        track.setHeader("Q"_s, "1/4=90"_s);
        track.setHeader("M"_s, "3/4"_s);
        track.setFileName("/music/a.abc"_s);
        Track result = reread(track);
        QCOMPARE(result.ticksPerMinute(), quint64{2721600});
        QCOMPARE(result.measureLength(), 90720U);
        QCOMPARE(result.beatsPerMeasure(), 3U);
        QCOMPARE(result.length(), quint64{30240});
        QCOMPARE(result.fileName(), "/music/a.abc"_s);
        QCOMPARE(notes(result), notes(track));
        QCOMPARE(result.abc(), track.abc());
        Track parsed = ABCParser().parse(track.abc());
        parsed.setFileName("/music/a.abc"_s);
        QVERIFY(result == parsed);
    }
    void rereadsTheNotesAndNotTheStoredText()
    {
        Track track = scale(60, 61);
        track.setAbc("K:C\nG"_s);
        QCOMPARE(notes(reread(track)), "60@0+15120 61@15120+15120"_s);
    }
    void rereadsWhatItHasReadIntoTheSameNotesAndFields()
    {
        Random random(7);
        for (int i = 0; i < 100; ++i) {
            const Track once = reread(randomTrack(random));
            const Track twice = reread(once);
            QCOMPARE(twice.events(), once.events());
            QCOMPARE(twice.allHeaders(), once.allHeaders());
            QVERIFY(reread(twice) == twice);
        }
    }

    void keepsNotesInEveryUnitLength()
    {
        Random random(8);
        for (int i = 0; i < 50; ++i) {
            const Track track = randomTrack(random);
            for (const QString &unit : {"1/16"_s, "1/32"_s, "1/64"_s, "1/128"_s, "1/4"_s})
                QCOMPARE(notes(reread(withUnitLength(track, unit))), notes(track));
        }
    }
    void keepsNotesInEveryKeyButTheMixolydian()
    {
        // The generator takes "mix" for minor and spells accordingly; the parser does not.
        const QString mixolydian = "G#mix C#mix F#mix Bmix Emix Amix Dmix Gmix Cmix Fmix Bbmix "
                                   "Ebmix Abmix Dbmix Gbmix"_s;
        QCOMPARE(allKeys().size(), 105);
        QCOMPARE(keysThatChangeNotes(scale(21, 108), allKeys()), mixolydian);
    }
    void keepsNotesInNoMajorKeyThatIsSpelledOut()
    {
        QStringList keys;
        for (quint32 row = 0; row < KeyTable::RowCount; ++row)
            keys << KeyTable::displayTonic(row, KeyTable::Major) + "maj"_s;
        QCOMPARE(keysThatChangeNotes(scale(21, 108), keys), keys.join(QLatin1Char(' ')));
    }
};

QTEST_APPLESS_MAIN(TestTransforms)
#include "tst_Transforms.moc"

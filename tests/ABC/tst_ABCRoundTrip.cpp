#include "ABC/ABCGenerator.h"
#include "ABC/ABCParser.h"

#include "AbcTestSupport.h"

#include "support/Sanitizer.h"

#include <QtTest>

using namespace AbcTest;

namespace {

const quint32 Dens[] = {1, 2, 3, 4, 5, 7, 8, 16, 64, 128};

/// A duration that people write, or any.
quint64 randomTicks(Random &random)
{
    switch (random.below(8)) {
    case 0:
        return random.below(400000);
    case 1:
        return random.below(4);
    default:
        return quint64{1 + random.below(12)} * 120960 / Dens[random.below(10)] / 4;
    }
}

void addControl(Track &track, quint64 time, Random &random)
{
    switch (random.below(4)) {
    case 0:
        return track.addEvent(TrackEvent::makeKey(time, random.below(15), random.below(7)));
    case 1:
        return track.addEvent(
            TrackEvent::makeUnitLength(time, 1 + random.below(3), Dens[random.below(10)]));
    case 2:
        return track.addEvent(
            TrackEvent::makeMeter(time, random.below(13), Dens[random.below(10)]));
    default:
        return track.addEvent(
            TrackEvent::makeTempo(time, 1, 1 + random.below(8), 1 + random.below(300)));
    }
}

QString randomKey(Random &random)
{
    static const QStringList keys{"C"_s,  "G"_s,  "Bb"_s,    "F#"_s,   "C#"_s,   "Cb"_s,
                                  "Am"_s, "Gm"_s, "D dor"_s, "Ephr"_s, "Bloc"_s, "Flyd"_s};
    return keys.at(static_cast<int>(random.below(12)));
}

/// Overlapping notes of any length in any key, with changes in between.
Track randomTrack(quint32 seed)
{
    Random random(seed);
    Track track;
    track.setHeader("K"_s, randomKey(random));
    track.setHeader("L"_s, QStringLiteral("1/%1").arg(Dens[random.below(10)]));
    track.setHeader("Q"_s, "1/4=120"_s);
    quint64 time = 0;
    const quint32 count = random.below(60);
    for (quint32 i = 0; i < count; ++i) {
        if (random.below(8) == 0)
            addControl(track, time, random);
        else
            track.addEvent(TrackEvent::makeNote(21 + random.below(88), time, randomTicks(random)));
        if (random.below(3) != 0)
            time += randomTicks(random);
    }
    track.sortEvents();
    return track;
}

/// A meter without a measure is written as it is and read as none.
QString comparableControls(const Track &track)
{
    static const QRegularExpression noMeter("(M@\\d+) 0/\\d+"_s);
    return controls(track).replace(noMeter, "\\1 0/0"_s);
}

} // namespace

class TestABCRoundTrip : public QObject {
    Q_OBJECT

private slots:
    void keepsTheEventsOfAnyTrack()
    {
        for (quint32 seed = 0; seed < 3000 / SanitizerFactor; ++seed) {
            const Track track = randomTrack(seed);
            const QString text = generate(track);
            const Track again = parse(text);
            QVERIFY2(notes(again) == notes(track), qPrintable(text));
            QVERIFY2(comparableControls(again) == comparableControls(track), qPrintable(text));
        }
    }
    void writesTheSameTextAgain()
    {
        for (quint32 seed = 3000; seed < 3000 + 1000 / SanitizerFactor; ++seed) {
            const QString first = generate(parse(generate(randomTrack(seed))));
            QCOMPARE(generate(parse(first)), first);
        }
    }
    void keepsEveryPitchInEveryKey()
    {
        for (quint32 row = 0; row < 15; ++row) {
            Track track;
            track.addEvent(TrackEvent::makeKey(0, row, 0));
            for (quint32 i = 0; i < 88 * 3; ++i)
                track.addEvent(TrackEvent::makeNote(21 + i * 31 % 88, quint64{i} * 30240, 30240));
            track.sortEvents();
            QCOMPARE(notes(parse(generate(track))), notes(track));
        }
    }
    void keepsEveryDuration()
    {
        for (const quint32 den : {1U, 3U, 4U, 7U, 11U, 120960U}) {
            Track track;
            track.setHeader("L"_s, QStringLiteral("1/%1").arg(den));
            for (quint32 ticks = 0; ticks < 3000; ++ticks)
                track.addEvent(
                    TrackEvent::makeNote(60, quint64{ticks} * 200000, quint64{ticks} * 61));
            track.sortEvents();
            QCOMPARE(notes(parse(generate(track))), notes(track));
        }
    }
};

QTEST_APPLESS_MAIN(TestABCRoundTrip)
#include "tst_ABCRoundTrip.moc"

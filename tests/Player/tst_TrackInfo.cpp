#include "Player/TrackInfo.h"

#include <QtTest>

#include <limits>

namespace {

constexpr quint64 Largest = std::numeric_limits<quint64>::max();

/// A quarter note (30240 ticks) lasts 24000 frames at 48 kHz.
TrackInfo atDefaultTempo(quint64 originDsp = 0, quint64 originTick = 0)
{
    TrackInfo info;
    info.originDsp = originDsp;
    info.originTick = originTick;
    return info;
}

TrackInfo atTempo(quint64 ticksPerMinute)
{
    TrackInfo info;
    info.ticksPerMinute = ticksPerMinute;
    return info;
}

} // namespace

class tst_TrackInfo : public QObject {
    Q_OBJECT

private slots:
    void startsWithTheDefaults();
    void convertsTicksToFrames_data();
    void convertsTicksToFrames();
    void convertsFramesToTicks_data();
    void convertsFramesToTicks();
    void countsFromTheOrigin();
    void placesTicksBeforeTheOrigin();
    void answersTick0BeforeTheTracksBeginning();
    void takesTempo0ForTheDefaultTempo();
    void standsStillWithoutARate();
    void staysWithin64Bits();
    void movesTheOriginAtATempo();
    void keepsTheOriginAtATempoBeforeIt();
    void ignoresAnEventOfTempo0();
    void endsWhenTheLastNoteHasFaded();
    void isScheduledBehindTheLastEvent();
};

void tst_TrackInfo::startsWithTheDefaults()
{
    const TrackInfo info;
    QCOMPARE(info.originDsp, quint64(0));
    QCOMPARE(info.originTick, quint64(0));
    QCOMPARE(info.nextEvent, quint32(0));
    QCOMPARE(info.ticksPerMinute, quint64(3628800));
    QVERIFY(!info.channelGroup);
    QVERIFY(!info.muted);
}

void tst_TrackInfo::convertsTicksToFrames_data()
{
    QTest::addColumn<quint64>("ticksPerMinute");
    QTest::addColumn<int>("rate");
    QTest::addColumn<quint64>("tick");
    QTest::addColumn<quint64>("frame");

    QTest::newRow("beginning") << quint64(3628800) << 48000 << quint64(0) << quint64(0);
    QTest::newRow("quarter at 120")
        << quint64(3628800) << 48000 << quint64(30240) << quint64(24000);
    QTest::newRow("whole at 120") << quint64(3628800) << 48000 << quint64(120960) << quint64(96000);
    QTest::newRow("0.79 is cut off") << quint64(3628800) << 48000 << quint64(1) << quint64(0);
    QTest::newRow("1.59 is cut off") << quint64(3628800) << 48000 << quint64(2) << quint64(1);
    QTest::newRow("79.37 is cut off") << quint64(3628800) << 48000 << quint64(100) << quint64(79);
    QTest::newRow("quarter at 240")
        << quint64(7257600) << 48000 << quint64(30240) << quint64(12000);
    QTest::newRow("quarter at 90") << quint64(2721600) << 48000 << quint64(30240) << quint64(32000);
    QTest::newRow("44.1 kHz") << quint64(3628800) << 44100 << quint64(30240) << quint64(22050);
    QTest::newRow("1 tick a minute") << quint64(1) << 48000 << quint64(2) << quint64(5760000);
}

void tst_TrackInfo::convertsTicksToFrames()
{
    QFETCH(quint64, ticksPerMinute);
    QFETCH(int, rate);
    QFETCH(quint64, tick);
    QTEST(atTempo(ticksPerMinute).dspOfTick(tick, rate), "frame");
}

void tst_TrackInfo::convertsFramesToTicks_data()
{
    QTest::addColumn<quint64>("ticksPerMinute");
    QTest::addColumn<quint64>("frame");
    QTest::addColumn<quint64>("tick");

    QTest::newRow("beginning") << quint64(3628800) << quint64(0) << quint64(0);
    QTest::newRow("1.26 is cut off") << quint64(3628800) << quint64(1) << quint64(1);
    QTest::newRow("look-ahead") << quint64(3628800) << quint64(4800) << quint64(6048);
    QTest::newRow("one frame short") << quint64(3628800) << quint64(23999) << quint64(30238);
    QTest::newRow("quarter") << quint64(3628800) << quint64(24000) << quint64(30240);
    QTest::newRow("1 tick a minute") << quint64(1) << quint64(2879999) << quint64(0);
}

void tst_TrackInfo::convertsFramesToTicks()
{
    QFETCH(quint64, ticksPerMinute);
    QFETCH(quint64, frame);
    QTEST(atTempo(ticksPerMinute).tickOfDsp(frame, 48000), "tick");
}

void tst_TrackInfo::countsFromTheOrigin()
{
    const TrackInfo info = atDefaultTempo(1000, 30240);
    QCOMPARE(info.dspOfTick(60480, 48000), quint64(25000));
    QCOMPARE(info.tickOfDsp(25000, 48000), quint64(60480));
}

void tst_TrackInfo::placesTicksBeforeTheOrigin()
{
    const TrackInfo info = atDefaultTempo(30000, 60480);
    QCOMPARE(info.dspOfTick(30240, 48000), quint64(6000));
    QCOMPARE(info.tickOfDsp(6000, 48000), quint64(30240));
    QCOMPARE(atDefaultTempo(30000, 120960).dspOfTick(0, 48000), quint64(0));
}

void tst_TrackInfo::answersTick0BeforeTheTracksBeginning()
{
    QCOMPARE(atDefaultTempo(4800).tickOfDsp(0, 48000), quint64(0));
    QCOMPARE(atDefaultTempo(4800).tickOfDsp(4799, 48000), quint64(0));
}

void tst_TrackInfo::takesTempo0ForTheDefaultTempo()
{
    QCOMPARE(atTempo(0).dspOfTick(30240, 48000), quint64(24000));
    QCOMPARE(atTempo(0).tickOfDsp(24000, 48000), quint64(30240));
}

void tst_TrackInfo::standsStillWithoutARate()
{
    const TrackInfo info = atDefaultTempo(1000, 500);
    QCOMPARE(info.tickOfDsp(99999, 0), quint64(500));
    QCOMPARE(info.tickOfDsp(99999, -48000), quint64(500));
    QCOMPARE(info.dspOfTick(99999, 0), quint64(1000));
}

void tst_TrackInfo::staysWithin64Bits()
{
    QCOMPARE(atTempo(1).dspOfTick(Largest, 48000), Largest);
    QCOMPARE(atTempo(Largest).tickOfDsp(Largest, 1), Largest);
    QCOMPARE(atDefaultTempo(Largest, 0).dspOfTick(1, 48000), Largest);
    QCOMPARE(atDefaultTempo(Largest, 0).tickOfDsp(0, 48000), quint64(0));
    QCOMPARE(atDefaultTempo(0, Largest).dspOfTick(0, 48000), quint64(0));
}

void tst_TrackInfo::movesTheOriginAtATempo()
{
    TrackInfo info = atDefaultTempo(1000, 0);
    info.passTempo(TrackEvent::makeTempo(30240, 1, 4, 240), 48000);
    QCOMPARE(info.originDsp, quint64(25000));
    QCOMPARE(info.originTick, quint64(30240));
    QCOMPARE(info.ticksPerMinute, quint64(7257600));
    QCOMPARE(info.dspOfTick(60480, 48000), quint64(37000));
}

void tst_TrackInfo::keepsTheOriginAtATempoBeforeIt()
{
    TrackInfo info = atDefaultTempo(1000, 60480);
    info.passTempo(TrackEvent::makeTempo(60479, 1, 4, 240), 48000);
    QCOMPARE(info.originDsp, quint64(1000));
    QCOMPARE(info.originTick, quint64(60480));
    QCOMPARE(info.ticksPerMinute, quint64(7257600));
}

void tst_TrackInfo::ignoresAnEventOfTempo0()
{
    TrackInfo info = atDefaultTempo();
    info.passTempo(TrackEvent::makeTempo(30240, 1, 0, 240), 48000);
    QCOMPARE(info.originTick, quint64(0));
    QCOMPARE(info.ticksPerMinute, quint64(3628800));
}

void tst_TrackInfo::endsWhenTheLastNoteHasFaded()
{
    TrackInfo info = atDefaultTempo(1000, 0);
    QCOMPARE(info.endDsp(48000), quint64(1000));
    info.track.addEvent(TrackEvent::makeNote(60, 0, 60480));
    info.track.addEvent(TrackEvent::makeTempo(30240, 1, 4, 240));
    info.track.addEvent(TrackEvent::makeNote(60, 30240, 30240));
    // The long note began at the old tempo, which it keeps; the short one is over before it.
    QCOMPARE(info.endDsp(48000), quint64(1000 + 48000));
}

void tst_TrackInfo::isScheduledBehindTheLastEvent()
{
    TrackInfo info;
    QVERIFY(info.isScheduled());
    info.track.addEvent(TrackEvent::makeNote(60, 0, 30240));
    QVERIFY(!info.isScheduled());
    info.nextEvent = 1;
    QVERIFY(info.isScheduled());
    info.nextEvent = 2;
    QVERIFY(info.isScheduled());
}

QTEST_APPLESS_MAIN(tst_TrackInfo)
#include "tst_TrackInfo.moc"

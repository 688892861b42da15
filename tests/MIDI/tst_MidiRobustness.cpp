#include "ABC/ABCParser.h"
#include "MIDI/MidiBudget.h"

#include "MidiTestSupport.h"

#include "support/MessageCapture.h"
#include "support/MidiBuilder.h"
#include "support/ResourceWatch.h"
#include "support/Sanitizer.h"
#include "support/Thrown.h"

#include <QRegularExpression>
#include <QtTest>

using namespace MidiTest;
using namespace MidiBuilder;

namespace {

// Those of a track with a title.
constexpr int MostNotes = static_cast<int>(MidiBudget::LargestCount - MidiBudget::EventsPerTitle
                                           - MidiBudget::EventsPerTrack);

const QString TooManyEvents = "The MIDI file has too many events."_s;

/// A file with a bit of everything.
QByteArray smallFile()
{
    const QByteArray first = tempo(0, 400000) + meter(0, 6, 3) + key(0, -3, 1) + channelPrefix(0, 3)
        + instrumentName(0, "Flute") + meta(0, 0x01, "text") + tempo(960, 500000) + meter(0, 3, 2)
        + key(0, 2, 0);
    const QByteArray second = program(0, 3, 73) + bendRange(0, 3, 12) + noteOn(0, 3, 60)
        + "60 40 40 83 60 3C 00"_hex + bend(10, 3, 16383) + noteOff(200, 3, 64)
        + "00 F0 03 01 02 F7 00 A3 3C 40 00 D3 40"_hex + noteOn(0, 15, 70) + noteOn(0, 9, 38)
        + noteOff(1000, 9, 38) + endOfTrack(20);
    return header(1, 2, 96) + chunk(first + endOfTrack()) + chunk(second);
}

bool isSpecified(const QString &message)
{
    static const QRegularExpression messages(
        "^(\\(nothing thrown\\)|Invalid MIDI file\\.|Unsupported MIDI type \\d+\\."
        "|SMTPE time divisions are currently unsupported"
        "|Unknown MIDI (system event 0xf[1-689a-e]|channel event 0x00)\\.)$"_s);
    return messages.match(message).hasMatch();
}

/// The way of a song to its text and back, in both modes.
void importAndRewrite(const QByteArray &bytes)
{
    for (const bool mergeChannels : {true, false}) {
        for (Track track : parse(bytes, {mergeChannels, true, true}))
            ABCParser().parse(track.abc());
    }
}

QByteArray noteOnEachChannel()
{
    QByteArray events;
    for (quint32 channel = 0; channel < 16; ++channel)
        events += noteOn(0, channel, 60) + noteOff(1, channel, 60);
    return events;
}

QByteArray manyNotes(int count)
{
    return "00903C00"_hex + "003C40 013C00"_hex.repeated(count);
}

/// Each bend cuts 88 or, when two of them are bent below the piano, 86 notes, if time passes
/// between them.
QByteArray bendsOfAllKeys(int bends, quint32 delta)
{
    QByteArray events;
    for (quint32 pitch = 21; pitch <= 108; ++pitch)
        events += noteOn(0, 0, pitch);
    for (int i = 0; i < bends; ++i)
        events += bend(delta, 0, i % 2 == 0 ? 0 : 8192);
    return events;
}

/// A chunk that fills a channel with as many sounding pitches as bends allow, and bends them.
QByteArray bendsOfManyPitches(int bends)
{
    QByteArray events = bendRange(0, 0, 255);
    const QByteArray values[] = {"00E00000"_hex, "00E07F7F"_hex, "00E0FFFF"_hex};
    for (int round = 0; round < 9; ++round) {
        for (quint32 key = 0; key < 256; ++key)
            events += noteOn(0, 0, key);
        events += values[round % 3];
    }
    for (int i = 0; i < bends; ++i)
        events += values[i % 2];
    return events;
}

} // namespace

class tst_MidiRobustness : public QObject {
    Q_OBJECT

private slots:
    void everyTruncationIsReadOrRefused()
    {
        MessageCapture log;
        const QByteArray bytes = smallFile();
        QCOMPARE(thrownBy([&] { parse(bytes); }), "(nothing thrown)"_s);
        for (int size = 0; size <= bytes.size(); ++size) {
            const QString message = thrownBy([&] { importAndRewrite(bytes.left(size)); });
            QVERIFY2(isSpecified(message), qPrintable(QString::number(size) + ": "_s + message));
        }
    }
    void everyChangeOfAByteIsReadOrRefused()
    {
        MessageCapture log;
        const QByteArray bytes = smallFile();
        for (int at = 0; at < bytes.size(); ++at) {
            for (int value = at % SanitizerFactor; value < 256; value += SanitizerFactor) {
                QByteArray changed = bytes;
                changed[at] = static_cast<char>(value);
                const QString message = thrownBy([&] { importAndRewrite(changed); });
                QVERIFY2(isSpecified(message),
                         qPrintable("%1 at %2: %3"_s.arg(value).arg(at).arg(message)));
            }
        }
    }

    void endsSoonOnHostileFiles_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("isMergedRefused");
        QTest::addColumn<bool>("isPerChunkRefused");
        const auto row = [](const char *name, const QByteArray &bytes) {
            QTest::newRow(name) << bytes << false << false;
        };
        const auto refused = [](const char *name, const QByteArray &bytes) {
            QTest::newRow(name) << bytes << true << true;
        };
        const auto refusedPerChunk = [](const char *name, const QByteArray &bytes) {
            QTest::newRow(name) << bytes << false << true;
        };
        const QByteArray note = noteOn(0, 0, 60) + noteOff(1, 0, 60);
        const QByteArray changes = tempo(1, 400000) + tempo(1, 500000);
        const QByteArray wait = "8FFFFFFF7F B00000"_hex;

        row("65,535 empty chunks", header(1, 65535, 480) + chunk(endOfTrack()).repeated(65535));
        row("a quantity of a million bytes", file({QByteArray(1000000, '\x80') + note}));
        row("a length of a million bytes",
            file({note + "00FF01"_hex + QByteArray(1000000, '\xFF') + "7F"_hex}));
        row("a system exclusive event beyond the file",
            file({note + "00F0 8FFFFFFF7F"_hex + note}));
        row("a name beyond the file", file({note + "00FF04 8FFFFFFF7F"_hex + note}));
        row("a million notes of running status",
            file({"00903C40"_hex + "013C00 003C40"_hex.repeated(1000000)}));
        row("a million meta events of running status",
            file({note + "00FF0100"_hex + "000100"_hex.repeated(1000000)}));
        row("a wait of four bytes", file({note + "FFFFFF7F"_hex + note.mid(1)}, 1));
        row("waits past the last time", file({note + (wait + note).repeated(100000)}, 1));
        row("changes for silent channels", file({changes.repeated(150000) + note}));
        refused("changes for all channels", file({noteOnEachChannel() + changes.repeated(150000)}));
        refusedPerChunk("changes for thousands of tracks",
                        header(1, 60001, 480) + chunk(changes.repeated(50) + endOfTrack())
                            + chunk(note + endOfTrack()).repeated(60000));
        row("thousands of titles", file({instrumentName(0, "x").repeated(100000) + note}));
        refused("too many titles", file({instrumentName(0, "x").repeated(125001) + note}));
        row("as many notes as there may be", file({manyNotes(MostNotes)}));
        refused("one note more", file({manyNotes(MostNotes + 1)}));
        row("bends that cut as many notes as there may be", file({bendsOfAllKeys(22988, 1)}));
        refused("bends that cut more", file({bendsOfAllKeys(22989, 1)}));
        row("bends that cut nothing", file({bendsOfAllKeys(200000, 0) + note}));
        row("bends of many pitches", file({bendsOfManyPitches(200000 / SanitizerFactor) + note}));
        row("notes that no chunk ends",
            header(1, 20000, 480) + chunk(noteOn(1, 15, 60) + endOfTrack()).repeated(20000));
    }
    void endsSoonOnHostileFiles()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, isMergedRefused);
        QFETCH(bool, isPerChunkRefused);
        MessageCapture log;
        const ResourceWatch watch;
        QCOMPARE(thrownBy([&] { parse(bytes, Merged); }),
                 isMergedRefused ? TooManyEvents : "(nothing thrown)"_s);
        QCOMPARE(thrownBy([&] { parse(bytes, PerChunk); }),
                 isPerChunkRefused ? TooManyEvents : "(nothing thrown)"_s);
        QVERIFY(watch.isWithinLimits());
    }
    void hugeTimesCostNoMoreText()
    {
        const QByteArray note = noteOn(0, 0, 60) + noteOff(1, 0, 60);
        const QByteArray wait = "8FFFFFFF7F B00000"_hex;
        const ResourceWatch watch;
        Track track = parse(file({wait.repeated(1000000) + note}, 1)).first();
        QCOMPARE(notes(track), "60@9007199254740992+30240"_s);
        QVERIFY(track.abc().size() < 2000);
        QCOMPARE(notes(ABCParser().parse(track.abc())), notes(track));
        QVERIFY(watch.isWithinLimits());
    }
};

QTEST_APPLESS_MAIN(tst_MidiRobustness)
#include "tst_MidiRobustness.moc"

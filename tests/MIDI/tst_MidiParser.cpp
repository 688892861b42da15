#include "MidiTestSupport.h"

#include "support/MessageCapture.h"
#include "support/MidiBuilder.h"
#include "support/Thrown.h"

#include <QBuffer>
#include <QtTest>

using namespace MidiTest;
using namespace MidiBuilder;

namespace {

const QString InvalidFile = "Invalid MIDI file."_s;

// One quarter note.
const QByteArray Middle = noteOn(0, 0, 60) + noteOff(480, 0, 60);
const QString MiddleNote = "60@0+30240"_s;

/// The notes on the file's only chunk's first channel with notes.
QString notesOf(const QByteArray &events, quint32 division = 480)
{
    const QList<Track> tracks = parse(file({events}, division));
    return tracks.isEmpty() ? "(no track)"_s : notes(tracks.first());
}

QString thrownByChunk(const QByteArray &events)
{
    return thrownBy([&] { parse(header(0, 1, 480) + chunk(events)); });
}

QString thrownByFile(const QByteArray &bytes)
{
    return thrownBy([&] { parse(bytes); });
}

/// The notes of a chunk that ends with the file.
QString notesOfCutChunk(const QByteArray &events)
{
    const QList<Track> tracks = parse(header(0, 1, 480) + chunk(events));
    return tracks.isEmpty() ? "(no track)"_s : notes(tracks.first());
}

/// A device that fails after a few bytes.
class BrokenDevice : public QIODevice {
public:
    BrokenDevice() { open(ReadOnly | Unbuffered); }

protected:
    qint64 readData(char *data, qint64) override
    {
        if (m_isRead)
            return -1;
        m_isRead = true;
        *data = 'M';
        return 1;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    bool m_isRead = false;
};

} // namespace

class tst_MidiParser : public QObject {
    Q_OBJECT

private slots:
    // The header

    void readsFormats0And1Alike()
    {
        for (const quint32 format : {0U, 1U}) {
            const QList<Track> tracks =
                parse(header(format, 1, 480) + chunk(Middle + endOfTrack()));
            QCOMPARE(songs(tracks), {"Track 1 - Acoustic Grand Piano: 60@0+30240"_s});
        }
    }
    void refusesOtherFormats_data()
    {
        QTest::addColumn<quint32>("format");
        QTest::addColumn<QString>("message");
        QTest::newRow("2") << 2U << "Unsupported MIDI type 2."_s;
        QTest::newRow("3") << 3U << "Unsupported MIDI type 3."_s;
        QTest::newRow("65535") << 65535U << "Unsupported MIDI type 65535."_s;
    }
    void refusesOtherFormats()
    {
        QFETCH(quint32, format);
        QFETCH(QString, message);
        QCOMPARE(thrownByFile(header(format, 0, 480)), message);
    }
    void refusesAnotherMagic_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("three bytes of it") << QByteArray("MTh");
        QTest::newRow("another case") << "MTHd" + header(1, 0, 480).mid(4);
        QTest::newRow("a chunk") << chunk(Middle);
        QTest::newRow("text") << QByteArray("X:1\nT:A\nK:C\nC\n");
    }
    void refusesAnotherMagic()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(thrownByFile(bytes), InvalidFile);
    }
    void doesNotLookAtTheHeadersLength()
    {
        QByteArray bytes = file({Middle});
        bytes.replace(4, 4, word32(0xFFFFFFFF));
        QCOMPARE(notes(parse(bytes).first()), MiddleNote);
    }
    void doesNotSupportALongerHeader()
    {
        QByteArray bytes = file({Middle});
        bytes.replace(4, 4, word32(8)).insert(14, word16(0));
        QCOMPARE(thrownByFile(bytes), InvalidFile);
    }
    void refusesSmpteDivisions_data()
    {
        QTest::addColumn<quint32>("division");
        QTest::newRow("25 frames of 40") << 0xE728U;
        QTest::newRow("the top bit alone") << 0x8000U;
        QTest::newRow("all bits") << 0xFFFFU;
    }
    void refusesSmpteDivisions()
    {
        QFETCH(quint32, division);
        QCOMPARE(thrownByFile(header(1, 0, division)),
                 "SMTPE time divisions are currently unsupported"_s);
    }
    void refusesADivisionOfNothing() { QCOMPARE(thrownByFile(header(1, 0, 0)), InvalidFile); }
    void looksAtTheFormatBeforeTheDivision()
    {
        QCOMPARE(thrownByFile(header(2, 0, 0xE728)), "Unsupported MIDI type 2."_s);
        QCOMPARE(thrownByFile(header(2, 0, 0)), "Unsupported MIDI type 2."_s);
    }
    void cutHeaderReadsAsZeros()
    {
        // Of a word that is cut, nothing is read.
        QCOMPARE(thrownByFile(header(2, 1, 480).left(9)), InvalidFile);
        QCOMPARE(thrownByFile(header(2, 1, 480).left(10)), "Unsupported MIDI type 2."_s);
        QCOMPARE(thrownByFile(header(0, 1, 0xE728).left(13)), InvalidFile);
    }
    void scalesByTheDivision_data()
    {
        QTest::addColumn<quint32>("division");
        QTest::addColumn<QString>("first");
        QTest::newRow("96: 315") << 96U << "60@315+315"_s;
        QTest::newRow("480: 63") << 480U << "60@63+63"_s;
        QTest::newRow("384: 78.75 is rounded") << 384U << "60@79+79"_s;
        QTest::newRow("960: 31.5 goes up") << 960U << "60@32+32"_s;
        QTest::newRow("1") << 1U << "60@30240+30240"_s;
        QTest::newRow("32767: 0.92") << 32767U << "60@1+1"_s;
    }
    void scalesByTheDivision()
    {
        QFETCH(quint32, division);
        QFETCH(QString, first);
        QCOMPARE(notesOf(noteOn(1, 0, 60) + noteOff(1, 0, 60), division), first);
    }

    // The chunks

    void readsAsManyChunksAsTheHeaderSays()
    {
        const QByteArray one = chunk(Middle + endOfTrack());
        const QByteArray other = chunk(noteOn(0, 0, 62) + noteOff(480, 0, 62) + endOfTrack());
        QCOMPARE(notes(parse(header(1, 1, 480) + one + other).first()), MiddleNote);
        QCOMPARE(notes(parse(header(1, 2, 480) + one + other).first()), "60@0+30240 62@0+30240"_s);
        QCOMPARE(thrownByFile(header(1, 3, 480) + one + other), InvalidFile);
        QCOMPARE(parse(header(1, 0, 480) + one).size(), 0);
    }
    void refusesThousandsOfMissingChunks()
    {
        QCOMPARE(thrownByFile(header(1, 65535, 480) + chunk(Middle + endOfTrack())), InvalidFile);
        QCOMPARE(thrownByFile(header(1, 65535, 480)), InvalidFile);
    }
    void refusesChunksOfOtherTypes()
    {
        QCOMPARE(thrownByFile(header(1, 1, 480) + "MTxx" + word32(0) + chunk(Middle)), InvalidFile);
    }
    void chunkThatIsCutInItsMagicIsInvalid()
    {
        QCOMPARE(thrownByFile(header(1, 1, 480) + "MTr"), InvalidFile);
    }
    void doesNotLookAtChunkLengths_data()
    {
        QTest::addColumn<quint32>("length");
        QTest::newRow("0") << 0U;
        QTest::newRow("1") << 1U;
        QTest::newRow("beyond the file") << 0xFFFFFFFFU;
    }
    void doesNotLookAtChunkLengths()
    {
        QFETCH(quint32, length);
        QByteArray bytes = file({Middle, Middle});
        bytes.replace(18, 4, word32(length));
        QCOMPARE(notes(parse(bytes).first()), "60@0+30240 60@0+30240"_s);
    }
    void chunkMayEndWithTheFile()
    {
        QCOMPARE(notesOfCutChunk(Middle), MiddleNote);
        QCOMPARE(parse(header(0, 1, 480) + chunk({})).size(), 0);
        QCOMPARE(parse(header(0, 1, 480) + "MTrk").size(), 0);
        QCOMPARE(parse(header(0, 1, 480) + "MTrk" + "\x01\x02").size(), 0);
    }
    void chunkEndsWithItsEndOfTrack()
    {
        QCOMPARE(notesOfCutChunk(Middle + "00FF2F00"_hex + noteOn(0, 0, 62) + noteOff(480, 0, 62)),
                 MiddleNote);
        // Its data are skipped.
        const QByteArray longEnd = chunk(Middle + meta(0, 0x2F, "abc"));
        QCOMPARE(notes(parse(header(1, 2, 480) + longEnd + longEnd).first()),
                 "60@0+30240 60@0+30240"_s);
    }
    void timeStatusAndPrefixBeginAnewInEachChunk()
    {
        const QByteArray first = channelPrefix(0, 3) + noteOn(100, 3, 60) + noteOff(480, 3, 60);
        const QByteArray second =
            instrumentName(0, "Flute") + noteOn(0, 0, 64) + noteOff(480, 0, 64);
        const QList<Track> tracks = parse(file({first, second}));
        QCOMPARE(songs(tracks),
                 QStringList({"Track 1 - Acoustic Grand Piano: 64@0+30240"_s,
                              "Track 4 - Acoustic Grand Piano: 60@6300+30240"_s}));
        QCOMPARE(tracks.at(0).headers("T"_s).size(), 2);
        QCOMPARE(tracks.at(1).headers("T"_s).size(), 1);
        QCOMPARE(
            thrownByFile(header(1, 2, 480) + chunk(Middle + endOfTrack()) + chunk("003C40"_hex)),
            "Unknown MIDI channel event 0x00."_s);
    }

    // Quantities

    void readsQuantitiesOfAnyLength_data()
    {
        QTest::addColumn<QByteArray>("delta");
        QTest::addColumn<quint64>("time");
        const auto row = [](const char *hex, quint64 time) {
            QTest::newRow(hex) << QByteArray::fromHex(hex) << time * 63;
        };
        row("00", 0);
        row("7F", 0x7F);
        row("8100", 0x80);
        row("FF7F", 0x3FFF);
        row("818000", 0x4000);
        row("FFFFFF7F", 0x0FFFFFFF);
        row("8FFFFFFF7F", 0xFFFFFFFF);
        row("808000", 0);
        // Bits above the 32nd are lost.
        row("9080808005", 5);
        row("FFFFFFFFFFFF7F", 0xFFFFFFFF);
    }
    void readsQuantitiesOfAnyLength()
    {
        QFETCH(QByteArray, delta);
        QFETCH(quint64, time);
        QCOMPARE(notesOf(delta + "903C40"_hex + noteOff(480, 0, 60)), "60@%1+30240"_s.arg(time));
    }
    void readsAQuantityOfAMillionBytes()
    {
        QCOMPARE(notesOf(QByteArray(1000000, '\x80') + "05903C40"_hex + noteOff(480, 0, 60)),
                 "60@315+30240"_s);
        QCOMPARE(parse(header(0, 1, 480) + chunk(QByteArray(1000000, '\xFF'))).size(), 0);
    }

    // Running status

    void dataWithoutAStatusRepeatTheLast()
    {
        QCOMPARE(notesOf("00903C40 83603C00 003E40 83603E00"_hex), "60@0+30240 62@30240+30240"_s);
        // Of another channel too.
        QCOMPARE(songs(parse(file({"00923C40 83603C00"_hex}))),
                 {"Track 3 - Acoustic Grand Piano: 60@0+30240"_s});
    }
    void metaEventsAreARunningStatus()
    {
        // 01 is a text, 51 a tempo: neither is a key.
        QCOMPARE(notesOf(Middle + "00FF0100 000100 005103 07A120"_hex), MiddleNote);
        QCOMPARE(parse(file({"00FF0100 005103 061A80"_hex + Middle})).first().header("Q"_s),
                 "1/4=150"_s);
        QCOMPARE(notesOf("00903C40 00FF0100 003C00 8360803C00"_hex), MiddleNote);
    }
    void metaEventThatRepeatsMayEndTheTrack()
    {
        QCOMPARE(notesOfCutChunk(Middle + "00FF0100 002F00"_hex + noteOn(0, 0, 62)
                                 + noteOff(480, 0, 62)),
                 MiddleNote);
    }
    void systemExclusiveEventsAreARunningStatus()
    {
        // 03 is a length.
        QCOMPARE(notesOf("00F000 0003903C40"_hex + Middle), MiddleNote);
        QCOMPARE(notesOf("00F700 0003903C40"_hex + Middle), MiddleNote);
    }
    void dataBeforeAnyStatusAreRefused()
    {
        QCOMPARE(thrownByChunk("003C40"_hex), "Unknown MIDI channel event 0x00."_s);
        QCOMPARE(thrownByChunk("007F"_hex), "Unknown MIDI channel event 0x00."_s);
    }

    // System and channel events

    void refusesOtherSystemEvents_data()
    {
        QTest::addColumn<int>("status");
        for (int status = 0xF1; status <= 0xFE; ++status) {
            if (status != 0xF7)
                QTest::newRow(qPrintable(QString::number(status, 16))) << status;
        }
    }
    void refusesOtherSystemEvents()
    {
        QFETCH(int, status);
        QCOMPARE(thrownByChunk(Middle + '\0' + static_cast<char>(status)),
                 "Unknown MIDI system event 0x%1."_s.arg(QString::number(status, 16)));
    }
    void skipsSystemExclusiveEvents()
    {
        QCOMPARE(notesOf("00F0 05 7E7F0901F7"_hex + Middle), MiddleNote);
        QCOMPARE(notesOf("00F7 03 903C40"_hex + Middle), MiddleNote);
        QCOMPARE(notesOf("00F0 8148"_hex + QByteArray(200, '\xFF') + Middle), MiddleNote);
    }
    void skipsPressures()
    {
        QCOMPARE(notesOf("00A03C40 00D040"_hex + Middle), MiddleNote);
        // With running status.
        QCOMPARE(notesOf("00A03C40 003C40 00D040 0040"_hex + Middle), MiddleNote);
    }
    void skipsOtherControllers()
    {
        QByteArray events;
        for (quint32 controller = 0; controller < 128; ++controller)
            events += control(0, 0, controller, 5);
        QCOMPARE(notesOf(events + Middle), MiddleNote);
    }
    void skipsOtherMetaEvents_data()
    {
        QTest::addColumn<int>("type");
        for (int type = 0; type <= 0xFF; ++type) {
            if (type != 0x2F)
                QTest::newRow(qPrintable(QString::number(type, 16))) << type;
        }
    }
    void skipsOtherMetaEvents()
    {
        QFETCH(int, type);
        // Seven bytes are none of those that have a fixed length.
        const QByteArray event =
            meta(0, static_cast<quint32>(type), "\x90\x3C\x40\x01\x02\x03\x04");
        const Track track = parse(file({event + Middle})).first();
        QCOMPARE(notes(track), MiddleNote);
        QCOMPARE(track.headers("T"_s).size(), type == 0x04 ? 2 : 1);
        QCOMPARE(track.allHeaders().uniqueKeys(), QStringList({"Q"_s, "T"_s}));
        QCOMPARE(track.header("Q"_s), "1/4=120"_s);
    }
    void sequenceNameIsNoTitle()
    {
        QCOMPARE(parse(file({meta(0, 0x03, "Song") + Middle})).first().headers("T"_s),
                 {"Track 1 - Acoustic Grand Piano"_s});
    }
    void skipsMetaEventsOfAnotherLength_data()
    {
        QTest::addColumn<QByteArray>("event");
        QTest::newRow("a tempo of 4") << meta(0, 0x51, "07A12000"_hex);
        QTest::newRow("a tempo of 2") << meta(0, 0x51, "07A1"_hex);
        QTest::newRow("a tempo of 0") << meta(0, 0x51, {});
        QTest::newRow("a meter of 3") << meta(0, 0x58, "030218"_hex);
        QTest::newRow("a meter of 5") << meta(0, 0x58, "0302180800"_hex);
        QTest::newRow("a key of 1") << meta(0, 0x59, "FD"_hex);
        QTest::newRow("a key of 3") << meta(0, 0x59, "FD0100"_hex);
    }
    void skipsMetaEventsOfAnotherLength()
    {
        QFETCH(QByteArray, event);
        const Track track = parse(file({event + Middle})).first();
        QCOMPARE(events(track), MiddleNote);
        QCOMPARE(track.allHeaders().uniqueKeys(), QStringList({"Q"_s, "T"_s}));
        QCOMPARE(track.header("Q"_s), "1/4=120"_s);
    }
    void skipsPrefixesOfAnotherLength()
    {
        const QByteArray title = instrumentName(0, "Flute");
        for (const QByteArray &prefix : {"0001"_hex, QByteArray()}) {
            const Track track = parse(file({meta(0, 0x20, "\x01") + meta(0, 0x20, prefix) + title
                                            + noteOn(0, 1, 60) + noteOff(480, 1, 60)}))
                                    .first();
            QCOMPARE(track.headers("T"_s),
                     QStringList({"Track 2 - Acoustic Grand Piano"_s, "Flute"_s}));
        }
    }
    void lengthsMayReachBeyondTheFile_data()
    {
        QTest::addColumn<QByteArray>("event");
        QTest::newRow("system exclusive") << "00F0 8FFFFFFF7F 01"_hex;
        QTest::newRow("text") << "00FF01 8FFFFFFF7F 01"_hex;
        QTest::newRow("tempo") << "00FF51 8FFFFFFF7F 07"_hex;
        QTest::newRow("end of track") << "00FF2F 8FFFFFFF7F 07"_hex;
        QTest::newRow("end of track at the file's end") << "00FF2F 8FFFFFFF7F"_hex;
    }
    void lengthsMayReachBeyondTheFile()
    {
        QFETCH(QByteArray, event);
        QCOMPARE(notesOfCutChunk(Middle + event), MiddleNote);
    }
    void nameMayReachBeyondTheFile()
    {
        const QList<Track> tracks =
            parse(header(0, 1, 480) + chunk(Middle + "00FF04 8FFFFFFF7F"_hex + "Flute"));
        QCOMPARE(tracks.first().headers("T"_s),
                 QStringList({"Track 1 - Acoustic Grand Piano"_s, "Flute"_s}));
    }

    // Files that are cut short

    void cutEventGoesOnWithZeros()
    {
        // The velocity: the note ends.
        QCOMPARE(notesOfCutChunk("00903C40 8360903C"_hex), MiddleNote);
        // Key and velocity: key 0 ends.
        QCOMPARE(notesOfCutChunk(Middle + "00903E40 836090"_hex), MiddleNote);
        // The program.
        QCOMPARE(songs(parse(header(0, 1, 480) + chunk("00C028"_hex + Middle + "00C0"_hex))),
                 {"Track 1 - Acoustic Grand Piano: 60@0+30240"_s});
        // The tempo's lower bytes: 0x070000 is 130 beats per minute.
        QCOMPARE(parse(header(0, 2, 480) + chunk(Middle + endOfTrack()) + chunk("00FF5103 07"_hex))
                     .first()
                     .header("Q"_s),
                 "1/4=130"_s);
        // A whole tempo is ignored, being 0, and so is a meta event without type and length.
        QCOMPARE(notesOfCutChunk(Middle + "00FF5103"_hex), MiddleNote);
        QCOMPARE(notesOfCutChunk(Middle + "00FF"_hex), MiddleNote);
    }
    void cutDeltaGoesOnWithZeros()
    {
        // 0x83 0x00, and then a Note Off of key 0.
        QCOMPARE(notesOfCutChunk(Middle + "83"_hex), MiddleNote);
    }
    void runningStatusGoesOnWithZeros()
    {
        QCOMPARE(songs(parse(header(0, 1, 480) + chunk(Middle + "00C028 00"_hex))),
                 {"Track 1 - Acoustic Grand Piano: 60@0+30240"_s});
        QCOMPARE(songs(parse(header(0, 1, 480) + chunk(Middle + "00C028"_hex))),
                 {"Track 1 - Violin: 60@0+30240"_s});
        // With zeros a meta event is of type 0, and a system exclusive event is empty.
        QCOMPARE(notesOfCutChunk(Middle + "00FF0100 00"_hex), MiddleNote);
        QCOMPARE(notesOfCutChunk(Middle + "00F000 00"_hex), MiddleNote);
    }
    void fileThatEndsBeforeAnyStatusIsRead()
    {
        QCOMPARE(parse(header(0, 1, 480) + chunk("00"_hex)).size(), 0);
        QCOMPARE(parse(header(0, 1, 480) + chunk("8181"_hex)).size(), 0);
        QCOMPARE(
            notes(
                parse(header(1, 2, 480) + chunk(Middle + endOfTrack()) + chunk("00"_hex)).first()),
            MiddleNote);
    }

    // Values that make no sense

    void ignoresATempoOfNothing()
    {
        const Track track = parse(file({tempo(0, 0) + Middle + tempo(0, 0)})).first();
        QCOMPARE(track.header("Q"_s), "1/4=120"_s);
        QCOMPARE(events(track), MiddleNote);
    }
    void ignoresPrefixesAbove15_data()
    {
        QTest::addColumn<quint32>("prefix");
        QTest::newRow("16") << 16U;
        QTest::newRow("255") << 255U;
    }
    void ignoresPrefixesAbove15()
    {
        QFETCH(quint32, prefix);
        const QByteArray last = noteOn(0, 15, 60) + noteOff(480, 15, 60);
        const Track track = parse(file({channelPrefix(0, 15) + channelPrefix(0, prefix)
                                        + instrumentName(0, "Flute") + last}))
                                .first();
        QCOMPARE(track.headers("T"_s),
                 QStringList({"Track 16 - Acoustic Grand Piano"_s, "Flute"_s}));
    }
    void ignoresMetersWithoutAMeasure_data()
    {
        QTest::addColumn<quint32>("numerator");
        QTest::addColumn<quint32>("exponent");
        QTest::newRow("0/4") << 0U << 2U;
        QTest::newRow("0/1") << 0U << 0U;
        QTest::newRow("4/131072") << 4U << 17U;
        QTest::newRow("an exponent of 32") << 4U << 32U;
        QTest::newRow("255 and an exponent of 255") << 255U << 255U;
    }
    void ignoresMetersWithoutAMeasure()
    {
        QFETCH(quint32, numerator);
        QFETCH(quint32, exponent);
        const QByteArray ignored = meter(0, numerator, exponent);
        const Track track = parse(file({meter(0, 3, 2) + ignored + Middle + ignored})).first();
        QCOMPARE(events(track), MiddleNote);
        QCOMPARE(track.header("M"_s), "3/4"_s);
        QCOMPARE(track.measureLength(), 90720U);
        QCOMPARE(track.beatsPerMeasure(), 3U);
    }
    void takesTheSmallestMeasure()
    {
        const Track track = parse(file({meter(0, 1, 16) + Middle})).first();
        QCOMPARE(track.header("M"_s), "1/65536"_s);
        QCOMPARE(track.measureLength(), 1U);
        QCOMPARE(track.beatsPerMeasure(), 1U);
    }
    void takesProgramsModulo128()
    {
        for (const quint32 number : {40U, 168U}) {
            QCOMPARE(songs(parse(file({program(0, 0, number) + Middle}))),
                     {"Track 1 - Violin: 60@0+30240"_s});
        }
    }
    void timesEndAtTheLatest()
    {
        const QByteArray wait = "8FFFFFFF7F B00000"_hex; // 2^32 - 1 units
        const QByteArray events = wait.repeated(100) + noteOn(0, 0, 60) + noteOff(480, 0, 60) + wait
            + noteOn(0, 0, 62) + wait.repeated(100) + noteOff(0, 0, 62);
        QCOMPARE(notesOf(events, 1),
                 "60@9007199254740992+14515200 62@9007199254740992+9007199254740992"_s);
        QCOMPARE(parse(file({events}, 1)).first().length(), quint64{1} << 54U);
    }

    // The stream

    void readsFromWhereTheStreamStands()
    {
        QByteArray bytes = "before" + file({Middle});
        QDataStream stream(bytes);
        QCOMPARE(stream.skipRawData(6), 6);
        QCOMPARE(notes(MidiParser(Merged).parse(stream).first()), MiddleNote);
    }
    void streamMayBeOfAnyByteOrder()
    {
        QByteArray bytes = file({Middle});
        QDataStream stream(bytes);
        stream.setByteOrder(QDataStream::LittleEndian);
        QCOMPARE(notes(MidiParser(Merged).parse(stream).first()), MiddleNote);
    }
    void readsFilesOfManyBlocks()
    {
        QByteArray events;
        for (int i = 0; i < 50000; ++i)
            events += noteOn(480, 0, 60) + noteOff(480, 0, 60);
        const Track track = parse(file({events})).first();
        QCOMPARE(track.noteCount(), 50000);
        QCOMPARE(track.length(), quint64{100000} * 30240);
    }
    void refusesDevicesThatCannotBeRead()
    {
        QDataStream none;
        QCOMPARE(thrownBy([&] { MidiParser(Merged).parse(none); }), "Could not open file."_s);
        BrokenDevice broken;
        QDataStream stream(&broken);
        QCOMPARE(thrownBy([&] { MidiParser(Merged).parse(stream); }), "Could not open file."_s);
    }
    void parserMayBeUsedAgain()
    {
        MidiParser parser(Merged);
        for (int i = 0; i < 2; ++i) {
            QByteArray bytes = file({noteOff(0, 0, 62) + Middle + noteOn(0, 0, 62)});
            QDataStream stream(bytes);
            QCOMPARE(notes(parser.parse(stream).first()), MiddleNote);
        }
    }
};

QTEST_APPLESS_MAIN(tst_MidiParser)
#include "tst_MidiParser.moc"

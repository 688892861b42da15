#include "MIDI/Realignment.h"

#include "MidiTestSupport.h"

#include "support/MessageCapture.h"
#include "support/MidiBuilder.h"

#include <QtTest>

using namespace MidiTest;
using namespace MidiBuilder;

namespace {

constexpr MidiOptions WithoutBends = {true, false, false};
constexpr quint32 NoBend = 8192;

/// A quarter note.
QByteArray quarter(quint32 channel, quint32 pitch, quint32 delta = 0)
{
    return noteOn(delta, channel, pitch) + noteOff(480, channel, pitch);
}

/// The only track of a file of one chunk.
Track trackOf(const QByteArray &events, const MidiOptions &options = Merged)
{
    const QList<Track> tracks = parse(file({events}), options);
    return tracks.size() == 1 ? tracks.first() : Track();
}

QString notesOf(const QByteArray &events, const MidiOptions &options = Merged)
{
    return notes(trackOf(events, options));
}

/// The program names, a line each.
QStringList programNames()
{
    return QStringLiteral(R"(Acoustic Grand Piano
Bright Acoustic Piano
Electric Grand Piano
Honky-tonk Piano
Electric Piano 1
Electric Piano 2
Harpsichord
Clavi
Celesta
Glockenspiel
Music Box
Vibraphone
Marimba
Xylophone
Tubular Bells
Dulcimer
Drawbar Organ
Percussive Organ
Rock Organ
Church Organ
Reed Organ
Accordion
Harmonica
Tango Accordion
Acoustic Guitar (nylon)
Acoustic Guitar (steel)
Electric Guitar (jazz)
Electric Guitar (clean)
Electric Guitar (muted)
Overdriven Guitar
Distortion Guitar
Guitar harmonics
Acoustic Bass
Electric Bass (finger)
Electric Bass (pick)
Fretless Bass
Slap Bass 1
Slap Bass 2
Synth Bass 1
Synth Bass 2
Violin
Viola
Cello
Contrabass
Tremolo Strings
Pizzicato Strings
Orchestral Harp
Timpani
String Ensemble 1
String Ensemble 2
SynthStrings 1
SynthStrings 2
Choir Aahs
Voice Oohs
Synth Voice
Orchestra Hit
Trumpet
Trombone
Tuba
Muted Trumpet
French Horn
Brass Section
SynthBrass 1
SynthBrass 2
Soprano Sax
Alto Sax
Tenor Sax
Baritone Sax
Oboe
English Horn
Bassoon
Clarinet
Piccolo
Flute
Recorder
Pan Flute
Blown bottle
Shakuhachi
Whistle
Ocarina
Lead 1 (square)
Lead 2 (sawtooth)
Lead 3 (calliope)
Lead 4 (chiff)
Lead 5 (charang)
Lead 6 (voice)
Lead 7 (fifths)
Lead 8 (bass + lead)
Pad 1 (new age)
Pad 2 (warm)
Pad 3 (polysynth)
Pad 4 (choir)
Pad 5 (bowed)
Pad 6 (metallic)
Pad 7 (halo)
Pad 8 (sweep)
FX 1 (rain)
FX 2 (soundtrack)
FX 3 (crystal)
FX 4 (atmosphere)
FX 5 (brightness)
FX 6 (goblins)
FX 7 (echoes)
FX 8 (sci-fi)
Sitar
Banjo
Shamisen
Koto
Kalimba
Bag pipe
Fiddle
Shanai
Tinkle Bell
Agogo
Steel Drums
Woodblock
Taiko Drum
Melodic Tom
Synth Drum
Reverse Cymbal
Guitar Fret Noise
Breath Noise
Seashore
Bird Tweet
Telephone Ring
Helicopter
Applause
Gunshot)")
        .split(QLatin1Char('\n'));
}

} // namespace

class tst_MidiConversion : public QObject {
    Q_OBJECT

private slots:
    // Tracks and their titles

    void mergesChunksByChannel()
    {
        const QList<Track> tracks =
            parse(file({quarter(1, 60) + quarter(0, 50), quarter(0, 64) + quarter(4, 40)}));
        QCOMPARE(songs(tracks),
                 QStringList({"Track 1 - Acoustic Grand Piano: 64@0+30240 50@30240+30240"_s,
                              "Track 2 - Acoustic Grand Piano: 60@0+30240"_s,
                              "Track 5 - Acoustic Grand Piano: 40@30240+30240"_s}));
    }
    void splitsChunksByChannel()
    {
        const QList<Track> tracks = parse(
            file({quarter(1, 60) + quarter(0, 50), {}, quarter(0, 64) + quarter(4, 40)}), PerChunk);
        QCOMPARE(songs(tracks),
                 QStringList({"Track 1 - Acoustic Grand Piano: 50@30240+30240"_s,
                              "Track 2 - Acoustic Grand Piano: 60@0+30240"_s,
                              "Track 3 - Acoustic Grand Piano: 64@0+30240"_s,
                              "Track 4 - Acoustic Grand Piano: 40@30240+30240"_s}));
    }
    void tenthChannelIsPercussion()
    {
        const QByteArray bytes = file({program(0, 9, 40) + quarter(9, 38)});
        QCOMPARE(songs(parse(bytes)), {"Track 10 - Percussion: 38@0+30240"_s});
        QCOMPARE(songs(parse(bytes, PerChunk)), {"Track 1 - Percussion: 38@0+30240"_s});
    }
    void programsHaveTheirNames()
    {
        const QStringList names = programNames();
        QCOMPARE(names.size(), 128);
        for (int number = 0; number < 128; ++number) {
            const QByteArray events = program(0, 0, static_cast<quint32>(number)) + quarter(0, 60);
            QCOMPARE(trackOf(events).header("T"_s), "Track 1 - "_s + names.at(number));
        }
    }
    void lastProgramOfAChannelNamesItsTrack()
    {
        const QByteArray first = program(0, 0, 40) + program(0, 1, 73) + quarter(0, 60);
        const QByteArray bytes = file({first, quarter(1, 60) + program(0, 0, 41)});
        QCOMPARE(songs(parse(bytes)),
                 QStringList({"Track 1 - Viola: 60@0+30240"_s, "Track 2 - Flute: 60@0+30240"_s}));
        // Each chunk begins with program 0.
        QCOMPARE(songs(parse(bytes, PerChunk)),
                 QStringList({"Track 1 - Violin: 60@0+30240"_s,
                              "Track 2 - Acoustic Grand Piano: 60@0+30240"_s}));
    }
    void channelsWithoutNotesMakeNoTrack()
    {
        const QByteArray silent = control(0, 3, 7, 100) + program(0, 4, 40) + bend(0, 5, 0)
            + channelPrefix(0, 6) + instrumentName(0, "Flute") + noteOn(0, 7, 60) + noteOn(0, 8, 20)
            + noteOff(10, 8, 20) + tempo(0, 400000) + meter(0, 3, 2) + key(0, 1, 0);
        for (const MidiOptions &options : {Merged, PerChunk}) {
            QCOMPARE(parse(file({silent}), options).size(), 0);
            QCOMPARE(parse(file({silent, quarter(2, 60)}), options).size(), 1);
            QCOMPARE(parse(file({}), options).size(), 0);
        }
    }
    void instrumentNamesAreFurtherTitles()
    {
        const QByteArray events = instrumentName(0, "First") + channelPrefix(0, 2)
            + instrumentName(0, "Second") + instrumentName(0, "Third") + quarter(0, 60)
            + quarter(2, 60) + channelPrefix(0, 0) + instrumentName(0, "");
        for (const MidiOptions &options : {Merged, PerChunk}) {
            const QList<Track> tracks = parse(file({events}), options);
            QCOMPARE(tracks.size(), 2);
            QCOMPARE(tracks.at(0).headers("T"_s),
                     QStringList({"Track 1 - Acoustic Grand Piano"_s, ""_s, "First"_s}));
            QCOMPARE(tracks.at(1).headers("T"_s),
                     QStringList({options.mergeChannels ? "Track 3 - Acoustic Grand Piano"_s
                                                        : "Track 2 - Acoustic Grand Piano"_s,
                                  "Third"_s, "Second"_s}));
        }
    }
    void instrumentNamesAreOfTheChunkAlone()
    {
        const QByteArray bytes = file({instrumentName(0, "Flute"), quarter(0, 60)});
        QCOMPARE(parse(bytes).first().headers("T"_s).size(), 2);
        QCOMPARE(parse(bytes, PerChunk).first().headers("T"_s).size(), 1);
    }
    void instrumentNamesAreLatin1UpToTheFirstNul_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("title");
        QTest::newRow("Latin-1") << QByteArray("Fl\xF6te") << "Flöte"_s;
        QTest::newRow("no UTF-8") << QByteArray("\xC3\xB6") << "Ã¶"_s;
        QTest::newRow("a NUL") << QByteArray("Flute\0Oboe", 10) << "Flute"_s;
        QTest::newRow("a NUL at first") << QByteArray("\0Oboe", 5) << ""_s;
        QTest::newRow("control characters")
            << QByteArray("A\nB\rC\tD\x1B\x7F\x80\x9F\xA0") << "A B C D    \u00A0"_s;
    }
    void instrumentNamesAreLatin1UpToTheFirstNul()
    {
        QFETCH(QByteArray, name);
        QFETCH(QString, title);
        QCOMPARE(trackOf(instrumentName(0, name) + quarter(0, 60)).headers("T"_s).last(), title);
    }

    // Notes

    void pairsNotes_data()
    {
        QTest::addColumn<QByteArray>("events");
        QTest::addColumn<QString>("expected");
        QTest::newRow("on and off") << quarter(0, 60) << "60@0+30240"_s;
        QTest::newRow("velocity 0 is off")
            << noteOn(0, 0, 60) + noteOn(480, 0, 60, 0) << "60@0+30240"_s;
        QTest::newRow("velocity 1 is on")
            << noteOn(0, 0, 60, 1) + noteOff(480, 0, 60) << "60@0+30240"_s;
        QTest::newRow("any velocity of off")
            << noteOn(0, 0, 60) + noteOff(480, 0, 60, 127) << "60@0+30240"_s;
        QTest::newRow("struck again: the first is lost")
            << noteOn(0, 0, 60) + noteOn(100, 0, 60) + noteOff(100, 0, 60) << "60@6300+6300"_s;
        QTest::newRow("off twice") << quarter(0, 60) + noteOff(100, 0, 60) << "60@0+30240"_s;
        QTest::newRow("off without on") << noteOff(0, 0, 62) + quarter(0, 60) << "60@0+30240"_s;
        QTest::newRow("of no length") << noteOn(0, 0, 60) + noteOff(0, 0, 60) << "60@0+0"_s;
        QTest::newRow("a chord") << noteOn(0, 0, 60) + noteOn(0, 0, 64) + noteOff(480, 0, 64)
                + noteOff(0, 0, 60)
                                 << "64@0+30240 60@0+30240"_s;
        QTest::newRow("20 and 109 are dropped, 21 and 108 are kept")
            << quarter(0, 20) + quarter(0, 21) + quarter(0, 108) + quarter(0, 109)
            << "21@30240+30240 108@60480+30240"_s;
        QTest::newRow("keys above 127") << quarter(0, 0xFF) + quarter(0, 60) << "60@30240+30240"_s;
        QTest::newRow("never ended") << noteOn(0, 0, 62) + quarter(0, 60) << "60@0+30240"_s;
    }
    void pairsNotes()
    {
        QFETCH(QByteArray, events);
        QFETCH(QString, expected);
        QCOMPARE(notesOf(events), expected);
        QCOMPARE(notesOf(events, PerChunk), expected);
    }
    void channelsSoundApart()
    {
        QCOMPARE(songs(parse(file({noteOn(0, 0, 60) + noteOn(100, 1, 60) + noteOff(100, 0, 60)
                                   + noteOff(100, 1, 60)}))),
                 QStringList({"Track 1 - Acoustic Grand Piano: 60@0+12600"_s,
                              "Track 2 - Acoustic Grand Piano: 60@6300+12600"_s}));
    }
    void roundsStartsAndDurationsApart()
    {
        // 78.75 ticks a unit: starts at 78.75 and ends at 236.25.
        const QByteArray events = noteOn(1, 0, 60) + noteOff(2, 0, 60);
        QCOMPARE(notes(parse(file({events}, 384)).first()), "60@79+158"_s);
    }
    void laterChunkEndsANote()
    {
        const QByteArray bytes = file({quarter(0, 62) + noteOn(0, 0, 60), noteOff(960, 0, 60)});
        QCOMPARE(songs(parse(bytes)),
                 {"Track 1 - Acoustic Grand Piano: 62@0+30240 60@30240+30240"_s});
        QCOMPARE(songs(parse(bytes, PerChunk)),
                 QStringList({"Track 1 - Acoustic Grand Piano: 62@0+30240"_s,
                              "Track 2 - Acoustic Grand Piano: 60@30240+30240"_s}));
    }
    void noteThatEndsBeforeItsStartHasNoLength()
    {
        const QByteArray bytes = file({noteOn(480, 0, 60), noteOff(100, 0, 60)});
        QCOMPARE(notes(parse(bytes).first()), "60@30240+0"_s);
        // Nor has one that a bend cuts there.
        QCOMPARE(notes(parse(file({noteOn(480, 0, 60), bend(100, 0, 16383)})).first()),
                 "60@30240+0"_s);
    }

    // The last channel's notes at the end of a track

    void endOfTrackEndsTheLastChannelsNotes()
    {
        MessageCapture log;
        const QByteArray events =
            noteOn(0, 15, 64) + noteOn(0, 15, 109) + noteOn(480, 15, 20) + noteOn(0, 14, 60);
        const QByteArray bytes = header(1, 1, 480) + chunk(events + endOfTrack(480));
        for (const MidiOptions &options : {Merged, PerChunk}) {
            const QList<Track> tracks = parse(bytes, options);
            QCOMPARE(tracks.size(), 1);
            QCOMPARE(notes(tracks.first()), "64@0+60480 109@0+60480 20@30240+30240"_s);
        }
        const QString warning = "WARNING: Unterminated notes found at track end!\n"_s;
        QCOMPARE(log.texts(), QStringList({warning, warning, warning, warning, warning, warning}));
        QCOMPARE(log.messages().first().type, QtWarningMsg);
        QCOMPARE(log.messages().first().file, "MIDI/MidiParser"_s);
        QCOMPARE(log.messages().first().function,
                 "void MidiParser::parseTrack(QDataStream&, bool)"_s);
    }
    void endOfTrackTakesTheLowest8BitsOfAPitch()
    {
        MessageCapture log;
        const QByteArray up = bendRange(0, 15, 24) + noteOn(0, 15, 250) + bend(0, 15, 16383);
        QCOMPARE(notesOf(up + noteOn(480, 14, 60)), "18@0+30240"_s);
        const QByteArray down = bendRange(0, 15, 24) + noteOn(0, 15, 4) + noteOn(0, 15, 30)
            + bend(0, 15, 0) + noteOn(480, 14, 60);
        // 6 comes before 4294967276.
        QCOMPARE(notesOf(down), "6@0+30240 236@0+30240"_s);
    }
    void endOfTrackEndsThemOnce()
    {
        MessageCapture log;
        const QByteArray bytes =
            file({noteOn(0, 15, 60) + control(480, 0, 7, 1), noteOff(960, 15, 60)});
        QCOMPARE(notes(parse(bytes).first()), "60@0+30240"_s);
        QCOMPARE(log.texts().size(), 1);
    }
    void endOfTheFileEndsNoNotes()
    {
        MessageCapture log;
        QCOMPARE(parse(header(1, 1, 480) + chunk(noteOn(0, 15, 60) + noteOn(480, 0, 60))).size(),
                 0);
        QCOMPARE(log.texts(), QStringList());
    }
    void otherChannelsNotesAreNotReported()
    {
        MessageCapture log;
        QCOMPARE(parse(file({noteOn(0, 0, 60) + noteOn(0, 14, 60)})).size(), 0);
        QCOMPARE(log.texts(), QStringList());
    }

    // Pitch bend

    void bendsAreRoundedToSemitones_data()
    {
        QTest::addColumn<quint32>("range");
        QTest::addColumn<quint32>("value");
        QTest::addColumn<int>("semitones");
        QTest::newRow("range 2, 16383") << 2U << 16383U << 2;
        QTest::newRow("range 2, 14336: half goes up") << 2U << 14336U << 2;
        QTest::newRow("range 2, 14335") << 2U << 14335U << 1;
        QTest::newRow("range 2, 12288") << 2U << 12288U << 1;
        QTest::newRow("range 2, 10240: half goes up") << 2U << 10240U << 1;
        QTest::newRow("range 2, 10239") << 2U << 10239U << 0;
        QTest::newRow("range 2, 8192") << 2U << NoBend << 0;
        QTest::newRow("range 2, 6145") << 2U << 6145U << 0;
        QTest::newRow("range 2, 6144: half goes down") << 2U << 6144U << -1;
        QTest::newRow("range 2, 0") << 2U << 0U << -2;
        QTest::newRow("range 0, 16383") << 0U << 16383U << 0;
        QTest::newRow("range 1, 16383") << 1U << 16383U << 1;
        QTest::newRow("range 12, 16383") << 12U << 16383U << 12;
        QTest::newRow("range 12, 0") << 12U << 0U << -12;
        QTest::newRow("range 24, 10240") << 24U << 10240U << 6;
    }
    void bendsAreRoundedToSemitones()
    {
        QFETCH(quint32, range);
        QFETCH(quint32, value);
        QFETCH(int, semitones);
        const QByteArray events = bendRange(0, 0, range) + bend(0, 0, value) + quarter(0, 60);
        QCOMPARE(notesOf(events), "%1@0+30240"_s.arg(60 + semitones));
    }
    void bendCutsANoteAndStrikesItAgain()
    {
        QCOMPARE(notesOf(noteOn(0, 0, 60) + bend(480, 0, 16383) + noteOff(480, 0, 60)),
                 "60@0+30240 62@30240+30240"_s);
    }
    void bendOfNoWholeSemitoneChangesNothing()
    {
        QCOMPARE(notesOf(noteOn(0, 0, 60) + bend(100, 0, 10239) + bend(100, 0, NoBend)
                         + bend(100, 0, 6145) + noteOff(180, 0, 60)),
                 "60@0+30240"_s);
        QCOMPARE(notesOf(bend(0, 0, 16383) + noteOn(0, 0, 60) + bend(240, 0, 14336)
                         + noteOff(240, 0, 60)),
                 "62@0+30240"_s);
    }
    void bendWhereANoteBeginsMakesNoPiece()
    {
        QCOMPARE(
            notesOf(noteOn(0, 0, 60) + bend(0, 0, 16383) + bend(0, 0, 12288) + noteOff(480, 0, 60)),
            "61@0+30240"_s);
    }
    void bendStrikesAllNotesOfItsChannel()
    {
        const QByteArray events = noteOn(0, 0, 67) + noteOn(0, 0, 60) + noteOn(0, 1, 64)
            + bend(480, 0, 0) + noteOff(480, 0, 67) + noteOff(0, 1, 64) + noteOff(0, 0, 60);
        QCOMPARE(songs(parse(file({events}))),
                 QStringList({"Track 1 - Acoustic Grand Piano: "
                              "60@0+30240 67@0+30240 65@30240+30240 58@30240+30240"_s,
                              "Track 2 - Acoustic Grand Piano: 64@0+60480"_s}));
    }
    void bentNoteMayLeaveThePiano()
    {
        QCOMPARE(notesOf(noteOn(0, 0, 108) + bend(480, 0, 16383) + bend(480, 0, NoBend)
                         + noteOff(480, 0, 108)),
                 "108@0+30240 108@60480+30240"_s);
        QCOMPARE(notesOf(noteOn(0, 0, 19) + bend(480, 0, 16383) + noteOff(480, 0, 19)),
                 "21@30240+30240"_s);
    }
    void bentPitchMayWrapAndComeBack()
    {
        // Key 0 becomes 2^32 - 2 and, two octaves up, 22.
        QCOMPARE(notesOf(noteOn(0, 0, 0) + bend(0, 0, 0) + bendRange(0, 0, 22) + bend(480, 0, 16383)
                         + noteOff(480, 0, 0)),
                 "22@30240+30240"_s);
        // While wrapped it cannot be ended: keys make pitches of 8 bits.
        QCOMPARE(notesOf(noteOn(0, 0, 0) + bend(0, 0, 0) + noteOff(0, 0, 0) + bendRange(0, 0, 22)
                         + bend(480, 0, 16383) + noteOff(480, 0, 0)),
                 "22@30240+30240"_s);
    }
    void wrappedPitchesAreInAscendingOrder()
    {
        // 0 and 1 wrap, 44 does not; all three are on the piano in the end, and the order shows
        // in the pieces of one time and length.
        const QByteArray events = noteOn(0, 0, 44) + noteOn(0, 0, 1) + noteOn(0, 0, 0)
            + bend(0, 0, 0) + bendRange(0, 0, 30) + bend(480, 0, 16383) + bend(480, 0, NoBend);
        QCOMPARE(notesOf(events), "42@0+30240 30@30240+30240 31@30240+30240 74@30240+30240"_s);
    }
    void keysWrapAt8Bits()
    {
        // 255 + 2 is 1, 20 semitones more are 21.
        QCOMPARE(notesOf(bend(0, 0, 16383) + noteOn(0, 0, 255) + bendRange(0, 0, 22)
                         + bend(0, 0, 16383) + noteOff(480, 0, 255)),
                 "21@0+30240"_s);
    }
    void noteOfTheSamePitchAsABentOneReplacesIt()
    {
        QCOMPARE(notesOf(noteOn(0, 0, 60) + bend(480, 0, 16383) + noteOn(480, 0, 60)
                         + noteOff(480, 0, 60)),
                 "60@0+30240 62@60480+30240"_s);
    }
    void bendsMayBeIgnored()
    {
        QCOMPARE(notesOf(bendRange(0, 0, 12) + noteOn(0, 0, 60) + bend(480, 0, 16383)
                             + noteOff(480, 0, 60),
                         WithoutBends),
                 "60@0+60480"_s);
    }
    void bendRangeIsARegisteredParameter_data()
    {
        QTest::addColumn<QByteArray>("events");
        QTest::addColumn<int>("pitch");
        const auto row = [](const char *name, const QByteArray &events, int pitch) {
            QTest::newRow(name) << events << pitch;
        };
        const QByteArray select = control(0, 0, 101, 0) + control(0, 0, 100, 0);
        row("2 at first", {}, 62);
        row("no parameter", control(0, 0, 6, 12), 62);
        row("half of the parameter", control(0, 0, 101, 0) + control(0, 0, 6, 12), 62);
        row("the other half", control(0, 0, 100, 0) + control(0, 0, 6, 12), 62);
        row("the parameter", select + control(0, 0, 6, 12), 72);
        row("in the other order",
            control(0, 0, 100, 0) + control(0, 0, 101, 0) + control(0, 0, 6, 12), 72);
        row("twice", select + control(0, 0, 6, 12) + control(0, 0, 6, 7), 67);
        row("another parameter", select + control(0, 0, 100, 1) + control(0, 0, 6, 12), 62);
        row("no parameter again",
            select + control(0, 0, 100, 127) + control(0, 0, 101, 127) + control(0, 0, 6, 12), 62);
        row("the top bit of a parameter does not count",
            control(0, 0, 101, 0x80) + control(0, 0, 100, 0x80) + control(0, 0, 6, 12), 72);
        row("of another channel",
            control(0, 1, 101, 0) + control(0, 1, 100, 0) + control(0, 0, 6, 12), 62);
        row("cents do not count", select + control(0, 0, 6, 12) + control(0, 0, 38, 99), 72);
        row("other parameters are not looked at",
            select + control(0, 0, 99, 1) + control(0, 0, 98, 1) + control(0, 0, 6, 12), 72);
    }
    void bendRangeIsARegisteredParameter()
    {
        QFETCH(QByteArray, events);
        QFETCH(int, pitch);
        QCOMPARE(notesOf(events + bend(0, 0, 16383) + quarter(0, 60)), "%1@0+30240"_s.arg(pitch));
    }
    void bendHoldsFromChunkToChunkOnlyWhenMerged()
    {
        const QByteArray bytes = file({bend(0, 0, 16383), quarter(0, 60)});
        QCOMPARE(notes(parse(bytes).first()), "62@0+30240"_s);
        QCOMPARE(notes(parse(bytes, PerChunk).first()), "60@0+30240"_s);
    }
    void bendRangeHoldsFromChunkToChunk()
    {
        const QByteArray select = control(0, 0, 101, 0) + control(0, 0, 100, 0);
        const QByteArray bytes = file({select + control(0, 0, 6, 12),
                                       bend(0, 0, 16383) + quarter(0, 60) + control(0, 0, 6, 7),
                                       bend(0, 0, 0) + quarter(0, 60)});
        QCOMPARE(songs(parse(bytes, PerChunk)),
                 QStringList({"Track 1 - Acoustic Grand Piano: 72@0+30240"_s,
                              "Track 2 - Acoustic Grand Piano: 53@0+30240"_s}));
    }
    void soundingNotesOfAnEarlierChunkKeepTheirBentPitch()
    {
        // The second chunk's channel is not bent, so that 62 is what ends it.
        const QByteArray bytes =
            file({bend(0, 0, 16383) + noteOn(0, 0, 60), noteOff(480, 0, 60) + noteOff(0, 0, 62)});
        QCOMPARE(songs(parse(bytes, PerChunk)), {"Track 1 - Acoustic Grand Piano: 62@0+30240"_s});
    }

    // Tempo

    void tempoIsInWholeBeatsAMinute_data()
    {
        QTest::addColumn<quint32>("microseconds");
        QTest::addColumn<QString>("field");
        QTest::addColumn<quint64>("ticksPerMinute");
        QTest::newRow("120") << 500000U << "1/4=120"_s << quint64{3628800};
        QTest::newRow("150") << 400000U << "1/4=150"_s << quint64{4536000};
        QTest::newRow("127.99 is cut") << 468750U + 10U << "1/4=127"_s << quint64{3840480};
        QTest::newRow("the slowest") << 0xFFFFFFU << "1/4=3"_s << quint64{90720};
        QTest::newRow("the fastest") << 1U << "1/4=60000000"_s << quint64{60000000} * 30240;
    }
    void tempoIsInWholeBeatsAMinute()
    {
        QFETCH(quint32, microseconds);
        QFETCH(QString, field);
        QFETCH(quint64, ticksPerMinute);
        for (const MidiOptions &options : {Merged, PerChunk}) {
            const Track track = trackOf(tempo(0, microseconds) + quarter(0, 60), options);
            QCOMPARE(track.headers("Q"_s), {field});
            QCOMPARE(track.ticksPerMinute(), ticksPerMinute);
            QCOMPARE(events(track), "60@0+30240"_s);
        }
    }
    void tempoIs120WithoutOne()
    {
        for (const MidiOptions &options : {Merged, PerChunk}) {
            const Track track = trackOf(quarter(0, 60) + tempo(0, 400000), options);
            QCOMPARE(track.headers("Q"_s), {"1/4=120"_s});
            QCOMPARE(track.ticksPerMinute(), quint64{3628800});
            QCOMPARE(events(track), "60@0+30240; Tempo@30240 1/4=150"_s);
        }
    }
    void laterTemposAreEventsOfAllTracks()
    {
        const QByteArray conductor = tempo(0, 400000) + tempo(960, 500000) + tempo(0, 600000);
        for (const MidiOptions &options : {Merged, PerChunk}) {
            const QList<Track> tracks =
                parse(file({quarter(2, 50), conductor, quarter(0, 60)}), options);
            QCOMPARE(tracks.size(), 2);
            for (const Track &track : tracks) {
                QCOMPARE(track.headers("Q"_s), {"1/4=150"_s});
                QVERIFY(events(track).endsWith("+30240; Tempo@60480 1/4=100"_s));
            }
        }
    }
    void lastTempoAtTheStartHolds()
    {
        for (const MidiOptions &options : {Merged, PerChunk}) {
            const Track track = parse(file({tempo(0, 400000) + tempo(0, 300000) + quarter(0, 60),
                                            tempo(0, 600000)}),
                                      options)
                                    .first();
            QCOMPARE(track.headers("Q"_s), {"1/4=100"_s});
            QCOMPARE(track.ticksPerMinute(), quint64{3024000});
        }
    }
    void tempoMapIsOfTheWholeFileAndOfUnits()
    {
        // At 32767 to a quarter, units 1 and 2 are ticks 1 and 2, at 65534 both are 1.
        const QByteArray bytes =
            file({tempo(2, 400000), tempo(1, 300000) + tempo(1, 200000) + quarter(0, 60)}, 32767);
        QCOMPARE(events(parse(bytes, PerChunk).first()),
                 "Tempo@1 1/4=200; Tempo@2 1/4=300; 60@2+443"_s);
        QCOMPARE(events(parse(bytes).first()), "Tempo@1 1/4=200; Tempo@2 1/4=300; 60@2+443"_s);
    }

    // Meter and key

    void meterAtTheStartIsAField_data()
    {
        QTest::addColumn<quint32>("numerator");
        QTest::addColumn<quint32>("exponent");
        QTest::addColumn<QString>("field");
        QTest::addColumn<quint32>("measureLength");
        QTest::newRow("4/4") << 4U << 2U << "4/4"_s << 120960U;
        QTest::newRow("3/4") << 3U << 2U << "3/4"_s << 90720U;
        QTest::newRow("6/8") << 6U << 3U << "6/8"_s << 90720U;
        QTest::newRow("2/1") << 2U << 0U << "2/1"_s << 241920U;
        QTest::newRow("255/256, whole beats") << 255U << 8U << "255/256"_s << 472U * 255U;
    }
    void meterAtTheStartIsAField()
    {
        QFETCH(quint32, numerator);
        QFETCH(quint32, exponent);
        QFETCH(QString, field);
        QFETCH(quint32, measureLength);
        for (const MidiOptions &options : {Merged, PerChunk}) {
            const Track track =
                trackOf(meter(0, 5, 2) + meter(0, numerator, exponent) + quarter(0, 60), options);
            QCOMPARE(track.headers("M"_s), {field});
            QCOMPARE(track.measureLength(), measureLength);
            QCOMPARE(track.beatsPerMeasure(), numerator);
            QCOMPARE(events(track), "60@0+30240"_s);
        }
    }
    void laterMetersAreEvents()
    {
        for (const MidiOptions &options : {Merged, PerChunk}) {
            const Track track = trackOf(quarter(0, 60) + meter(0, 3, 3), options);
            QVERIFY(!track.hasHeader("M"_s));
            QCOMPARE(track.measureLength(), 120960U);
            QCOMPARE(track.beatsPerMeasure(), 4U);
            QCOMPARE(events(track), "60@0+30240; Meter@30240 3/8"_s);
        }
    }
    void keyAtTheStartIsAField()
    {
        const QStringList names = "Cb Abm Gb Ebm Db Bbm Ab Fm Eb Cm Bb Gm F Dm C Am G Em D Bm A "
                                  "F#m E C#m B G#m F# D#m C# A#m"_s.split(QLatin1Char(' '));
        QCOMPARE(names.size(), 30);
        for (int i = 0; i < names.size(); ++i) {
            const QByteArray signature = key(0, i / 2 - 7, static_cast<quint32>(i % 2));
            const Track track = trackOf(key(0, 0, 0) + signature + quarter(0, 60));
            QCOMPARE(track.headers("K"_s), {names.at(i)});
            QCOMPARE(events(track), "60@0+30240"_s);
        }
    }
    void laterKeysAreEvents()
    {
        const QByteArray sharps = key(0, 7, 0);
        const QByteArray flats = key(480, -7, 1);
        for (const MidiOptions &options : {Merged, PerChunk}) {
            const Track track = trackOf(quarter(0, 60) + sharps + flats, options);
            QVERIFY(!track.hasHeader("K"_s));
            QCOMPARE(events(track), "60@0+30240; Key@30240 0 0; Key@60480 14 1"_s);
        }
    }
    void ignoresKeysThatThereAreNot_data()
    {
        QTest::addColumn<int>("sharps");
        QTest::addColumn<quint32>("mode");
        QTest::newRow("8 sharps") << 8 << 0U;
        QTest::newRow("8 flats") << -8 << 0U;
        QTest::newRow("127 sharps") << 127 << 1U;
        QTest::newRow("128 flats") << -128 << 1U;
        QTest::newRow("mode 2") << 0 << 2U;
        QTest::newRow("mode 255") << 0 << 255U;
    }
    void ignoresKeysThatThereAreNot()
    {
        QFETCH(int, sharps);
        QFETCH(quint32, mode);
        const QByteArray ignored = key(0, sharps, mode);
        const Track track = trackOf(key(0, -3, 1) + ignored + quarter(0, 60) + ignored);
        QCOMPARE(track.headers("K"_s), {"Cm"_s});
        QCOMPARE(events(track), "60@0+30240"_s);
    }
    void metersAndKeysAreOfTheChunkAloneWhenNotMerged()
    {
        const QByteArray conductor = tempo(0, 400000) + meter(0, 3, 2) + key(0, 1, 0)
            + tempo(240, 300000) + meter(0, 2, 2) + key(0, 2, 0);
        const QByteArray bytes = file({conductor, quarter(0, 60)});
        const Track merged = parse(bytes).first();
        QCOMPARE(merged.header("M"_s), "3/4"_s);
        QCOMPARE(merged.header("K"_s), "G"_s);
        QCOMPARE(events(merged),
                 "60@0+30240; Tempo@15120 1/4=200; Meter@15120 2/4; Key@15120 5 0"_s);
        const Track alone = parse(bytes, PerChunk).first();
        QCOMPARE(alone.allHeaders().uniqueKeys(), QStringList({"Q"_s, "T"_s}));
        QCOMPARE(alone.header("Q"_s), "1/4=150"_s);
        QCOMPARE(events(alone), "60@0+30240; Tempo@15120 1/4=200"_s);
    }
    void metersAndKeysGoToAllChannelsOfTheChunk()
    {
        const QByteArray events = quarter(0, 60) + meter(0, 3, 2) + key(0, 1, 0) + quarter(5, 60);
        for (const MidiOptions &options : {Merged, PerChunk}) {
            const QList<Track> tracks = parse(file({events}), options);
            QCOMPARE(tracks.size(), 2);
            QCOMPARE(MidiTest::events(tracks.at(0)),
                     "60@0+30240; Meter@30240 3/4; Key@30240 6 0"_s);
            QCOMPARE(MidiTest::events(tracks.at(1)),
                     "Meter@30240 3/4; Key@30240 6 0; 60@30240+30240"_s);
        }
    }
    void controlsAndNotesOfNoLengthKeepTheFilesOrder()
    {
        const QByteArray none = noteOn(0, 0, 60) + noteOff(0, 0, 60);
        const QByteArray other = noteOn(0, 0, 62) + noteOff(0, 0, 62);
        const QByteArray bytes = file({none + noteOn(480, 0, 60) + noteOff(0, 0, 60) + key(0, 1, 0)
                                           + other + meter(0, 3, 2) + none + tempo(0, 400000),
                                       key(480, 2, 0) + none});
        QCOMPARE(events(parse(bytes).first()),
                 "60@0+0; 60@30240+0; Key@30240 6 0; 62@30240+0; Meter@30240 3/4; 60@30240+0; "
                 "Tempo@30240 1/4=150; Key@30240 5 0; 60@30240+0"_s);
        // The tempo map comes last.
        QCOMPARE(events(parse(bytes, PerChunk).first()),
                 "60@0+0; 60@30240+0; Key@30240 6 0; 62@30240+0; Meter@30240 3/4; 60@30240+0; "
                 "Tempo@30240 1/4=150"_s);
    }
    void everyTrackIsSorted()
    {
        const QByteArray events = noteOn(0, 0, 60) + noteOn(240, 0, 62) + noteOff(240, 0, 62)
            + noteOff(0, 0, 60) + meter(0, 3, 2);
        for (const MidiOptions &options : {Merged, PerChunk}) {
            const Track track = trackOf(events, options);
            QCOMPARE(MidiTest::events(track), "60@0+30240; 62@15120+15120; Meter@30240 3/4"_s);
            QCOMPARE(track.length(), quint64{30240});
            QCOMPARE(track.noteCount(), 2);
        }
    }
    void tracksHaveNoTextAndNoFileName() { QVERIFY(trackOf(quarter(0, 60)).fileName().isEmpty()); }

    // Realignment

    void tracksMayBeRealigned()
    {
        const QByteArray bytes = file({noteOn(1, 0, 60) + noteOff(477, 0, 60)});
        for (const bool mergeChannels : {true, false}) {
            const Track plain = parse(bytes, {mergeChannels, false, true}).first();
            const Track realigned = parse(bytes, {mergeChannels, true, true}).first();
            QCOMPARE(notes(plain), "60@63+30051"_s);
            QCOMPARE(realigned, quickRealignTrack(plain));
        }
    }
};

QTEST_APPLESS_MAIN(tst_MidiConversion)
#include "tst_MidiConversion.moc"

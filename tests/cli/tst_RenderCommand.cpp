#include "ProgramRun.h"
#include "SmallGame.h"
#include "Terminal.h"
#include "support/MidiBuilder.h"

#include <QDir>
#include <QtEndian>
#include <QtTest>

#include <csignal>
#include <cstdlib>

#include <sys/resource.h>
#include <unistd.h>

class tst_RenderCommand : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void tuneBecomesAWaveFile();
    void sameTuneGivesTheSameBytes();
    void volumeApplies();
    void panApplies();
    void optionsApplyToTheFilesAfterThem();
    void instrumentIsChosenAsInTheMainWindow_data();
    void instrumentIsChosenAsInTheMainWindow();
    void unknownInstrumentIsAFailure();
    void modsAreOnlyTakenOnRequest();
    void unmappedNoteIsNamed();
    void unmappedNotesOfAllFilesAreNamed();
    void unmappedNotesMayBeSkipped();
    void failingFileStopsTheRender();
    void wrongOutputIsRefused();
    void unwritableOutputIsReported();
    void badUsageIsRefused_data();
    void badUsageIsRefused();
    void withoutAGameThereIsAHint();
    void emptyTuneGivesOneSilentBlock();
    void progressIsShownOnATerminal();
    void signalLeavesNothingBehind_data();
    void signalLeavesNothingBehind();
    void signalKeepsTheOldFile();
    void limitOnFileSizeLeavesNothingBehind();
    void everyTrackOfAMidiFileIsAPart();
    void optionsHoldForAllTracksOfAFile();
    void percussionIsPlayedAsAnyTrack();
    void unmappedNoteOfATrackIsNamed();
    void midiOptionsApply();
    void midiMayComeFromStandardInput();
    void midiWithoutNotesIsLeftOut();

private:
    QString path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    QByteArray file(const char *name) const { return fileContents(path(name)); }
    void tune(const char *name, const QByteArray &body);
    QStringList arguments(const QStringList &more) const;
    ProgramRun::Outcome run(const QStringList &more);

    QTemporaryDir m_game;
    QScopedPointer<QTemporaryDir> m_dir;
};

namespace {

constexpr int BytesPerFrame = 4;

/// The sound of a wave file.
QByteArray samplesOf(const QByteArray &wave)
{
    const int data = wave.indexOf("data");
    return data < 0 ? QByteArray() : wave.mid(data + 8);
}

struct Peaks {
    int left = 0;
    int right = 0;
};

Peaks peaks(const QByteArray &wave)
{
    Peaks result;
    const QByteArray samples = samplesOf(wave);
    const auto sample = [&](int index) {
        return std::abs(int{qFromLittleEndian<qint16>(samples.constData() + qptrdiff{2} * index)});
    };
    for (int i = 0; i < samples.size() / BytesPerFrame; ++i) {
        result.left = std::max(result.left, sample(2 * i));
        result.right = std::max(result.right, sample(2 * i + 1));
    }
    return result;
}

QJsonObject object(const QByteArray &line)
{
    return QJsonDocument::fromJson(line).object();
}

using namespace MidiBuilder;

/// A quarter note of half a second.
QByteArray note(quint32 channel, quint32 key)
{
    return noteOn(0, channel, key) + noteOff(480, channel, key);
}

/// The same note on three channels, in two chunks.
QByteArray trio()
{
    return MidiBuilder::file({note(0, 60) + noteOn(0, 1, 60) + noteOff(480, 1, 60), note(9, 60)});
}

QByteArray midiWithoutNotes()
{
    return MidiBuilder::file({tempo(0, 500000)});
}

} // namespace

void tst_RenderCommand::initTestCase()
{
    makeSmallGame(m_game.path());
}

void tst_RenderCommand::init()
{
    m_dir.reset(new QTemporaryDir);
    tune("lute.abc", "I:instrument Lute\nK:C\nC ^C\n");
    tune("plain.abc", "K:C\nC\n");
}

/// A quarter note at 120 lasts half a second.
void tst_RenderCommand::tune(const char *name, const QByteArray &body)
{
    makeFile(path(name), "X:1\nT:A tune\nM:4/4\nL:1/4\nQ:1/4=120\n" + body);
}

QStringList tst_RenderCommand::arguments(const QStringList &more) const
{
    return args({"render", "--game"}) + QStringList(m_game.path()) + more;
}

ProgramRun::Outcome tst_RenderCommand::run(const QStringList &more)
{
    return ProgramRun(arguments(more)).workingDirectory(m_dir->path()).outcome();
}

void tst_RenderCommand::tuneBecomesAWaveFile()
{
    const ProgramRun::Outcome outcome = run(args({"out.wav", "lute.abc"}));
    QCOMPARE(outcome.errors, SmallGameLog);
    QCOMPARE(outcome.status, 0);
    const QJsonObject result = object(outcome.output);
    const int frames = result.value(QStringLiteral("frames")).toInt();
    // Two notes of half a second and a quarter of a second's fade; the end comes at a block.
    QVERIFY2(frames >= 48000 && frames < 48000 + 12000 + 8 * 1024, outcome.output);
    const QByteArray peak = outcome.output.mid(outcome.output.indexOf("\"peak\":") + 7);
    QCOMPARE(outcome.output,
             "{\"file\":\"out.wav\",\"seconds\":"
                 + QByteArray::number(frames / 48000.0, 'g', QLocale::FloatingPointShortest)
                 + ",\"frames\":" + QByteArray::number(frames) + ",\"notes\":2,\"peak\":" + peak);
    QVERIFY(peak.endsWith(",\"clipped\":0}\n"));
    QCOMPARE(samplesOf(file("out.wav")).size(), frames * BytesPerFrame);
    QVERIFY(peaks(file("out.wav")).left > 1000);
    QCOMPARE(listing(m_dir->path()), args({"lute.abc", "out.wav", "plain.abc"}));
}

void tst_RenderCommand::sameTuneGivesTheSameBytes()
{
    run(args({"a.wav", "lute.abc"}));
    run(args({"b.wav", "lute.abc"}));
    QVERIFY(peaks(file("a.wav")).left > 1000);
    QCOMPARE(file("a.wav"), file("b.wav"));
}

void tst_RenderCommand::volumeApplies()
{
    run(args({"full.wav", "plain.abc"}));
    run(args({"half.wav", "--volume", "0.5", "plain.abc"}));
    QVERIFY(run(args({"none.wav", "--volume=0", "plain.abc"})).output.contains("\"peak\":0.0,"));
    QVERIFY(std::abs(peaks(file("full.wav")).left - 2 * peaks(file("half.wav")).left) <= 4);
    QCOMPARE(peaks(file("none.wav")).left, 0);
}

void tst_RenderCommand::panApplies()
{
    run(args({"left.wav", "--pan", "-1", "plain.abc"}));
    run(args({"right.wav", "--pan", "1", "plain.abc"}));
    QVERIFY(peaks(file("left.wav")).left > 1000);
    QCOMPARE(peaks(file("left.wav")).right, 0);
    QCOMPARE(peaks(file("right.wav")).left, 0);
    QVERIFY(peaks(file("right.wav")).right > 1000);
}

void tst_RenderCommand::optionsApplyToTheFilesAfterThem()
{
    run(args({"one.wav", "plain.abc"}));
    run(args({"two.wav", "plain.abc", "--volume", "0", "plain.abc", "lute.abc"}));
    QCOMPARE(peaks(file("two.wav")).left, peaks(file("one.wav")).left);
}

void tst_RenderCommand::instrumentIsChosenAsInTheMainWindow_data()
{
    QTest::addColumn<QByteArray>("header");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("instrument");

    QTest::newRow("first of the game") << QByteArray() << QStringList() << QByteArray("Drum");
    QTest::newRow("header") << QByteArray("I:instrument Lute\n") << QStringList()
                            << QByteArray("Lute");
    QTest::newRow("header, case") << QByteArray("I:INSTRUMENT lUTE\n") << QStringList()
                                  << QByteArray("Lute");
    QTest::newRow("header, unknown")
        << QByteArray("I:instrument Oboe\n") << QStringList() << QByteArray("Drum");
    QTest::newRow("option") << QByteArray("I:instrument Lute\n") << args({"--instrument", "Drum"})
                            << QByteArray("Drum");
}

void tst_RenderCommand::instrumentIsChosenAsInTheMainWindow()
{
    QFETCH(QByteArray, header);
    QFETCH(QStringList, options);
    QFETCH(QByteArray, instrument);
    tune("a.abc", header + "K:C\nb\n"); // no instrument has that note
    const ProgramRun::Outcome outcome = run(args({"out.wav"}) + options + args({"a.abc"}));
    QVERIFY2(outcome.errors.contains("the instrument '" + instrument + "' has no note"),
             outcome.errors);
}

void tst_RenderCommand::unknownInstrumentIsAFailure()
{
    COMPARE_OUTCOME(run(args({"out.wav", "--instrument", "lute", "plain.abc"})), 1, "",
                    SmallGameLog + "quillmoor-cli: Instrument 'lute' not found.\n");
    QVERIFY(!QFile::exists(path("out.wav")));
}

void tst_RenderCommand::modsAreOnlyTakenOnRequest()
{
    QCOMPARE(run(args({"out.wav", "--instrument", "Whistle", "plain.abc"})).status, 1);
    QCOMPARE(run(args({"out.wav", "--mods", "--instrument", "Whistle", "plain.abc"})).status, 0);
}

void tst_RenderCommand::unmappedNoteIsNamed()
{
    tune("a.abc", "I:instrument Lute\nK:C\nCCCC|CCC^c|\n");
    COMPARE_OUTCOME(
        run(args({"out.wav", "a.abc"})), 1, "",
        SmallGameLog
            + "quillmoor-cli: a.abc: track 1, bar 2: the instrument 'Lute' has no note C#5 (^c in "
              "ABC).\n"
              "quillmoor-cli: Nothing was rendered; --skip-unmapped leaves such notes out.\n");
    QVERIFY(!QFile::exists(path("out.wav")));
}

void tst_RenderCommand::unmappedNotesOfAllFilesAreNamed()
{
    tune("a.abc", "K:C\nDEF\n");
    tune("b.abc", "K:C\nCD\n");
    COMPARE_OUTCOME(
        run(args({"out.wav", "a.abc", "plain.abc", "b.abc"})), 1, "",
        SmallGameLog
            + "quillmoor-cli: a.abc: track 1, bar 1: the instrument 'Drum' has no note D4 (D in "
              "ABC) "
              "(and 2 more).\n"
              "quillmoor-cli: b.abc: track 1, bar 1: the instrument 'Drum' has no note D4 (D in "
              "ABC).\n"
              "quillmoor-cli: Nothing was rendered; --skip-unmapped leaves such notes out.\n");
}

void tst_RenderCommand::unmappedNotesMayBeSkipped()
{
    tune("a.abc", "K:C\nCDEC\n");
    const ProgramRun::Outcome outcome =
        run(args({"--skip-unmapped", "out.wav", "a.abc", "plain.abc"}));
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.output.contains(",\"notes\":3,"), outcome.output);
    QVERIFY2(outcome.output.endsWith(",\"skipped\":2}\n"), outcome.output);
}

void tst_RenderCommand::failingFileStopsTheRender()
{
    COMPARE_OUTCOME(run(args({"out.wav", "missing.abc", "plain.abc", "none.abc"})), 1, "",
                    "quillmoor-cli: missing.abc: Could not open file.\n"
                    "quillmoor-cli: none.abc: Could not open file.\n"
                    "quillmoor-cli: Nothing was rendered.\n");
    QVERIFY(!QFile::exists(path("out.wav")));
}

void tst_RenderCommand::wrongOutputIsRefused()
{
    const QByteArray before = file("plain.abc");
    COMPARE_OUTCOME(run(args({"./plain.abc", "lute.abc", "plain.abc"})), 1, "",
                    "quillmoor-cli: ./plain.abc is an input file.\n");
    QCOMPARE(file("plain.abc"), before);
    COMPARE_OUTCOME(run(args({"/dev/null", "plain.abc"})), 1, "",
                    "quillmoor-cli: /dev/null is not a regular file.\n");
    COMPARE_OUTCOME(run(args({".", "plain.abc"})), 1, "",
                    "quillmoor-cli: . is not a regular file.\n");
}

void tst_RenderCommand::unwritableOutputIsReported()
{
    const ProgramRun::Outcome outcome = run(args({"nowhere/out.wav", "plain.abc"}));
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.output, QByteArray());
    QVERIFY2(outcome.errors.size() > SmallGameLog.size(), outcome.errors);
}

void tst_RenderCommand::badUsageIsRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("problem");

    QTest::newRow("no file")
        << args({"out.wav"})
        << QByteArray("Too few arguments. Usage: quillmoor-cli render [OPTION]... OUT.wav FILE...");
    QTest::newRow("volume above 1") << args({"out.wav", "--volume", "1.1", "a"})
                                    << QByteArray("--volume: '1.1' is not a number from 0 to 1.");
    QTest::newRow("volume no number")
        << args({"out.wav", "--volume", "loud", "a"})
        << QByteArray("--volume: 'loud' is not a number from 0 to 1.");
    QTest::newRow("pan below -1") << args({"out.wav", "--pan", "-1.1", "a"})
                                  << QByteArray("--pan: '-1.1' is not a number from -1 to 1.");
    QTest::newRow("option after the last file")
        << args({"out.wav", "a", "--pan", "0"})
        << QByteArray("--pan applies to the files after it, but none follows.");
    QTest::newRow("standard output")
        << args({"-", "plain.abc"}) << QByteArray("A wave file cannot go to standard output.");
}

void tst_RenderCommand::badUsageIsRefused()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, problem);
    COMPARE_OUTCOME(run(arguments), 2, "",
                    "quillmoor-cli: " + problem
                        + "\nquillmoor-cli: Try 'quillmoor-cli render --help'.\n");
}

void tst_RenderCommand::withoutAGameThereIsAHint()
{
    const ProgramRun::Outcome outcome =
        runProgram({QStringLiteral("render"), path("out.wav"), path("plain.abc")});
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.errors.contains("--game DIR") && outcome.errors.contains("demo-game"));
}

void tst_RenderCommand::emptyTuneGivesOneSilentBlock()
{
    tune("a.abc", "K:C\n");
    COMPARE_OUTCOME(run(args({"out.wav", "a.abc"})), 0,
                    "{\"file\":\"out.wav\",\"seconds\":0.021333333333333333,\"frames\":1024,"
                    "\"notes\":0,\"peak\":0.0,"
                    "\"clipped\":0}\n",
                    SmallGameLog);
    QCOMPARE(samplesOf(file("out.wav")).size(), 1024 * BytesPerFrame);
}

void tst_RenderCommand::progressIsShownOnATerminal()
{
    Terminal terminal;
    ProgramRun program(arguments(args({"out.wav", "lute.abc"})));
    program.workingDirectory(m_dir->path()).inChild([&] { dup2(terminal.slave(), STDERR_FILENO); });
    program.start();
    QVERIFY(terminal.waitFor("\rRendering out.wav: "));
    QVERIFY(terminal.waitFor("%\x1b[K\r\x1b[K")); // shown and taken away
    QCOMPARE(program.finish().status, 0);
}

void tst_RenderCommand::signalLeavesNothingBehind_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<int>("times");

    QTest::newRow("Ctrl-C") << SIGINT << 1;
    QTest::newRow("Ctrl-C twice") << SIGINT << 2;
    QTest::newRow("SIGTERM") << SIGTERM << 1;
    QTest::newRow("SIGHUP") << SIGHUP << 1;
}

void tst_RenderCommand::signalLeavesNothingBehind()
{
    QFETCH(int, signal);
    QFETCH(int, times);
    makeFile(path("long.abc"), EndlessTune);
    Terminal terminal;
    ProgramRun program(arguments(args({"out.wav", "long.abc"})));
    program.workingDirectory(m_dir->path()).inChild([&] { dup2(terminal.slave(), STDERR_FILENO); });
    const QProcess &process = program.start();
    QVERIFY(terminal.waitFor("\rRendering out.wav: "));
    for (int i = 0; i < times; ++i)
        kill(static_cast<pid_t>(process.processId()), signal);
    const ProgramRun::Outcome outcome = program.finish();
    QCOMPARE(outcome.status, 128 + signal);
    QCOMPARE(outcome.output, QByteArray());
    QCOMPARE(listing(m_dir->path()), args({"long.abc", "lute.abc", "plain.abc"}));
}

void tst_RenderCommand::signalKeepsTheOldFile()
{
    makeFile(path("long.abc"), EndlessTune);
    makeFile(path("out.wav"), "an older file");
    Terminal terminal;
    ProgramRun program(arguments(args({"out.wav", "long.abc"})));
    program.workingDirectory(m_dir->path()).inChild([&] { dup2(terminal.slave(), STDERR_FILENO); });
    const QProcess &process = program.start();
    QVERIFY(terminal.waitFor("\rRendering out.wav: "));
    kill(static_cast<pid_t>(process.processId()), SIGINT);
    QCOMPARE(program.finish().status, 128 + SIGINT);
    QCOMPARE(file("out.wav"), QByteArray("an older file"));
}

void tst_RenderCommand::limitOnFileSizeLeavesNothingBehind()
{
    makeFile(path("long.abc"), EndlessTune);
    const QStringList before = listing(m_dir->path());
    ProgramRun program(arguments(args({"out.wav", "long.abc"})));
    program.workingDirectory(m_dir->path()).inChild([] {
        const rlimit limit = {5000, 5000};
        setrlimit(RLIMIT_FSIZE, &limit);
    });
    const ProgramRun::Outcome outcome = program.outcome();
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("quillmoor-cli: Could not write out.wav: File too large\n"),
             outcome.errors);
    QCOMPARE(listing(m_dir->path()), before);
}

void tst_RenderCommand::everyTrackOfAMidiFileIsAPart()
{
    makeFile(path("a.mid"), trio());
    tune("1.abc", "K:C\nC\n");
    tune("2.abc", "K:C\nzC\n");
    const ProgramRun::Outcome midi = run(args({"midi.wav", "a.mid"}));
    const ProgramRun::Outcome tunes = run(args({"tunes.wav", "1.abc", "2.abc", "1.abc"}));
    QCOMPARE(midi.errors, SmallGameLog);
    QVERIFY2(midi.output.contains(",\"notes\":3,"), midi.output);
    QVERIFY(peaks(file("midi.wav")).left > 1000);
    QCOMPARE(file("midi.wav"), file("tunes.wav"));
    QCOMPARE(midi.status + tunes.status, 0);
}

void tst_RenderCommand::optionsHoldForAllTracksOfAFile()
{
    makeFile(path("a.mid"), trio());
    run(args({"one.wav", "plain.abc"}));
    run(args({"two.wav", "plain.abc", "--volume", "0", "a.mid"}));
    run(args({"left.wav", "--pan", "-1", "a.mid"}));
    QCOMPARE(peaks(file("two.wav")).left, peaks(file("one.wav")).left);
    QVERIFY(peaks(file("left.wav")).left > 1000);
    QCOMPARE(peaks(file("left.wav")).right, 0);
}

void tst_RenderCommand::percussionIsPlayedAsAnyTrack()
{
    makeFile(path("a.mid"), MidiBuilder::file({note(9, 61)}));
    QVERIFY2(run(args({"out.wav", "a.mid"})).errors.contains("the instrument 'Drum' has no note"),
             "the first of the game");
    const ProgramRun::Outcome outcome = run(args({"out.wav", "--instrument", "Lute", "a.mid"}));
    COMPARE_OUTCOME(outcome, 0, outcome.output, SmallGameLog);
    QVERIFY(peaks(file("out.wav")).left > 1000);
}

void tst_RenderCommand::unmappedNoteOfATrackIsNamed()
{
    makeFile(path("a.mid"), MidiBuilder::file({note(0, 60), note(1, 62).repeated(5), note(2, 63)}));
    COMPARE_OUTCOME(run(args({"out.wav", "a.mid"})), 1, "",
                    SmallGameLog
                        + "quillmoor-cli: a.mid: track 2, bar 1: the instrument 'Drum' has no note "
                          "D4 (D in ABC) (and 4 more).\n"
                          "quillmoor-cli: a.mid: track 3, bar 1: the instrument 'Drum' has no note "
                          "D#4 (^D in ABC).\n"
                          "quillmoor-cli: Nothing was rendered; --skip-unmapped leaves such notes "
                          "out.\n");
    QVERIFY(!QFile::exists(path("out.wav")));
    const ProgramRun::Outcome skipped = run(args({"out.wav", "--skip-unmapped", "a.mid"}));
    QVERIFY2(skipped.output.contains(",\"notes\":1,"), skipped.output);
    QVERIFY2(skipped.output.endsWith(",\"skipped\":6}\n"), skipped.output);
}

void tst_RenderCommand::midiOptionsApply()
{
    // A bend to a note that the instrument lacks; on another channel a note of two chunks.
    makeFile(path("a.mid"),
             MidiBuilder::file(
                 {noteOn(0, 0, 60) + bend(240, 0, 16383) + noteOff(240, 0, 60) + note(1, 60),
                  note(1, 61)}));
    const auto errors = [this](const QStringList &options) {
        return run(args({"out.wav", "a.mid"}) + options).errors;
    };
    QVERIFY(errors({}).contains("a.mid: track 1, bar 1: the instrument 'Drum' has no note D4"));
    QVERIFY(errors({}).contains("a.mid: track 2, bar 1: the instrument 'Drum' has no note"));
    QVERIFY(!errors(args({"--no-pitch-bend"})).contains("track 1, "));
    QVERIFY(errors(args({"--no-merge-channels"})).contains("a.mid: track 3, bar 1: "));
    makeFile(path("b.mid"), MidiBuilder::file({noteOn(1, 0, 60) + noteOff(480, 0, 60)}));
    QCOMPARE(run(args({"a.wav", "b.mid"})).status, 0);
    QCOMPARE(run(args({"b.wav", "--no-auto-realign", "b.mid"})).status, 0);
    QVERIFY(file("a.wav") != file("b.wav"));
}

void tst_RenderCommand::midiMayComeFromStandardInput()
{
    makeFile(path("a.mid"), trio());
    run(args({"a.wav", "a.mid"}));
    ProgramRun program(arguments(args({"b.wav", "-"})));
    QCOMPARE(program.workingDirectory(m_dir->path()).input(trio()).outcome().status, 0);
    QCOMPARE(file("b.wav"), file("a.wav"));
    COMPARE_OUTCOME(run(args({"out.wav", "-", "-"})), 2, "",
                    "quillmoor-cli: Standard input (-) can be read only once.\n"
                    "quillmoor-cli: Try 'quillmoor-cli render --help'.\n");
}

void tst_RenderCommand::midiWithoutNotesIsLeftOut()
{
    const QByteArray note = "quillmoor-cli: none.mid: There are no notes in it.\n";
    makeFile(path("none.mid"), midiWithoutNotes());
    COMPARE_OUTCOME(run(args({"out.wav", "none.mid"})), 1, "",
                    note + "quillmoor-cli: Nothing was rendered.\n");
    const ProgramRun::Outcome outcome = run(args({"out.wav", "none.mid", "plain.abc"}));
    COMPARE_OUTCOME(outcome, 0, outcome.output, note + SmallGameLog);
    QVERIFY2(outcome.output.contains(",\"notes\":1,"), outcome.output);
}

PROGRAM_TEST_MAIN(tst_RenderCommand)
#include "tst_RenderCommand.moc"

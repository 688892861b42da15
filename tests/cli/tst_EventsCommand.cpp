#include "ProgramRun.h"
#include "support/MidiBuilder.h"

#include <QtTest>

class tst_EventsCommand : public QObject {
    Q_OBJECT

private slots:
    void init();

    void tuneIsPrintedAsOneObject();
    void everyKindOfEventHasItsMembers();
    void headersAreInTheOrderOfTheModel();
    void sixtyFourBitNumbersAreExact();
    void fileIsNamedAsGiven();
    void failingFilesDoNotStopTheOthers();
    void directoryCannotBeOpened();
    void parserErrorsAreReported();
    void parserWarningsNameTheFile();
    void repeatedWarningsAreCounted();
    void textEndsAtTheFirstNul();
    void endlessInputOfNulsIsAnEmptyText();
    void standardInputIsADash();
    void anyFileNameWorks_data();
    void anyFileNameWorks();
    void fileNameMayLookLikeAnOption();
    void readerMayGoAway();
    void midiFileGivesAnObjectForEachTrack();
    void midiIsKnownByNameOrFirstBytes_data();
    void midiIsKnownByNameOrFirstBytes();
    void midiMayComeByteByByte();
    void midiFileWithoutNotesGivesNoObject();
    void brokenMidiFilesAreReported_data();
    void brokenMidiFilesAreReported();
    void channelsAreMerged();
    void timesAreRealigned();
    void bendsAreFollowed();
    void storedSettingsPlayNoPart();
    void standardInputIsReadOnce();
    void resultsAndWarningsAreInTheOrderOfTheFiles();

private:
    ProgramRun::Outcome eventsOf(const QByteArray &midi, const QStringList &options);

    QString tune(const QString &name, const QByteArray &text);

    QScopedPointer<QTemporaryDir> m_dir;
};

namespace {

const QByteArray Simple = "X:1\nT:A\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\nC\n";

QByteArray simpleObject(const QByteArray &file)
{
    return "{\"file\":\"" + file
        + "\",\"track\":1,\"headers\":{\"K\":[\"C\"],\"L\":[\"1/4\"],\"M\":[\"4/4\"],"
          "\"Q\":[\"1/4=120\"],\"T\":[\"A\"],\"X\":[\"1\"]},\"ticksPerMinute\":3628800,"
          "\"measureLength\":120960,\"beatsPerMeasure\":4,\"length\":30240,\"noteCount\":1,"
          "\"events\":[{\"type\":\"Note\",\"time\":0,\"note\":60,\"duration\":30240}]}\n";
}

/// Two channels in two chunks.
QByteArray duet()
{
    using namespace MidiBuilder;
    return file(
        {tempo(0, 400000) + meter(0, 3, 2) + key(0, -3, 1) + program(0, 0, 40) + noteOn(0, 0, 60)
             + noteOff(480, 0, 60),
         noteOn(480, 9, 36) + noteOff(240, 9, 36) + noteOn(0, 0, 64) + noteOff(480, 0, 64)});
}

QByteArray duetObjects(const QByteArray &file)
{
    const QByteArray fields = "\"ticksPerMinute\":4536000,\"measureLength\":90720,"
                              "\"beatsPerMeasure\":3,";
    return "{\"file\":\"" + file
        + "\",\"track\":1,\"headers\":{\"K\":[\"Cm\"],\"M\":[\"3/4\"],\"Q\":[\"1/4=150\"],"
          "\"T\":[\"Track 1 - Violin\"]},"
        + fields
        + "\"length\":75600,\"noteCount\":2,\"events\":["
          "{\"type\":\"Note\",\"time\":0,\"note\":60,\"duration\":30240},"
          "{\"type\":\"Note\",\"time\":45360,\"note\":64,\"duration\":30240}]}\n"
          "{\"file\":\""
        + file
        + "\",\"track\":2,\"headers\":{\"K\":[\"Cm\"],\"M\":[\"3/4\"],\"Q\":[\"1/4=150\"],"
          "\"T\":[\"Track 10 - Percussion\"]},"
        + fields
        + "\"length\":45360,\"noteCount\":1,\"events\":["
          "{\"type\":\"Note\",\"time\":30240,\"note\":36,\"duration\":15120}]}\n";
}

/// What is printed of a title and its events.
QByteArrayList tracksOf(const QByteArray &output)
{
    QByteArrayList result;
    for (const QByteArray &line : output.trimmed().split('\n')) {
        const QJsonObject track = QJsonDocument::fromJson(line).object();
        const QJsonValue titles =
            track.value(QStringLiteral("headers")).toObject().value(QStringLiteral("T"));
        QByteArray text = titles.toArray().first().toString().toUtf8() + ':';
        for (const QJsonValue event : track.value(QStringLiteral("events")).toArray()) {
            for (const char *const member : {"time", "note", "duration"})
                text += ' '
                    + QByteArray::number(event.toObject().value(QLatin1String(member)).toDouble());
            text += ',';
        }
        result.append(text);
    }
    return result;
}

} // namespace

void tst_EventsCommand::init()
{
    m_dir.reset(new QTemporaryDir);
}

QString tst_EventsCommand::tune(const QString &name, const QByteArray &text)
{
    QString path = m_dir->filePath(name);
    makeFile(path, text);
    return path;
}

void tst_EventsCommand::tuneIsPrintedAsOneObject()
{
    const QString path = tune(QStringLiteral("a.abc"), Simple);
    COMPARE_OUTCOME(runProgram({QStringLiteral("events"), path}), 0, simpleObject(path.toUtf8()),
                    "");
}

void tst_EventsCommand::everyKindOfEventHasItsMembers()
{
    const QString path =
        tune(QStringLiteral("a.abc"),
             "X:1\nT:A\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\nC\nQ:1/4=60\nK:Gmin\nL:1/8\nM:3/4\nD\n");
    const ProgramRun::Outcome outcome = runProgram({QStringLiteral("events"), path});
    QCOMPARE(outcome.status, 0);
    const int events = outcome.output.indexOf("\"events\":");
    QCOMPARE(outcome.output.mid(events),
             QByteArray("\"events\":[{\"type\":\"Note\",\"time\":0,\"note\":60,\"duration\":30240},"
                        "{\"type\":\"Tempo\",\"time\":30240,\"num\":1,\"den\":4,\"bpm\":60,"
                        "\"ticksPerMinute\":1814400},"
                        "{\"type\":\"Key\",\"time\":30240,\"key\":9,\"mode\":1},"
                        "{\"type\":\"UnitLength\",\"time\":30240,\"num\":1,\"den\":8},"
                        "{\"type\":\"Meter\",\"time\":30240,\"num\":3,\"den\":4},"
                        "{\"type\":\"Note\",\"time\":30240,\"note\":62,\"duration\":15120}]}\n"));
}

void tst_EventsCommand::headersAreInTheOrderOfTheModel()
{
    const QString path = tune(QStringLiteral("a.abc"), "X:1\nT:older\nT:newest\nK:C\nC\n");
    const ProgramRun::Outcome outcome = runProgram({QStringLiteral("events"), path});
    QVERIFY(outcome.output.contains("\"T\":[\"newest\",\"older\"]"));
}

void tst_EventsCommand::sixtyFourBitNumbersAreExact()
{
    // Longer than the integers that a double holds exactly would need hours of notes; a tempo
    // wraps at 32 bits, so its ticks stay below. The digits of both are still all there.
    const QString path = tune(QStringLiteral("a.abc"), "X:1\nT:A\nL:1/1\nQ:1/1=35507\nK:C\nC\n");
    const ProgramRun::Outcome outcome = runProgram({QStringLiteral("events"), path});
    QVERIFY2(outcome.output.contains("\"ticksPerMinute\":4294926720,"), outcome.output);
}

void tst_EventsCommand::fileIsNamedAsGiven()
{
    tune(QStringLiteral("a.abc"), Simple);
    ProgramRun program(args({"events", "./a.abc"}));
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 0, simpleObject("./a.abc"),
                    "");
}

void tst_EventsCommand::failingFilesDoNotStopTheOthers()
{
    tune(QStringLiteral("a.abc"), Simple);
    ProgramRun program(args({"events", "missing.abc", "a.abc", ""}));
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 1,
                    "{\"file\":\"missing.abc\",\"error\":\"Could not open file.\"}\n"
                        + simpleObject("a.abc")
                        + "{\"file\":\"\",\"error\":\"Could not open file.\"}\n",
                    "");
}

void tst_EventsCommand::directoryCannotBeOpened()
{
    COMPARE_OUTCOME(runProgram(args({"events", "/"})), 1,
                    "{\"file\":\"/\",\"error\":\"Could not open file.\"}\n", "");
}

void tst_EventsCommand::parserErrorsAreReported()
{
    tune(QStringLiteral("a.abc"), "no tune at all");
    ProgramRun program(args({"events", "a.abc"}));
    const ProgramRun::Outcome outcome = program.workingDirectory(m_dir->path()).outcome();
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.output.startsWith("{\"file\":\"a.abc\",\"error\":\""), outcome.output);
    QCOMPARE(outcome.output.count('\n'), 1);
    QCOMPARE(outcome.errors, QByteArray());
}

void tst_EventsCommand::parserWarningsNameTheFile()
{
    tune(QStringLiteral("a.abc"), "X:1\nT:A\nK:?\nC\n");
    ProgramRun program(args({"events", "a.abc"}));
    const ProgramRun::Outcome outcome = program.workingDirectory(m_dir->path()).outcome();
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.errors, QByteArray("quillmoor-cli: a.abc: \"Could not parse key: ?\"\n"));
}

void tst_EventsCommand::repeatedWarningsAreCounted()
{
    tune(QStringLiteral("a.abc"), "X:1\nT:A\nK:C\nC\nK:?\nC\nK:?\nC\nK:?\nC\n");
    ProgramRun program(args({"events", "a.abc", "missing.abc"}));
    const ProgramRun::Outcome outcome = program.workingDirectory(m_dir->path()).outcome();
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.errors,
             QByteArray("quillmoor-cli: a.abc: \"Could not parse key: '?'\"\n"
                        "quillmoor-cli: (the last warning came 2 more times)\n"));
}

void tst_EventsCommand::textEndsAtTheFirstNul()
{
    tune(QStringLiteral("a.abc"), Simple + QByteArray(1, '\0') + "K:nonsense\nDDD");
    ProgramRun program(args({"events", "a.abc"}));
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 0, simpleObject("a.abc"),
                    "");
}

void tst_EventsCommand::endlessInputOfNulsIsAnEmptyText()
{
    tune(QStringLiteral("empty.abc"), {});
    ProgramRun ofNuls(args({"events", "/dev/zero"}));
    ProgramRun ofNothing(args({"events", "empty.abc"}));
    const ProgramRun::Outcome nuls = ofNuls.outcome();
    const ProgramRun::Outcome nothing = ofNothing.workingDirectory(m_dir->path()).outcome();
    QCOMPARE(nuls.status, nothing.status);
    QCOMPARE(QByteArray(nuls.output).replace("/dev/zero", "empty.abc"), nothing.output);
}

void tst_EventsCommand::standardInputIsADash()
{
    COMPARE_OUTCOME(ProgramRun(args({"events", "-"})).input(Simple).outcome(), 0, simpleObject("-"),
                    "");
}

void tst_EventsCommand::anyFileNameWorks_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("printed");

    QTest::newRow("UTF-8") << QByteArray("\xc3\xa9.abc") << QByteArray("\xc3\xa9.abc");
    QTest::newRow("Latin-1") << QByteArray("caf\xe9.abc") << QByteArray("caf\\udce9.abc");
    QTest::newRow("overlong") << QByteArray("\xc0\xaf.abc") << QByteArray("\\udcc0\\udcaf.abc");
    QTest::newRow("line feed") << QByteArray("a\nb.abc") << QByteArray("a\\nb.abc");
    QTest::newRow("four bytes") << QByteArray("\xf0\x9d\x84\x9e.abc")
                                << QByteArray("\xf0\x9d\x84\x9e.abc");
}

void tst_EventsCommand::anyFileNameWorks()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, printed);
    tune(FileNameCodec::decode(name), Simple);
    ProgramRun program({QStringLiteral("events"), FileNameCodec::decode(name)});
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 0, simpleObject(printed),
                    "");
}

void tst_EventsCommand::fileNameMayLookLikeAnOption()
{
    tune(QStringLiteral("--help"), Simple);
    ProgramRun program(args({"events", "--", "--help"}));
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 0, simpleObject("--help"),
                    "");
}

void tst_EventsCommand::readerMayGoAway()
{
    QStringList arguments = args({"events"});
    const QString path = tune(QStringLiteral("a.abc"), Simple);
    while (arguments.size() < 5000) // more than a pipe holds
        arguments.append(path);
    QProcess pipeline;
    pipeline.start(QStringLiteral("/bin/sh"),
                   QStringList{QStringLiteral("-c"),
                               QStringLiteral("{ \"$@\"; echo status $? >&2; } | head -n 1"),
                               QStringLiteral("sh"), QStringLiteral(QUILLMOOR_CLI)}
                       + arguments);
    QVERIFY(pipeline.waitForFinished());
    QCOMPARE(pipeline.readAllStandardOutput(), simpleObject(path.toUtf8()));
    QCOMPARE(pipeline.readAllStandardError(), QByteArray("status 1\n"));
}

ProgramRun::Outcome tst_EventsCommand::eventsOf(const QByteArray &midi, const QStringList &options)
{
    return ProgramRun(args({"events", "-"}) + options).input(midi).outcome();
}

void tst_EventsCommand::midiFileGivesAnObjectForEachTrack()
{
    tune(QStringLiteral("duet.mid"), duet());
    ProgramRun program(args({"events", "duet.mid"}));
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 0, duetObjects("duet.mid"),
                    "");
}

void tst_EventsCommand::midiIsKnownByNameOrFirstBytes_data()
{
    QTest::addColumn<QString>("name");

    for (const char *const name : {"a.mid", "a.MID", "a.midi", "a.kar", "a.abc", "a"})
        QTest::newRow(name) << QString::fromUtf8(name);
}

void tst_EventsCommand::midiIsKnownByNameOrFirstBytes()
{
    QFETCH(QString, name);
    tune(name, duet());
    ProgramRun program({QStringLiteral("events"), name});
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 0,
                    duetObjects(name.toUtf8()), "");
}

void tst_EventsCommand::midiMayComeByteByByte()
{
    COMPARE_OUTCOME(eventsOf(duet(), {}), 0, duetObjects("-"), "");
    ProgramRun program(args({"events", "-"}));
    program.keepInputOpen();
    QProcess &process = program.start();
    for (const char byte : duet()) {
        process.write(&byte, 1);
        QVERIFY(process.waitForBytesWritten());
    }
    process.closeWriteChannel();
    COMPARE_OUTCOME(program.finish(), 0, duetObjects("-"), "");
}

void tst_EventsCommand::midiFileWithoutNotesGivesNoObject()
{
    tune(QStringLiteral("none.mid"), MidiBuilder::file({MidiBuilder::tempo(0, 500000)}));
    tune(QStringLiteral("duet.mid"), duet());
    ProgramRun program(args({"events", "none.mid", "duet.mid"}));
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 0, duetObjects("duet.mid"),
                    "quillmoor-cli: none.mid: There are no notes in it.\n");
}

void tst_EventsCommand::brokenMidiFilesAreReported_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("error");

    QTest::newRow("empty") << QByteArray() << QByteArray("Invalid MIDI file.");
    QTest::newRow("a tune") << Simple << QByteArray("Invalid MIDI file.");
    QTest::newRow("format 2") << MidiBuilder::header(2, 1, 480)
                              << QByteArray("Unsupported MIDI type 2.");
}

void tst_EventsCommand::brokenMidiFilesAreReported()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, error);
    tune(QStringLiteral("a.mid"), bytes);
    tune(QStringLiteral("duet.mid"), duet());
    ProgramRun program(args({"events", "a.mid", "none.mid", "duet.mid"}));
    COMPARE_OUTCOME(program.workingDirectory(m_dir->path()).outcome(), 1,
                    "{\"file\":\"a.mid\",\"error\":\"" + error
                        + "\"}\n{\"file\":\"none.mid\",\"error\":\"Could not open file.\"}\n"
                        + duetObjects("duet.mid"),
                    "");
}

void tst_EventsCommand::channelsAreMerged()
{
    QCOMPARE(tracksOf(eventsOf(duet(), {}).output),
             (QByteArrayList{"Track 1 - Violin: 0 60 30240, 45360 64 30240,",
                             "Track 10 - Percussion: 30240 36 15120,"}));
    QCOMPARE(tracksOf(eventsOf(duet(), args({"--no-merge-channels"})).output),
             (QByteArrayList{"Track 1 - Violin: 0 60 30240,",
                             "Track 2 - Acoustic Grand Piano: 45360 64 30240,",
                             "Track 3 - Percussion: 30240 36 15120,"}));
}

void tst_EventsCommand::timesAreRealigned()
{
    using namespace MidiBuilder;
    const QByteArray midi = file({noteOn(1, 0, 60) + noteOff(478, 0, 60)});
    QCOMPARE(tracksOf(eventsOf(midi, {}).output),
             (QByteArrayList{"Track 1 - Acoustic Grand Piano: 0 60 30240,"}));
    QCOMPARE(tracksOf(eventsOf(midi, args({"--no-auto-realign"})).output),
             (QByteArrayList{"Track 1 - Acoustic Grand Piano: 63 60 30114,"}));
}

void tst_EventsCommand::bendsAreFollowed()
{
    using namespace MidiBuilder;
    const QByteArray midi = file({noteOn(0, 0, 60) + bend(480, 0, 16383) + noteOff(480, 0, 60)});
    QCOMPARE(tracksOf(eventsOf(midi, {}).output),
             (QByteArrayList{"Track 1 - Acoustic Grand Piano: 0 60 30240, 30240 62 30240,"}));
    QCOMPARE(tracksOf(eventsOf(midi, args({"--no-pitch-bend"})).output),
             (QByteArrayList{"Track 1 - Acoustic Grand Piano: 0 60 60480,"}));
}

void tst_EventsCommand::storedSettingsPlayNoPart()
{
    const QString home = m_dir->path();
    QVERIFY(QDir(home).mkpath(QStringLiteral("Quillmoor Composer")));
    const QByteArray off = "{\"midi/mergeChannels\":false,\"midi/autoRealign\":false}";
    for (const char *const name : {"Quillmoor Composer/Quillmoor Composer.cfg",
                                   "Quillmoor Composer.cfg", "quillmoor-cli.cfg"})
        tune(QString::fromUtf8(name), off);
    ProgramRun program(args({"events", "-"}));
    program.environment("HOME", home).environment("XDG_CONFIG_HOME", home).input(duet());
    COMPARE_OUTCOME(program.outcome(), 0, duetObjects("-"), "");
}

void tst_EventsCommand::standardInputIsReadOnce()
{
    COMPARE_OUTCOME(runProgram(args({"events", "-", "-"})), 2, "",
                    "quillmoor-cli: Standard input (-) can be read only once.\n"
                    "quillmoor-cli: Try 'quillmoor-cli events --help'.\n");
}

void tst_EventsCommand::resultsAndWarningsAreInTheOrderOfTheFiles()
{
    QStringList names;
    QByteArray files;
    QByteArray warnings;
    for (int i = 0; i < 200; ++i) {
        // Long and short ones in turn, so that many are done before the ones before them.
        const QByteArray name = QByteArray::number(i) + ".abc";
        const QByteArray notes = QByteArray("C").repeated(i % 10 == 0 ? 20000 : 1);
        names.append(QString::fromUtf8(name));
        tune(names.last(), "X:1\nT:A\nK:" + QByteArray(1, '?') + '\n' + notes + '\n');
        files += name + ' ';
        warnings += "quillmoor-cli: " + name + ": \"Could not parse key: ?\"\n";
    }
    ProgramRun program(args({"events"}) + names);
    const ProgramRun::Outcome outcome = program.workingDirectory(m_dir->path()).outcome();
    QCOMPARE(outcome.errors, warnings);
    QByteArray printed;
    for (const QByteArray &line : outcome.output.trimmed().split('\n'))
        printed += line.mid(9, line.indexOf("\",") - 9) + ' ';
    QCOMPARE(printed, files);
}

PROGRAM_TEST_MAIN(tst_EventsCommand)
#include "tst_EventsCommand.moc"

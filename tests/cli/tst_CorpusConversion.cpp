#include "ProgramRun.h"

#include <QDir>
#include <QDirIterator>
#include <QtTest>

class tst_CorpusConversion : public QObject {
    Q_OBJECT

private slots:
    void everyFileIsAccountedFor_data();
    void everyFileIsAccountedFor();
    void transformedTracksAreAllWritten();
};

namespace {

/// Relative to the corpus, sorted as the program does.
QStringList midiFiles()
{
    const QDir corpus(QStringLiteral(QUILLMOOR_CORPUS "/midi"));
    QStringList files;
    QDirIterator walk(corpus.path(), {QStringLiteral("*.mid"), QStringLiteral("*.kar")},
                      QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext())
        files.append(corpus.relativeFilePath(walk.next()));
    files.sort();
    return files;
}

/// The files that a member names, each once, in their order.
QStringList filesIn(const QByteArray &output, const char *member)
{
    QStringList files;
    for (const QByteArray &line : output.trimmed().split('\n')) {
        const QString file =
            QJsonDocument::fromJson(line).object().value(QLatin1String(member)).toString();
        if (files.isEmpty() || files.last() != file)
            files.append(file);
    }
    return files;
}

/// Those that a message is about.
QStringList filesOfMessages(const QByteArray &errors)
{
    QStringList files;
    for (const QString &line : QString::fromUtf8(errors).split(QLatin1Char('\n'))) {
        const QStringList parts = line.split(QStringLiteral(": "));
        if (parts.size() > 2 && (files.isEmpty() || files.last() != parts.at(1)))
            files.append(parts.at(1));
    }
    return files;
}

ProgramRun::Outcome convert(const QStringList &options)
{
    ProgramRun program(args({"abc", "."}) + options);
    return program.workingDirectory(QStringLiteral(QUILLMOOR_CORPUS "/midi")).outcome();
}

} // namespace

void tst_CorpusConversion::everyFileIsAccountedFor_data()
{
    QTest::addColumn<QStringList>("options");

    QTest::newRow("defaults") << QStringList();
    QTest::newRow("all switched off")
        << args({"--no-merge-channels", "--no-auto-realign", "--no-pitch-bend"});
}

void tst_CorpusConversion::everyFileIsAccountedFor()
{
    QFETCH(QStringList, options);
    const QTemporaryDir dir;
    const ProgramRun::Outcome outcome =
        convert(options + args({"--output-dir"}) + QStringList(dir.path()));
    QStringList all;
    for (const QString &file : midiFiles())
        all.append(QStringLiteral("./") + file);
    QCOMPARE(all.size(), 70);
    QStringList seen = filesIn(outcome.output, "file");
    for (const QString &file : filesOfMessages(outcome.errors)) {
        if (!seen.contains(file)) // a file with a warning is written all the same
            seen.append(file);
    }
    seen.sort();
    QCOMPARE(seen, all);
    for (const QString &output : filesIn(outcome.output, "output"))
        QVERIFY2(fileContents(output).startsWith("X: 1\nT: "), qPrintable(output));
    QVERIFY(outcome.errors.contains(
        "quillmoor-cli: ./smf_tests/test-2-tracks-type-2.mid: Unsupported MIDI type 2.\n"));
    QCOMPARE(outcome.status, 1);
}

void tst_CorpusConversion::transformedTracksAreAllWritten()
{
    const QTemporaryDir plain;
    const QTemporaryDir changed;
    const QStringList output = args({"--output-dir"});
    const ProgramRun::Outcome before = convert(output + QStringList(plain.path()));
    const ProgramRun::Outcome after =
        convert(output + QStringList(changed.path())
                + args({"--octave-down", "--realign", "4,3,0,0,0", "--key", "Bbm", "--unit-length",
                        "1/16", "--transpose", "1"}));
    QCOMPARE(QString::fromUtf8(after.output).replace(changed.path(), plain.path()),
             QString::fromUtf8(before.output));
    QCOMPARE(after.errors, before.errors);
    for (const QString &file : filesIn(after.output, "output")) {
        const QByteArray text = fileContents(file);
        QVERIFY2(text.contains("\nK: Bbm\n") && text.contains("\nL: 1/16\n"), qPrintable(file));
    }
}

PROGRAM_TEST_MAIN(tst_CorpusConversion)
#include "tst_CorpusConversion.moc"

#include "ABC/ABCFile.h"
#include "ABC/FieldValues.h"

#include "AbcTestSupport.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QtTest>

using namespace AbcTest;

namespace {

QStringList tunes()
{
    QStringList paths;
    QDirIterator files(QStringLiteral(QUILLMOOR_CORPUS "/abc"), {"*.abc"_s}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext())
        paths << files.next();
    paths.sort();
    return paths;
}

bool isSpecifiedMessage(const QString &message)
{
    static const QRegularExpression messages(
        "^(Unexpected token found in ABC header: line \\d+, column \\d+\\."_s
        "|Unknown token found in ABC body at line \\d+, column \\d+\\."_s
        "|Unexpected token found in chord at line \\d+, column \\d+\\.)$"_s);
    return messages.match(message).hasMatch();
}

/// Whether parser and generator read the key alike: they differ on "maj"_s and "mix"_s.
bool hasPlainKey(const Track &track)
{
    const QString key = track.header("K"_s);
    return FieldValues::key(key).row == FieldValues::keyForGenerator(key).row;
}

QString times(const Track &track)
{
    return notes(track).remove(QRegularExpression("\\d+@"_s));
}

QStringList sortedLines(const QString &text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    lines.sort();
    return lines;
}

} // namespace

class TestABCCorpus : public QObject {
    Q_OBJECT

private slots:
    void readsAndRewritesEveryTune()
    {
        LogRecorder recorder;
        int parsed = 0;
        int failed = 0;
        int noteCount = 0;
        int plain = 0;
        const QStringList paths = tunes();
        QVERIFY(!paths.isEmpty());
        for (const QString &path : paths) {
            Track track;
            const QString message = thrownBy([&] { track = loadABCFile(path); });
            if (message != "(nothing thrown)"_s) {
                QVERIFY2(isSpecifiedMessage(message), qPrintable(path + ": "_s + message));
                ++failed;
                continue;
            }
            ++parsed;
            noteCount += track.noteCount();
            const QString first = generate(track);
            Track again = parse(first);
            QVERIFY2(times(again) == times(track), qPrintable(path));
            if (hasPlainKey(track)) {
                QVERIFY2(notes(again) == notes(track), qPrintable(path));
                QVERIFY2(controls(again) == controls(track), qPrintable(path));
                QVERIFY2(sortedLines(generate(again)) == sortedLines(first), qPrintable(path));
                ++plain;
            }
            QVERIFY2(again.ticksPerMinute() == track.ticksPerMinute(), qPrintable(path));
            QVERIFY2(again.measureLength() == track.measureLength(), qPrintable(path));
        }
        qInstallMessageHandler(nullptr);
        qInfo("%d tunes: %d parsed (%d with a plain key), %d failed with a message, %d notes",
              paths.size(), parsed, plain, failed, noteCount);
        QCOMPARE(parsed + failed, paths.size());
        QVERIFY(noteCount > 0);
    }
};

QTEST_APPLESS_MAIN(TestABCCorpus)
#include "tst_ABCCorpus.moc"

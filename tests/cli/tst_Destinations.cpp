#include "cli/Destinations.h"
#include "support/ProcessRun.h"

#include <QDir>
#include <QtTest>

Q_DECLARE_METATYPE(Source)

class tst_Destinations : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void abcKeepsItsName();
    void midiTracksAreNumbered();
    void foldersAreKept();
    void distinctPlacesAreFine_data();
    void distinctPlacesAreFine();
    void sharedPlacesAreRefused_data();
    void sharedPlacesAreRefused();
    void inputsAreNotReplaced_data();
    void inputsAreNotReplaced();

private:
    QString m_previous;
    QScopedPointer<QTemporaryDir> m_dir;
};

namespace {

QVector<Source> sourcesOf(const QStringList &files)
{
    QVector<Source> sources;
    for (const QString &file : files)
        sources.append({file, {}});
    return sources;
}

/// What check() throws; null for nothing.
QString refusal(const QString &directory, const QVector<Source> &sources)
{
    try {
        Destinations(directory).check(sources);
    } catch (const QString &message) {
        return message;
    }
    return {};
}

} // namespace

void tst_Destinations::init()
{
    m_previous = QDir::currentPath();
    m_dir.reset(new QTemporaryDir);
    QDir::setCurrent(m_dir->path());
}

void tst_Destinations::cleanup()
{
    QDir::setCurrent(m_previous);
}

void tst_Destinations::abcKeepsItsName()
{
    const Destinations destinations(QStringLiteral("out"));
    QCOMPARE(destinations.files({QStringLiteral("a/b.c.abc"), {}}, false, 1),
             args({"out/b.c.abc"}));
    QCOMPARE(destinations.files({QStringLiteral("-"), {}}, false, 1), args({"out/stdin.abc"}));
}

void tst_Destinations::midiTracksAreNumbered()
{
    const Destinations destinations(QStringLiteral("out"));
    QCOMPARE(destinations.files({QStringLiteral("a/b.c.mid"), {}}, true, 2),
             args({"out/b.c-1.abc", "out/b.c-2.abc"}));
    QCOMPARE(destinations.files({QStringLiteral("b.mid"), {}}, true, 1), args({"out/b-1.abc"}));
    QCOMPARE(destinations.files({QStringLiteral("-"), {}}, true, 1), args({"out/stdin-1.abc"}));
    QCOMPARE(destinations.files({QStringLiteral("b.mid"), {}}, true, 0), QStringList());
}

void tst_Destinations::foldersAreKept()
{
    const Destinations destinations(QStringLiteral("out"));
    const Source source{QStringLiteral("songs/x/y/a.mid"), QStringLiteral("x/y")};
    QCOMPARE(destinations.folder(source), QStringLiteral("out/x/y"));
    QCOMPARE(destinations.files(source, true, 1), args({"out/x/y/a-1.abc"}));
    QCOMPARE(destinations.folder({QStringLiteral("a.mid"), {}}), QStringLiteral("out"));
}

void tst_Destinations::distinctPlacesAreFine_data()
{
    QTest::addColumn<QStringList>("files");

    QTest::newRow("one") << args({"a.mid"});
    QTest::newRow("two") << args({"a.mid", "b.mid"});
    QTest::newRow("tune and MIDI of one name") << args({"a.abc", "a.mid"});
    QTest::newRow("number that no track has") << args({"a-0.abc", "a-01.abc", "a.mid"});
    QTest::newRow("no number") << args({"a-b.abc", "a-.abc", "a1.abc", "a.mid"});
    QTest::newRow("MIDI with a number") << args({"a-1.mid", "a.mid"});
    QTest::newRow("number of another") << args({"b-1.abc", "a.mid"});
    QTest::newRow("standard input and a file") << args({"-", "a.mid"});
}

void tst_Destinations::distinctPlacesAreFine()
{
    QFETCH(QStringList, files);
    QCOMPARE(refusal(QStringLiteral("out"), sourcesOf(files)), QString());
}

void tst_Destinations::sharedPlacesAreRefused_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("message");

    QTest::newRow("two tunes") << args({"a.abc", "x/a.abc"})
                               << "a.abc and x/a.abc would both be written to out/a.abc.";
    QTest::newRow("two MIDI files") << args({"a.mid", "b.mid", "x/a.mid"})
                                    << "a.mid and x/a.mid would both be written to out/a-1.abc.";
    QTest::newRow("two suffixes") << args({"a.MID", "a.kar"})
                                  << "a.MID and a.kar would both be written to out/a-1.abc.";
    QTest::newRow("tune after MIDI") << args({"a.mid", "a-12.abc"})
                                     << "a.mid and a-12.abc could both be written to out/a-12.abc.";
    QTest::newRow("tune before MIDI")
        << args({"a-1.abc", "a.mid"}) << "a.mid and a-1.abc could both be written to out/a-1.abc.";
    QTest::newRow("standard input as a tune")
        << args({"-", "stdin.abc"}) << "- and stdin.abc would both be written to out/stdin.abc.";
    QTest::newRow("standard input as MIDI")
        << args({"stdin.mid", "-"}) << "stdin.mid and - would both be written to out/stdin-1.abc.";
    QTest::newRow("one file twice")
        << args({"a.mid", "./a.mid"}) << "a.mid and ./a.mid would both be written to out/a-1.abc.";
}

void tst_Destinations::sharedPlacesAreRefused()
{
    QFETCH(QStringList, files);
    QFETCH(QString, message);
    QCOMPARE(refusal(QStringLiteral("out"), sourcesOf(files)), message);
}

void tst_Destinations::inputsAreNotReplaced_data()
{
    QTest::addColumn<QVector<Source>>("sources");
    QTest::addColumn<QString>("message");

    const auto row = [](const char *name, const QVector<Source> &sources, const char *message) {
        QTest::newRow(name) << sources << QString::fromUtf8(message);
    };
    const auto file = [](const char *path) { return Source{QString::fromUtf8(path), {}}; };
    row("by a tune", {file("a.abc")}, "./a.abc is an input file.");
    row("by a track", {file("m.mid"), file("x/m.abc")}, "./m-3.abc is an input file.");
    const Source elsewhere{QStringLiteral("a.abc"), QStringLiteral("y")};
    row("by a track in a folder", {{QStringLiteral("m.mid"), QStringLiteral("x")}, elsewhere},
        "./x/m-5.abc is an input file.");
    row("none", {file("m.mid"), elsewhere}, "");
}

void tst_Destinations::inputsAreNotReplaced()
{
    QFETCH(QVector<Source>, sources);
    QFETCH(QString, message);
    QDir().mkdir(QStringLiteral("x"));
    for (const char *const name : {"a.abc", "m.mid", "x/m.abc", "m-4.abc"})
        makeFile(QString::fromUtf8(name), "some bytes");
    // A track's file may be another input by another name.
    QVERIFY(QFile::link(QStringLiteral("x/m.abc"), QStringLiteral("m-3.abc")));
    QVERIFY(QFile::link(QStringLiteral("../a.abc"), QStringLiteral("x/m-5.abc")));
    QCOMPARE(refusal(QStringLiteral("."), sources), message);
}

QTEST_GUILESS_MAIN(tst_Destinations)
#include "tst_Destinations.moc"

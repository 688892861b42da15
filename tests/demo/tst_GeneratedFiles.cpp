#include "demo/GeneratedFiles.h"

#include "support/Thrown.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using Demo::GeneratedFiles;

class tst_GeneratedFiles : public QObject {
    Q_OBJECT

private slots:
    void createsDirectoriesAsNeeded();
    void replacesWhatAnEarlierRunWrote();
    void doesNotTouchAFileThatIsRightAlready();
    void refusesBeforeWritingAnythingOverAForeignFile();
    void refusesToReplaceAChangedFile();
    void writesAroundForeignAndChangedFiles();
    void takesADirectoryInTheWayForForeign();
    void leavesOtherFilesAlone();
    void namesTheDirectoryThatCannotBeCreated();
    void survivesADamagedList();
};

namespace {

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("(missing)");
}

void put(const QString &path, const QByteArray &contents)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contents);
}

GeneratedFiles songAndGame(const QString &dir, const QByteArray &contents)
{
    GeneratedFiles files(dir);
    files.add(QStringLiteral("a/song.abc"), contents);
    files.add(QStringLiteral("game.pak"), contents);
    return files;
}

} // namespace

void tst_GeneratedFiles::createsDirectoriesAsNeeded()
{
    const QTemporaryDir temp;
    songAndGame(temp.filePath(QStringLiteral("new/one")), "x").writeOrRefuse();
    QCOMPARE(contentsOf(temp.filePath(QStringLiteral("new/one/a/song.abc"))), QByteArray("x"));
    QCOMPARE(contentsOf(temp.filePath(QStringLiteral("new/one/game.pak"))), QByteArray("x"));
}

void tst_GeneratedFiles::replacesWhatAnEarlierRunWrote()
{
    const QTemporaryDir temp;
    songAndGame(temp.path(), "old").writeOrRefuse();
    songAndGame(temp.path(), "new").writeOrRefuse();
    QCOMPARE(contentsOf(temp.filePath(QStringLiteral("game.pak"))), QByteArray("new"));
    songAndGame(temp.path(), "newest").writeAround();
    QCOMPARE(contentsOf(temp.filePath(QStringLiteral("game.pak"))), QByteArray("newest"));
}

void tst_GeneratedFiles::doesNotTouchAFileThatIsRightAlready()
{
    const QTemporaryDir temp;
    const QString path = temp.filePath(QStringLiteral("game.pak"));
    put(path, "x");
    const QDateTime longAgo(QDate(2001, 2, 3), QTime(4, 5));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(longAgo, QFileDevice::FileModificationTime));
    file.close();
    songAndGame(temp.path(), "x").writeOrRefuse();
    QCOMPARE(QFileInfo(path).lastModified(), longAgo);
}

void tst_GeneratedFiles::refusesBeforeWritingAnythingOverAForeignFile()
{
    const QTemporaryDir temp;
    const QString path = temp.filePath(QStringLiteral("game.pak"));
    put(path, "the real game");
    const QString message = thrownBy([&] { songAndGame(temp.path(), "x").writeOrRefuse(); });
    QCOMPARE(message,
             QStringLiteral("'%1' is there already and is not from the demo game, or was changed "
                            "since. Move it away or choose another directory.")
                 .arg(path));
    QCOMPARE(contentsOf(path), QByteArray("the real game"));
    QVERIFY(!QFile::exists(temp.filePath(QStringLiteral("a"))));
}

void tst_GeneratedFiles::refusesToReplaceAChangedFile()
{
    const QTemporaryDir temp;
    songAndGame(temp.path(), "old").writeOrRefuse();
    put(temp.filePath(QStringLiteral("a/song.abc")), "changed");
    const QString message = thrownBy([&] { songAndGame(temp.path(), "new").writeOrRefuse(); });
    QVERIFY(message.startsWith(QLatin1Char('\'') + temp.filePath(QStringLiteral("a/song.abc"))));
    QCOMPARE(contentsOf(temp.filePath(QStringLiteral("game.pak"))), QByteArray("old"));
}

void tst_GeneratedFiles::writesAroundForeignAndChangedFiles()
{
    const QTemporaryDir temp;
    put(temp.filePath(QStringLiteral("game.pak")), "foreign");
    songAndGame(temp.path(), "old").writeAround();
    put(temp.filePath(QStringLiteral("a/song.abc")), "changed");
    songAndGame(temp.path(), "new").writeAround();
    songAndGame(temp.path(), "newer").writeAround();
    QCOMPARE(contentsOf(temp.filePath(QStringLiteral("game.pak"))), QByteArray("foreign"));
    QCOMPARE(contentsOf(temp.filePath(QStringLiteral("a/song.abc"))), QByteArray("changed"));
}

void tst_GeneratedFiles::takesADirectoryInTheWayForForeign()
{
    const QTemporaryDir temp;
    put(temp.filePath(QStringLiteral("game.pak/inside")), "x");
    const QString message = thrownBy([&] { songAndGame(temp.path(), "x").writeOrRefuse(); });
    QVERIFY(message.startsWith(QLatin1Char('\'') + temp.filePath(QStringLiteral("game.pak"))));
}

void tst_GeneratedFiles::leavesOtherFilesAlone()
{
    const QTemporaryDir temp;
    put(temp.filePath(QStringLiteral("a/mine.abc")), "mine");
    songAndGame(temp.path(), "x").writeOrRefuse();
    QCOMPARE(contentsOf(temp.filePath(QStringLiteral("a/mine.abc"))), QByteArray("mine"));
}

void tst_GeneratedFiles::namesTheDirectoryThatCannotBeCreated()
{
    const QTemporaryDir temp;
    put(temp.filePath(QStringLiteral("a")), "a file where a directory should be");
    QCOMPARE(thrownBy([&] { songAndGame(temp.path(), "x").writeOrRefuse(); }),
             QStringLiteral("Could not create the directory '%1'.")
                 .arg(temp.filePath(QStringLiteral("a"))));
}

void tst_GeneratedFiles::survivesADamagedList()
{
    const QTemporaryDir temp;
    songAndGame(temp.path(), "x").writeOrRefuse();
    put(temp.filePath(QStringLiteral("demo-files.json")), "{ \"a/song.abc\": [");
    songAndGame(temp.path(), "x").writeOrRefuse();
    QCOMPARE(contentsOf(temp.filePath(QStringLiteral("game.pak"))), QByteArray("x"));
}

QTEST_GUILESS_MAIN(tst_GeneratedFiles)
#include "tst_GeneratedFiles.moc"

#include "model/DocumentFile.h"

#include "support/SizeLimit.h"
#include "support/Thrown.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const QString notOpened = QStringLiteral("Could not open the file for saving.");
const QString tooLarge = QStringLiteral("Could not write the file: File too large");

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void makeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("could not write the test's file");
}

QString messageOf(const QString &path, const QByteArray &bytes)
{
    return thrownBy([&] { DocumentFile::save(path, bytes); });
}

QByteArray encoded(const QString &path)
{
    return QFile::encodeName(path);
}

mode_t modeOf(const QString &path)
{
    struct stat status = {};
    return stat(encoded(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

ino_t numberOf(const QString &path)
{
    struct stat status = {};
    return stat(encoded(path).constData(), &status) == 0 ? status.st_ino : 0;
}

/// The administrator may write everywhere; the tests are for everyone else.
class OrdinaryUser {
public:
    OrdinaryUser() { m_isAdministrator = geteuid() == 0 && seteuid(Nobody) == 0; }
    ~OrdinaryUser()
    {
        if (m_isAdministrator && seteuid(0) != 0)
            qFatal("could not become the administrator again");
    }
    Q_DISABLE_COPY(OrdinaryUser)

private:
    static constexpr uid_t Nobody = 65534;
    bool m_isAdministrator = false;
};

[[noreturn]] void saveForEver(const QString &path, const QByteArray &one, const QByteArray &other)
{
    for (;;) {
        DocumentFile::save(path, one);
        DocumentFile::save(path, other);
    }
}

/// Lets a process save the two in turn, and kills it.
void killWhileSaving(const QString &path, const QByteArray &one, const QByteArray &other,
                     useconds_t after)
{
    const pid_t child = fork();
    if (child == 0)
        saveForEver(path, one, other);
    usleep(after);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

} // namespace

class TestDocumentFile : public QObject {
    Q_OBJECT

private:
    QString path(const QString &name = QStringLiteral("tune.abc")) const
    {
        return m_dir->filePath(name);
    }

    QStringList listing() const
    {
        return QDir(m_dir->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    void openToAll(const QString &name, mode_t mode) const
    {
        QCOMPARE(chmod(encoded(name).constData(), mode), 0);
    }

    QScopedPointer<QTemporaryDir> m_dir;

private slots:
    void init()
    {
        m_dir.reset(new QTemporaryDir);
        QVERIFY(m_dir->isValid());
    }

    void createsAFile()
    {
        DocumentFile::save(path(), "new");
        QCOMPARE(contentsOf(path()), QByteArray("new"));
        QCOMPARE(listing(), QStringList{QStringLiteral("tune.abc")});
    }

    void aNewFileHasTheUsualPermissions()
    {
        const mode_t before = umask(027);
        DocumentFile::save(path(), "new");
        umask(before);
        QCOMPARE(modeOf(path()), mode_t(0640));
    }

    void replacesAFile()
    {
        makeFile(path(), "much longer than the other");
        DocumentFile::save(path(), "new");
        QCOMPARE(contentsOf(path()), QByteArray("new"));
        DocumentFile::save(path(), "");
        QCOMPARE(contentsOf(path()), QByteArray());
        QCOMPARE(listing(), QStringList{QStringLiteral("tune.abc")});
    }

    void keepsThePermissionsOfAFile()
    {
        makeFile(path(), "older");
        openToAll(path(), 0604);
        DocumentFile::save(path(), "new");
        QCOMPARE(modeOf(path()), mode_t(0604));
    }

    void aNameMayBeAsLongAsNamesCanBe()
    {
        const QString name = path(QString(255, QLatin1Char('n')));
        DocumentFile::save(name, "new");
        QCOMPARE(contentsOf(name), QByteArray("new"));
        DocumentFile::save(name, "newer");
        QCOMPARE(contentsOf(name), QByteArray("newer"));
        QCOMPARE(listing().size(), 1);
        QCOMPARE(messageOf(path(QString(256, QLatin1Char('n'))), "new"), notOpened);
    }

    void aSymbolicLinkStays()
    {
        makeFile(path(), "older");
        const QString link = path(QStringLiteral("link.abc"));
        QVERIFY(QFile::link(path(), link));
        DocumentFile::save(link, "new");
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(contentsOf(path()), QByteArray("new"));
    }

    void aLinkToNothingGetsItsFile()
    {
        const QString link = path(QStringLiteral("link.abc"));
        QVERIFY(QFile::link(path(), link));
        DocumentFile::save(link, "new");
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(contentsOf(path()), QByteArray("new"));
    }

    void otherNamesOfAFileStayItsNames()
    {
        makeFile(path(), "much longer than the other");
        const QString other = path(QStringLiteral("other.abc"));
        QCOMPARE(link(encoded(path()).constData(), encoded(other).constData()), 0);
        DocumentFile::save(path(), "new");
        QCOMPARE(contentsOf(other), QByteArray("new"));
        QCOMPARE(listing().size(), 2);
    }

    void aFileOfSomeoneElseStaysTheirs()
    {
        if (geteuid() != 0)
            return; // nobody else can give files away
        makeFile(path(), "older");
        QCOMPARE(chown(encoded(path()).constData(), 12345, 12345), 0);
        DocumentFile::save(path(), "new");
        QCOMPARE(contentsOf(path()), QByteArray("new"));
        QCOMPARE(QFileInfo(path()).ownerId(), 12345u);
        QCOMPARE(QFileInfo(path()).groupId(), 12345u);
    }

    void aFileInALockedDirectoryIsWrittenOver()
    {
        makeFile(path(), "much longer than the other");
        openToAll(path(), 0666);
        openToAll(m_dir->path(), 0555);
        const ino_t number = numberOf(path());
        {
            const OrdinaryUser user;
            DocumentFile::save(path(), "new");
            QCOMPARE(messageOf(path(QStringLiteral("another.abc")), "new"), notOpened);
        }
        openToAll(m_dir->path(), 0755);
        QCOMPARE(contentsOf(path()), QByteArray("new"));
        QCOMPARE(numberOf(path()), number);
    }

    void whatCannotBeOpenedIsToldAndStays_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("no name") << QString();
        QTest::newRow("a directory") << QStringLiteral("/");
        QTest::newRow("a directory that is not there") << QStringLiteral("/nonexistent/tune.abc");
        QTest::newRow("a file as a directory") << QStringLiteral("/dev/null/tune.abc");
    }
    void whatCannotBeOpenedIsToldAndStays()
    {
        QFETCH(const QString, name);
        QCOMPARE(messageOf(name, "new"), notOpened);
    }

    void aReadOnlyFileIsRefused()
    {
        makeFile(path(), "older");
        openToAll(path(), 0444);
        openToAll(m_dir->path(), 0777);
        QString message;
        {
            const OrdinaryUser user;
            message = messageOf(path(), "new");
        }
        QCOMPARE(message, notOpened);
        QCOMPARE(contentsOf(path()), QByteArray("older"));
    }

    void aPipeIsRefusedAndNotWaitedFor()
    {
        QCOMPARE(mkfifo(encoded(path()).constData(), 0600), 0);
        QCOMPARE(messageOf(path(), "new"), notOpened);
        QCOMPARE(listing().size(), 1);
    }

    void aDeviceIsWrittenToAsItIs()
    {
        DocumentFile::save(QStringLiteral("/dev/null"), "new");
        struct stat status = {};
        QCOMPARE(stat("/dev/null", &status), 0);
        QVERIFY(S_ISCHR(status.st_mode));
        QCOMPARE(messageOf(QStringLiteral("/dev/full"), "new"),
                 QStringLiteral("Could not write the file: No space left on device"));
    }

    void aFullDiskLeavesWhatWasThere_data()
    {
        QTest::addColumn<bool>("hasOtherName");
        QTest::addColumn<int>("olderSize");
        QTest::newRow("a replaced file") << false << 500;
        QTest::newRow("a file written over") << true << 500;
        QTest::newRow("a longer file written over") << true << 5000;
        QTest::newRow("an empty file written over") << true << 0;
    }
    void aFullDiskLeavesWhatWasThere()
    {
        QFETCH(const bool, hasOtherName);
        QFETCH(const int, olderSize);
        const QByteArray older(olderSize, 'o');
        makeFile(path(), older);
        const QByteArray other = encoded(path(QStringLiteral("other.abc")));
        QVERIFY(!hasOtherName || link(encoded(path()).constData(), other.constData()) == 0);
        const SizeLimit limit(1000);
        QCOMPARE(messageOf(path(), QByteArray(2000, 'n')), tooLarge);
        QCOMPARE(contentsOf(path()), older);
        QCOMPARE(listing().size(), hasOtherName ? 2 : 1);
    }

    void aFullDiskLeavesNoPartOfANewFile_data()
    {
        QTest::addColumn<int>("nameLength");
        QTest::newRow("short") << 8;
        QTest::newRow("as long as can be") << 255;
    }
    void aFullDiskLeavesNoPartOfANewFile()
    {
        QFETCH(const int, nameLength);
        const SizeLimit limit(1000);
        QCOMPARE(messageOf(path(QString(nameLength, QLatin1Char('n'))), QByteArray(2000, 'n')),
                 tooLarge);
        QCOMPARE(listing(), QStringList());
    }

    void aKilledProgramLeavesTheOlderFileOrTheNewOne()
    {
        const QByteArray one(3000000, '1');
        const QByteArray other(2000000, '2');
        for (useconds_t after = 1000; after < 30000; after += 1000) {
            makeFile(path(), one);
            killWhileSaving(path(), one, other, after);
            const QByteArray left = contentsOf(path());
            QVERIFY2(left == one || left == other, qPrintable(QString::number(left.size())));
        }
    }
};

QTEST_GUILESS_MAIN(TestDocumentFile)
#include "tst_DocumentFile.moc"

#include "SettingsChild.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopedPointer>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

namespace {

const QString NoteColorDefault = QStringLiteral("QColor #ff2060ff");

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isJsonObject(const QByteArray &bytes)
{
    return QJsonDocument::fromJson(bytes).isObject();
}

} // namespace

/// The settings' file, with processes of a program that has settings.
class TestSettingsFile : public QObject {
    Q_OBJECT

private slots:
    void init() { m_dir.reset(new QTemporaryDir); }

    void liesUnderTheOrganisationAndTheApplication()
    {
        SettingsChild child(configuration());
        child.set(Settings::PianoRollHScale, 6);
        child.sync();
        QCOMPARE(entries(configuration()), QStringList(QStringLiteral("composer.example")));
        QCOMPARE(entries(directory()), QStringList(QStringLiteral("Quillmoor Composer.cfg")));
    }

    void isIndentedJsonOfFlatKeys()
    {
        SettingsChild child(configuration());
        child.set(Settings::PianoRollHScale, 6);
        child.set(Settings::DirAbcOpen, QStringLiteral("/home/a b/\"Töne\""));
        child.set(Settings::LoadMods, true);
        child.setColor(Settings::NoteColor, QStringLiteral("#80102030"));
        child.sync();
        QCOMPARE(contentsOf(path()),
                 QByteArray("{\n"
                            "    \"dirs/abc/open\": \"/home/a b/\\\"Töne\\\"\",\n"
                            "    \"instruments/loadMods\": true,\n"
                            "    \"pianoroll/hScale\": 6,\n"
                            "    \"preview/noteColor\": \"#80102030\"\n"
                            "}\n"));
    }

    void isReadByTheNextRun()
    {
        SettingsChild first(configuration());
        first.set(Settings::PianoRollHScale, 6);
        first.set(Settings::DirAbcOpen, QStringLiteral("/home/a b/\"Töne\""));
        first.set(Settings::MergeChannels, false);
        first.setColor(Settings::NoteColor, QStringLiteral("#80102030"));
        QCOMPARE(first.finish(), 0);
        SettingsChild second(configuration());
        QCOMPARE(second.value(Settings::PianoRollHScale), QStringLiteral("int 6"));
        QCOMPARE(second.value(Settings::DirAbcOpen), QStringLiteral("QString /home/a b/\"Töne\""));
        QCOMPARE(second.value(Settings::MergeChannels), QStringLiteral("bool false"));
        QCOMPARE(second.value(Settings::NoteColor), QStringLiteral("QColor #80102030"));
        QVERIFY(second.contains(Settings::MergeChannels));
        QVERIFY(!second.contains(Settings::AutoRealign));
    }

    void hasKeysWhoseCaseMatters()
    {
        write("{\"PianoRoll/HScale\": 9}");
        SettingsChild child(configuration());
        QCOMPARE(child.value(Settings::PianoRollHScale), QStringLiteral("int 4"));
    }

    void convertsWhereNothingIsLost_data()
    {
        QTest::addColumn<int>("setting");
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QString>("value");
        const auto row = [](const char *name, Settings::Setting setting, const char *stored,
                            const char *value) {
            QTest::newRow(name) << int(setting) << QByteArray(stored) << QString::fromUtf8(value);
        };
        row("integer", Settings::RealignRegular, "3", "int 3");
        row("integer from 3.0", Settings::RealignRegular, "3.0", "int 3");
        row("integer from 3e0", Settings::RealignRegular, "3e0", "int 3");
        row("integer from text", Settings::RealignRegular, "\"3\"", "int 3");
        row("negative integer", Settings::RealignRegular, "-3", "int -3");
        row("integer from true", Settings::RealignRegular, "true", "int 1");
        row("no integer: fraction", Settings::RealignRegular, "3.5", "int 7");
        row("no integer: text", Settings::RealignRegular, "\"three\"", "int 7");
        row("no integer: empty text", Settings::RealignRegular, "\"\"", "int 7");
        row("no integer: beyond 32 bits", Settings::RealignRegular, "4294967299", "int 7");
        row("no integer: beyond 64 bits", Settings::RealignRegular, "1e300", "int 7");
        row("no integer: null", Settings::RealignRegular, "null", "int 7");
        row("no integer: list", Settings::RealignRegular, "[3]", "int 7");
        row("no integer: object", Settings::RealignRegular, "{\"a\": 3}", "int 7");
        row("boolean", Settings::WrapAround, "false", "bool false");
        row("boolean from 0", Settings::WrapAround, "0", "bool false");
        row("boolean from 1", Settings::LoadMods, "1", "bool true");
        row("boolean from text", Settings::WrapAround, "\"false\"", "bool false");
        row("no boolean: 2", Settings::LoadMods, "2", "bool false");
        row("no boolean: text", Settings::LoadMods, "\"yes\"", "bool false");
        row("no boolean: null", Settings::WrapAround, "null", "bool true");
        row("no boolean: list", Settings::WrapAround, "[]", "bool true");
        row("no boolean: object", Settings::WrapAround, "{}", "bool true");
        row("text", Settings::FindString, "\"a\\u00fcb\"", "QString aüb");
        row("text from integer", Settings::FindString, "12", "QString 12");
        row("text from boolean", Settings::FindString, "true", "QString true");
        row("no text: null", Settings::FindString, "null", "QString ");
        row("no text: list", Settings::FindString, "[\"a\"]", "QString ");
        row("no text: object", Settings::FindString, "{\"a\": \"b\"}", "QString ");
        row("colour", Settings::NoteColor, "\"#010203\"", "QColor #ff010203");
        row("colour with alpha", Settings::NoteColor, "\"#04010203\"", "QColor #04010203");
        row("transparent colour", Settings::NoteColor, "\"#00010203\"", "QColor #00010203");
        row("colour by name", Settings::NoteColor, "\"blue\"", "QColor #ff0000ff");
        row("no colour: text", Settings::NoteColor, "\"bluish\"", "QColor #ff2060ff");
        row("no colour: empty text", Settings::NoteColor, "\"\"", "QColor #ff2060ff");
        row("no colour: number", Settings::NoteColor, "255", "QColor #ff2060ff");
        row("no colour: null", Settings::NoteColor, "null", "QColor #ff2060ff");
        row("no colour: list", Settings::NoteColor, "[1, 2, 3]", "QColor #ff2060ff");
    }

    void convertsWhereNothingIsLost()
    {
        QFETCH(int, setting);
        QFETCH(QByteArray, stored);
        QFETCH(QString, value);
        const auto which = static_cast<Settings::Setting>(setting);
        write("{\"realign/regular\": " + stored + ", \"findReplace/wrapAround\": " + stored
              + ", \"instruments/loadMods\": " + stored + ", \"findReplace/findString\": " + stored
              + ", \"preview/noteColor\": " + stored + "}");
        SettingsChild child(configuration());
        QCOMPARE(child.value(which), value);
        QVERIFY(child.contains(which));
        child.finish();
        QCOMPARE(child.log(), QStringList());
    }

    void answersTheCallersFallbackInPlaceOfTheDefault()
    {
        write("{\"realign/triplets\": 1, \"realign/quintuplets\": \"five\"}");
        SettingsChild child(configuration());
        QCOMPARE(child.value(Settings::RealignRegular, 2), QStringLiteral("int 2"));
        QCOMPARE(child.value(Settings::RealignTriplets, 2), QStringLiteral("int 1"));
        QCOMPARE(child.value(Settings::RealignQuintuplets, 2), QStringLiteral("int 2"));
    }

    void keepsUnknownMembers()
    {
        const QByteArray unknown =
            "\"future\": {\"a\": [1, 2.5, null, {\"b\": \"c\"}]}, \"x/y\": 0.1,"
            " \"Pianoroll/HScale\": true, \"\": \"\", \"n\": null,"
            " \"big\": 123456789012, \"ü\": \"\\u0000\\ud83c\\udfb5\"";
        write("{" + unknown + "}");
        SettingsChild child(configuration());
        child.set(Settings::PianoRollHScale, 6);
        child.sync();
        QCOMPARE(object(),
                 QJsonDocument::fromJson("{" + unknown + ", \"pianoroll/hScale\": 6}").object());
    }

    void keepsAHundredThousandMembers()
    {
        QJsonObject members;
        for (int i = 0; i < 100000; ++i)
            members.insert(QStringLiteral("group/member%1").arg(i), i);
        write(QJsonDocument(members).toJson());
        SettingsChild child(configuration());
        child.set(Settings::PianoRollHScale, 6);
        child.sync();
        members.insert(QStringLiteral("pianoroll/hScale"), 6);
        QVERIFY(object() == members);
        QCOMPARE(child.value(Settings::RealignRegular), QStringLiteral("int 7"));
    }

    void takesADamagedFileForEmptyAndKeepsACopy_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("open brace") << QByteArray("{");
        QTest::newRow("cut short") << QByteArray("{\"pianoroll/hScale\": 9, \"realign/reg");
        QTest::newRow("binary") << QByteArray("\xff\xfe\x00\x80\x01", 5);
        QTest::newRow("broken UTF-8") << QByteArray("{\"pianoroll/hScale\": \"\xff\"}");
        QTest::newRow("list") << QByteArray("[{\"pianoroll/hScale\": 9}]");
        QTest::newRow("two objects") << QByteArray("{\"pianoroll/hScale\": 9}{}");
        QTest::newRow("number") << QByteArray("9");
        QTest::newRow("blank") << QByteArray(" \n");
        QTest::newRow("NULs") << QByteArray(4096, '\0');
        QTest::newRow("NULs behind") << QByteArray("{\"pianoroll/hScale\": 9}").append(9, '\0');
        QTest::newRow("5 MB of [") << QByteArray(5 * 1024 * 1024, '[');
        QTest::newRow("5 MB of {\"a\":") << QByteArray("{\"a\":").repeated(1024 * 1024);
    }

    void takesADamagedFileForEmptyAndKeepsACopy()
    {
        QFETCH(QByteArray, contents);
        write(contents);
        SettingsChild child(configuration());
        QCOMPARE(child.value(Settings::PianoRollHScale), QStringLiteral("int 4"));
        QCOMPARE(child.value(Settings::RealignRegular), QStringLiteral("int 7"));
        QCOMPARE(child.value(Settings::NoteColor), NoteColorDefault);
        QVERIFY(!child.contains(Settings::PianoRollHScale));
        QVERIFY(contentsOf(path()) == contents);

        child.sync();
        QCOMPARE(contentsOf(path()), QByteArray("{\n}\n"));
        QVERIFY(contentsOf(path() + QStringLiteral(".damaged")) == contents);

        child.set(Settings::PianoRollHScale, 6);
        child.sync();
        child.sync();
        QCOMPARE(object(), (QJsonObject{{QStringLiteral("pianoroll/hScale"), 6}}));
        child.finish();
        QCOMPARE(child.log(), QStringList(damagedMessage(QStringLiteral(".damaged"))));
        QCOMPARE(entries(directory()).size(), 2);
    }

    void writesAChangeOverADamagedFileInOneSync()
    {
        SettingsChild child(configuration());
        child.set(Settings::PianoRollHScale, 6);
        child.set(Settings::PianoRollVScale, 6);
        write("{\"pianoroll/hScale\"");
        child.sync();
        QCOMPARE(object(),
                 (QJsonObject{{QStringLiteral("pianoroll/hScale"), 6},
                              {QStringLiteral("pianoroll/vScale"), 6}}));
        QCOMPARE(contentsOf(path() + QStringLiteral(".damaged")),
                 QByteArray("{\"pianoroll/hScale\""));
    }

    void keepsEarlierCopiesOfDamagedFiles()
    {
        SettingsChild child(configuration());
        for (const char *contents : {"{1", "{2", "{3"}) {
            write(contents);
            child.sync();
        }
        QCOMPARE(contentsOf(path() + QStringLiteral(".damaged")), QByteArray("{1"));
        QCOMPARE(contentsOf(path() + QStringLiteral(".damaged-2")), QByteArray("{2"));
        QCOMPARE(contentsOf(path() + QStringLiteral(".damaged-3")), QByteArray("{3"));
        child.finish();
        QCOMPARE(child.log().at(2), damagedMessage(QStringLiteral(".damaged-3")));
    }

    void takesAnEmptyFileForEmpty()
    {
        write("");
        SettingsChild child(configuration());
        QCOMPARE(child.value(Settings::RealignRegular), QStringLiteral("int 7"));
        child.set(Settings::PianoRollHScale, 6);
        child.sync();
        QCOMPARE(object(), (QJsonObject{{QStringLiteral("pianoroll/hScale"), 6}}));
        child.finish();
        QCOMPARE(child.log(), QStringList());
    }

    void doesNotReadAFileOfThreeGigabytes()
    {
        write("{");
        QVERIFY(QFile::resize(path(), qint64(3) << 30));
        {
            SettingsChild child(configuration());
            QCOMPARE(child.value(Settings::RealignRegular), QStringLiteral("int 7"));
            child.sync();
            QVERIFY(peakMemoryKb(child.processId()) < 131072);
        }
        QCOMPARE(contentsOf(path()), QByteArray("{\n}\n"));
        QCOMPARE(QFileInfo(path() + QStringLiteral(".damaged")).size(), qint64(3) << 30);
    }

    void bearsADirectoryInPlaceOfTheFile()
    {
        QVERIFY(QDir().mkpath(path() + QStringLiteral("/inside")));
        SettingsChild child(configuration());
        checkThatChangesAreKeptAndLoggedOnce(child);
        QVERIFY(QDir().rmdir(path() + QStringLiteral("/inside")));
        QVERIFY(QDir().rmdir(path()));
        checkThatTheNextSyncWrites(child);
    }

    void bearsADirectoryThatCannotBeMade()
    {
        write(directory(), "a file in place of the directory");
        SettingsChild child(configuration());
        checkThatChangesAreKeptAndLoggedOnce(child);
        QCOMPARE(contentsOf(directory()), QByteArray("a file in place of the directory"));
        QVERIFY(QFile::remove(directory()));
        checkThatTheNextSyncWrites(child);
    }

    void bearsALockThatIsNeverReleased()
    {
        write("{\"realign/regular\": 3}");
        QVERIFY(QDir().mkpath(path() + QStringLiteral(".lock")));
        SettingsChild child(configuration());
        checkThatChangesAreKeptAndLoggedOnce(child);
        QCOMPARE(object(), (QJsonObject{{QStringLiteral("realign/regular"), 3}}));
        QVERIFY(QDir().rmdir(path() + QStringLiteral(".lock")));
        checkThatTheNextSyncWrites(child);
        QCOMPARE(object().value(QStringLiteral("realign/regular")), QJsonValue(3));
    }

    void endsThoughTheLockIsNeverReleased()
    {
        write("{}");
        QVERIFY(QDir().mkpath(path() + QStringLiteral(".lock")));
        SettingsChild child(configuration());
        child.set(Settings::PianoRollHScale, 6);
        QCOMPARE(child.finish(), 0);
        QCOMPARE(child.log(), QStringList(failureMessage()));
        QCOMPARE(contentsOf(path()), QByteArray("{}"));
    }

    void takesTheLockOfAProcessThatIsGone()
    {
        write("{}");
        SettingsChild dead(configuration());
        const qint64 deadId = dead.processId();
        dead.finish();
        write(path() + QStringLiteral(".lock"),
              QByteArray::number(deadId) + "\nsettings-program\n"
                  + QSysInfo::machineHostName().toUtf8() + '\n');
        SettingsChild child(configuration());
        child.set(Settings::PianoRollHScale, 6);
        child.sync();
        QCOMPARE(object(), (QJsonObject{{QStringLiteral("pianoroll/hScale"), 6}}));
        child.finish();
        QCOMPARE(child.log(), QStringList());
    }

    void takesTheLockThatNobodyHasSigned()
    {
        write("{}");
        write(path() + QStringLiteral(".lock"), "");
        SettingsChild child(configuration());
        child.set(Settings::PianoRollHScale, 6);
        child.sync();
        QCOMPARE(object(), (QJsonObject{{QStringLiteral("pianoroll/hScale"), 6}}));
        child.finish();
        QCOMPARE(child.log(), QStringList());
    }

    void keepsTheFileWhenTheDiskIsFull_data()
    {
        QTest::addColumn<int>("bytesLeft");
        QTest::newRow("nothing fits") << 0;
        QTest::newRow("the lock fits") << 200;
        QTest::newRow("the first block fits") << 20000;
    }

    void keepsTheFileWhenTheDiskIsFull()
    {
        QFETCH(int, bytesLeft);
        const QByteArray before =
            "{\"realign/regular\": 3, \"other\": \"" + QByteArray(40000, 'x') + "\"}";
        write(before);
        SettingsChild child(configuration());
        child.limitFiles(bytesLeft);
        checkThatChangesAreKeptAndLoggedOnce(child);
        QVERIFY(contentsOf(path()) == before);
        QCOMPARE(entries(directory()), QStringList(QStringLiteral("Quillmoor Composer.cfg")));
        child.unlimitFiles();
        checkThatTheNextSyncWrites(child);
        QCOMPARE(object().size(), 3);
    }

    void keepsADamagedFileWhenTheDiskIsFull()
    {
        write("{damaged");
        SettingsChild child(configuration());
        child.limitFiles(0);
        child.sync();
        child.set(Settings::PianoRollHScale, 6);
        child.sync();
        QCOMPARE(contentsOf(path()), QByteArray("{damaged"));
        child.unlimitFiles();
        checkThatTheNextSyncWrites(child);
        QCOMPARE(contentsOf(path() + QStringLiteral(".damaged")), QByteArray("{damaged"));
    }

    void logsAgainAfterASuccess()
    {
        SettingsChild child(configuration());
        for (int i = 0; i < 2; ++i) {
            child.set(Settings::PianoRollHScale, i);
            child.limitFiles(0);
            child.sync();
            child.sync();
            child.unlimitFiles();
            child.sync();
        }
        child.finish();
        QCOMPARE(child.log(), (QStringList{failureMessage(), failureMessage()}));
        QCOMPARE(object(), (QJsonObject{{QStringLiteral("pianoroll/hScale"), 1}}));
    }

    void isWrittenHoweverTheProgramEnds_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<bool>("byExit");
        for (const char *option : {"", "without-application", "from-thread"}) {
            QTest::addRow("%s, main returns", option) << QString::fromLatin1(option) << false;
            QTest::addRow("%s, exit()", option) << QString::fromLatin1(option) << true;
        }
    }

    void isWrittenHoweverTheProgramEnds()
    {
        QFETCH(QString, option);
        QFETCH(bool, byExit);
        SettingsChild child(configuration(), option);
        child.set(Settings::PianoRollHScale, 6);
        QVERIFY(!QFile::exists(path()));
        QCOMPARE(byExit ? child.exit() : child.finish(), 0);
        QCOMPARE(object(), (QJsonObject{{QStringLiteral("pianoroll/hScale"), 6}}));
        QCOMPARE(child.log(), QStringList());
    }

    void isNotMadeByAProgramThatChangesNothing()
    {
        SettingsChild child(configuration());
        child.value(Settings::RealignRegular);
        child.sync();
        QCOMPARE(child.finish(), 0);
        QCOMPARE(entries(configuration()), QStringList());
    }

    void isWrittenFromTheMainThreadsLoopThoughAThreadCameFirst()
    {
        SettingsChild child(configuration(), QStringLiteral("from-thread"));
        child.set(Settings::PianoRollHScale, 6);
        child.runEvents();
        QCOMPARE(object(), (QJsonObject{{QStringLiteral("pianoroll/hScale"), 6}}));
    }

    void showsAnotherProcessesChangesAfterASync()
    {
        SettingsChild one(configuration());
        SettingsChild other(configuration());
        QCOMPARE(other.value(Settings::PianoRollHScale), QStringLiteral("int 4"));
        one.set(Settings::PianoRollHScale, 6);
        one.sync();
        QCOMPARE(other.value(Settings::PianoRollHScale), QStringLiteral("int 4"));
        other.sync();
        QCOMPARE(other.value(Settings::PianoRollHScale), QStringLiteral("int 6"));
    }

    void keepsAnotherProcessesChanges()
    {
        SettingsChild one(configuration());
        SettingsChild other(configuration());
        one.set(Settings::PianoRollHScale, 6);
        other.set(Settings::PianoRollVScale, 7);
        one.sync();
        other.sync();
        one.set(Settings::RealignRegular, 1);
        one.sync();
        QCOMPARE(object(),
                 (QJsonObject{{QStringLiteral("pianoroll/hScale"), 6},
                              {QStringLiteral("pianoroll/vScale"), 7},
                              {QStringLiteral("realign/regular"), 1}}));
    }

    // The clock of the file system ticks every few milliseconds; a file of the same size and time
    // would count as known.
    void givesEachFileATimeOfItsOwn()
    {
        const QDateTime time = QDateTime::currentDateTimeUtc().addSecs(3600);
        write("{}");
        QFile file(path());
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
        SettingsChild child(configuration());
        child.set(Settings::PianoRollHScale, 6);
        child.sync();
        QCOMPARE(QFileInfo(path()).lastModified(), time.addMSecs(1));
    }

    void losesNothingBetweenTwoBusyProcesses()
    {
        SettingsChild one(configuration());
        SettingsChild other(configuration());
        one.tell({QStringLiteral("work"), Settings::SearchMode, Settings::RealignTriplets, 200});
        other.tell({QStringLiteral("work"), Settings::RealignQuintuplets,
                    Settings::RealignNonuplets, 198});
        int looks = 0;
        while (!one.hasAnswer() || !other.hasAnswer()) {
            const QByteArray seen = contentsOf(path());
            QVERIFY2(isJsonObject(seen) || looks == 0, seen.constData());
            looks += !seen.isEmpty();
            QCoreApplication::processEvents();
        }
        QCOMPARE(one.answer(), QStringLiteral("0"));
        QCOMPARE(other.answer(), QStringLiteral("0"));
        QVERIFY(looks > 100);
        QCOMPARE(object(),
                 (QJsonObject{{QStringLiteral("findReplace/searchMode"), 296},
                              {QStringLiteral("findReplace/direction"), 297},
                              {QStringLiteral("realign/regular"), 298},
                              {QStringLiteral("realign/triplets"), 299},
                              {QStringLiteral("realign/quintuplets"), 295},
                              {QStringLiteral("realign/septuplets"), 296},
                              {QStringLiteral("realign/nonuplets"), 297}}));
        for (SettingsChild *child : {&one, &other}) {
            child->finish();
            QCOMPARE(child->log(), QStringList());
        }
        QCOMPARE(entries(directory()), QStringList(QStringLiteral("Quillmoor Composer.cfg")));
    }

    void survivesAProcessKilledWhileItWrites()
    {
        SettingsChild survivor(configuration());
        survivor.set(Settings::RealignNonuplets, 1);
        survivor.sync();
        for (int i = 0; i < 20; ++i) {
            SettingsChild victim(configuration());
            victim.tell({QStringLiteral("work"), Settings::SearchMode, Settings::Direction, 10000});
            const QByteArray before = contentsOf(path());
            while (contentsOf(path()) == before)
                QCoreApplication::processEvents();
            ::kill(static_cast<pid_t>(victim.processId()), SIGKILL);
            QCOMPARE(victim.finish(), -1);
            QVERIFY(isJsonObject(contentsOf(path())));
            survivor.set(Settings::RealignNonuplets, i);
            survivor.sync();
            QCOMPARE(object().value(QStringLiteral("realign/nonuplets")), QJsonValue(i));
        }
        survivor.finish();
        QCOMPARE(survivor.log(), QStringList());
    }

private:
    QString configuration() const { return m_dir->path(); }
    QString directory() const { return m_dir->filePath(QStringLiteral("composer.example")); }
    QString path() const { return directory() + QStringLiteral("/Quillmoor Composer.cfg"); }

    QJsonObject object() const { return QJsonDocument::fromJson(contentsOf(path())).object(); }

    static QStringList entries(const QString &directory)
    {
        return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    static void write(const QString &path, const QByteArray &contents)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(contents), qint64(contents.size()));
    }

    void write(const QByteArray &contents) const
    {
        QVERIFY(QDir().mkpath(directory()));
        write(path(), contents);
    }

    /// Of a process that still runs.
    static qint64 peakMemoryKb(qint64 processId)
    {
        const QByteArray status = contentsOf(QStringLiteral("/proc/%1/status").arg(processId));
        const int start = status.indexOf("VmHWM:") + 6;
        return status.mid(start, status.indexOf("kB", start) - start).trimmed().toLongLong();
    }

    QString failureMessage() const
    {
        return QStringLiteral("model/Settings: Could not write %1. Changed settings are kept until "
                              "the program ends, and the next change tries again")
            .arg(path());
    }

    QString damagedMessage(const QString &suffix) const
    {
        return QStringLiteral("model/SettingsFile: The settings in %1 could not be read. All of "
                              "them are at their defaults; the file was kept as %1%2")
            .arg(path(), suffix);
    }

    void checkThatChangesAreKeptAndLoggedOnce(SettingsChild &child) const
    {
        child.set(Settings::PianoRollHScale, 5);
        child.sync();
        child.set(Settings::PianoRollHScale, 6);
        child.sync();
        QCOMPARE(child.value(Settings::PianoRollHScale), QStringLiteral("int 6"));
    }

    void checkThatTheNextSyncWrites(SettingsChild &child) const
    {
        child.sync();
        QCOMPARE(object().value(QStringLiteral("pianoroll/hScale")), QJsonValue(6));
        child.finish();
        QCOMPARE(child.log().filter(QStringLiteral("Could not write")),
                 QStringList(failureMessage()));
    }

    QScopedPointer<QTemporaryDir> m_dir;
};

QTEST_GUILESS_MAIN(TestSettingsFile)
#include "tst_SettingsFile.moc"

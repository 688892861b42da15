#include "model/Settings.h"

#include <QColor>
#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <atomic>
#include <future>
#include <thread>
#include <utility>
#include <vector>

namespace {

Settings &settings()
{
    return Settings::instance();
}

/// Another thread's event loop, and an object that lives there.
class Elsewhere {
public:
    Elsewhere() { object.moveToThread(&m_thread); }
    ~Elsewhere()
    {
        m_thread.quit();
        m_thread.wait();
    }
    Q_DISABLE_COPY(Elsewhere)

    /// After the connections: the thread sanitizer does not see Qt hand them over.
    void start() { m_thread.start(); }

    QObject object;

private:
    QThread m_thread;
};

} // namespace

/// The one store of this process. What needs a fresh one is tested with processes in
/// tst_SettingsFile.
class TestSettings : public QObject {
    Q_OBJECT

public:
    explicit TestSettings(const QString &configuration)
        : m_file(configuration + QStringLiteral("/composer.example/Quillmoor Composer.cfg"))
    {
    }

private slots:
    // What is still to be written at exit would go to a directory that is gone by then.
    void cleanupTestCase() { settings().sync(); }

    // Must be the first: later ones store values.
    void answersTheDefaultsWithoutAFile_data() { hasOneRowForEachSetting_data(); }
    void answersTheDefaultsWithoutAFile()
    {
        QFETCH(int, number);
        QFETCH(QVariant, value);
        const auto setting = static_cast<Settings::Setting>(number);
        QVERIFY(!settings().contains(setting));
        QCOMPARE(settings().value(setting), value);
        QCOMPARE(settings().value(setting).type(), value.type());
        QVERIFY(!QFile::exists(m_file));
    }

    void hasOneRowForEachSetting_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<int>("setting");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        const auto row = [](int number, Settings::Setting setting, const char *key,
                            const QVariant &value) {
            QTest::newRow(key) << number << int(setting) << QString::fromLatin1(key) << value;
        };
        const QVariant empty = QString();
        row(0, Settings::RootPath, "quillmoor/rootPath", empty);
        row(1, Settings::LoadMods, "instruments/loadMods", false);
        row(2, Settings::DrawMeasureLines, "preview/drawMeasureLines", false);
        row(3, Settings::DrawOctaveLines, "preview/drawOctaveLines", true);
        row(4, Settings::NoteColor, "preview/noteColor", QColor(32, 96, 255, 255));
        row(5, Settings::MergeChannels, "midi/mergeChannels", true);
        row(6, Settings::AutoRealign, "midi/autoRealign", true);
        row(7, Settings::PitchBend, "midi/pitchBend", true);
        row(8, Settings::DefaultInstrument, "instruments/default", empty);
        row(9, Settings::FindString, "findReplace/findString", empty);
        row(10, Settings::ReplaceString, "findReplace/replaceString", empty);
        row(11, Settings::MatchWholeWords, "findReplace/matchWholeWords", false);
        row(12, Settings::MatchWholeCase, "findReplace/matchWholeCase", false);
        row(13, Settings::WrapAround, "findReplace/wrapAround", true);
        row(14, Settings::SearchMode, "findReplace/searchMode", 0);
        row(15, Settings::Direction, "findReplace/direction", 1);
        row(16, Settings::RealignRegular, "realign/regular", 7);
        row(17, Settings::RealignTriplets, "realign/triplets", 6);
        row(18, Settings::RealignQuintuplets, "realign/quintuplets", 5);
        row(19, Settings::RealignSeptuplets, "realign/septuplets", 5);
        row(20, Settings::RealignNonuplets, "realign/nonuplets", 4);
        row(21, Settings::PianoRollVisible, "pianoroll/visible", false);
        row(22, Settings::PianoRollHScale, "pianoroll/hScale", 4);
        row(23, Settings::PianoRollVScale, "pianoroll/vScale", 2);
        row(24, Settings::DirAbcOpen, "dirs/abc/open", empty);
        row(25, Settings::DirAbcSave, "dirs/abc/save", empty);
        row(26, Settings::DirMidiOpen, "dirs/midi/open", empty);
        row(27, Settings::DirWavSave, "dirs/wav/save", empty);
    }

    void hasOneRowForEachSetting()
    {
        QFETCH(int, number);
        QFETCH(int, setting);
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        QCOMPARE(setting, number);
        const auto which = static_cast<Settings::Setting>(number);
        QCOMPARE(Settings::defaultValue(which), value);
        QCOMPARE(Settings::defaultValue(which).type(), value.type());
        settings().setValue(which, value);
        settings().sync();
        QVERIFY(settings().contains(which));
        QVERIFY(storedObject().contains(key));
        QCOMPARE(storedObject().size(), number + 1);
    }

    void hasNoDefaultForANumberThatIsNoSetting()
    {
        QCOMPARE(Settings::defaultValue(static_cast<Settings::Setting>(28)), QVariant());
    }

    void writesTheValueUnderItsFlatKey()
    {
        settings().setValue(Settings::PianoRollHScale, 6);
        settings().sync();
        QCOMPARE(storedObject().value(QStringLiteral("pianoroll/hScale")), QJsonValue(6));
    }

    void answersTheNewValueAtOnce()
    {
        settings().setValue(Settings::FindString, QStringLiteral("A|B"));
        QCOMPARE(settings().value(Settings::FindString), QVariant(QStringLiteral("A|B")));
    }

    void hasOneSignalAndNothingElse()
    {
        const QMetaObject *meta = settings().metaObject();
        QCOMPARE(meta->methodCount() - meta->methodOffset(), 1);
        QCOMPARE(meta->method(meta->methodOffset()).methodSignature(),
                 QByteArray("settingChanged(Settings::Setting,QVariant)"));
        QCOMPARE(meta->enumeratorCount() - meta->enumeratorOffset(), 0);
        QCOMPARE(meta->propertyCount() - meta->propertyOffset(), 0);
    }

    void emitsTheSameValueTwice()
    {
        const QSignalSpy spy(&settings(), &Settings::settingChanged);
        settings().setValue(Settings::RealignTriplets, 3);
        settings().setValue(Settings::RealignTriplets, 3);
        QCOMPARE(spy.count(), 2);
        for (const QList<QVariant> &arguments : spy) {
            QCOMPARE(arguments.at(0).value<Settings::Setting>(), Settings::RealignTriplets);
            QCOMPARE(arguments.at(1), QVariant(3));
        }
    }

    void emitsWhileItIsLockedAndHasTheOldValue()
    {
        settings().setValue(Settings::SearchMode, 0);
        std::thread reader;
        std::atomic<int> read{-1};
        int readDuringSignal = 0;
        QObject context;
        connect(&settings(), &Settings::settingChanged, &context, [&] {
            std::atomic<bool> isReading{false};
            reader = std::thread([&read, &isReading] {
                isReading = true;
                read = settings().value(Settings::SearchMode).toInt();
            });
            while (!isReading)
                std::this_thread::yield();
            // A reader that were not kept out would be through by now.
            for (int i = 0; i < 1000; ++i)
                std::this_thread::yield();
            readDuringSignal = read;
        });
        settings().setValue(Settings::SearchMode, 2);
        reader.join();
        QCOMPARE(readDuringSignal, -1);
        QCOMPARE(int(read), 2);
    }

    void givesTheNewValueToAReceiverConnectedDirectly()
    {
        QVariant received;
        QObject context;
        connect(&settings(), &Settings::settingChanged, &context,
                [&](Settings::Setting, const QVariant &value) { received = value; });
        settings().setValue(Settings::NoteColor, QColor(1, 2, 3, 4));
        QCOMPARE(received, QVariant(QColor(1, 2, 3, 4)));
    }

    void mayBeReadByAReceiverOfAQueuedConnection()
    {
        QVariant read;
        QEventLoop loop;
        connect(
            &settings(), &Settings::settingChanged, &loop,
            [&](Settings::Setting setting) {
                read = settings().value(setting);
                loop.quit();
            },
            Qt::QueuedConnection);
        settings().setValue(Settings::RealignNonuplets, 9);
        loop.exec();
        QCOMPARE(read, QVariant(9));
    }

    void mayBeReadByAReceiverInAnotherThread()
    {
        Elsewhere elsewhere;
        std::promise<std::pair<QVariant, QThread *>> received;
        connect(&settings(), &Settings::settingChanged, &elsewhere.object,
                [&](Settings::Setting setting) {
                    received.set_value({settings().value(setting), QThread::currentThread()});
                });
        elsewhere.start();
        settings().setValue(Settings::RealignNonuplets, 8);
        const auto [value, thread] = received.get_future().get();
        QCOMPARE(value, QVariant(8));
        QCOMPARE(thread, elsewhere.object.thread());
        disconnect(&settings(), nullptr, &elsewhere.object, nullptr);
    }

    void writesFromTheEventLoopWithoutSync()
    {
        settings().setValue(Settings::RealignSeptuplets, 3);
        QVERIFY(storedObject().value(QStringLiteral("realign/septuplets")) != QJsonValue(3));
        QCoreApplication::processEvents();
        QCOMPARE(storedObject().value(QStringLiteral("realign/septuplets")), QJsonValue(3));
    }

    void writesLaterWhenAReceiverRunsAnEventLoop()
    {
        settings().setValue(Settings::RealignSeptuplets, 1);
        QObject context;
        connect(&settings(), &Settings::settingChanged, &context,
                [] { QCoreApplication::processEvents(); });
        settings().setValue(Settings::RealignQuintuplets, 2);
        QVERIFY(storedObject().value(QStringLiteral("realign/quintuplets")) != QJsonValue(2));
        QCoreApplication::processEvents();
        QCOMPARE(storedObject().value(QStringLiteral("realign/septuplets")), QJsonValue(1));
        QCOMPARE(storedObject().value(QStringLiteral("realign/quintuplets")), QJsonValue(2));
    }

    void servesManyThreadsAtOnce()
    {
        constexpr int Rounds = 200;
        std::atomic<int> received{0};
        QObject context;
        connect(
            &settings(), &Settings::settingChanged, &context, [&] { ++received; },
            Qt::DirectConnection);
        std::atomic<int> wrong{0};
        const auto work = [&wrong](Settings::Setting setting) {
            for (int i = 0; i < Rounds; ++i) {
                settings().setValue(setting, i);
                wrong += settings().value(setting) != QVariant(i);
                wrong += !settings().contains(setting);
                wrong += settings().value(Settings::NoteColor).type() != QVariant::Color;
                if (i % 20 == 0)
                    settings().sync();
            }
        };
        std::vector<std::thread> threads;
        for (int i = Settings::RealignRegular; i <= Settings::RealignNonuplets; ++i)
            threads.emplace_back(work, static_cast<Settings::Setting>(i));
        // The main thread writes from its event loop meanwhile.
        while (received < 5 * Rounds)
            QCoreApplication::processEvents();
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(int(wrong), 0);
        QCOMPARE(int(received), 5 * Rounds);
    }

private:
    QJsonObject storedObject() const
    {
        QFile file(m_file);
        return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                              : QJsonObject();
    }

    QString m_file;
};

int main(int argc, char **argv)
{
    // Before anything asks where the user's settings are.
    const QTemporaryDir configuration;
    qputenv("XDG_CONFIG_HOME", configuration.path().toUtf8());
    qputenv("HOME", configuration.path().toUtf8());
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationDomain(QStringLiteral("composer.example"));
    QCoreApplication::setApplicationName(QStringLiteral("Quillmoor Composer"));
    Settings::registerFormat();
    TestSettings test(configuration.path());
    return QTest::qExec(&test, argc, argv);
}
#include "tst_Settings.moc"

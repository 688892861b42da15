#include "Sound/Fmod.h"
#include "support/FakeFmod.h"

#include <QtTest>

/// The built-in engine is recognised by what the fake library does not hear.
class tst_SystemCreate : public QObject {
    Q_OBJECT

private slots:
    void init();
    void theLibraryIsTakenWhereThereIsOne_data();
    void theLibraryIsTakenWhereThereIsOne();
    void theBuiltInEngineIsTakenWhereThereIsNoLibrary();
    void theBuiltInEngineIsTakenWhereTheLibraryIsIncomplete();
    void theBuiltInEngineCanBeForced();
    void theLibraryForcedWithoutALibraryFails();
    void anUnknownChoiceIsIgnoredWithAWarning();
    void messagesNameTheirSource();
    void aLibraryThatFailsIsNotReplaced();

private:
    FMOD_RESULT create();

    FMOD::System *m_system = nullptr;
};

void tst_SystemCreate::init()
{
    qunsetenv("QUILLMOOR_FMOD_LIBRARY");
    qunsetenv("QUILLMOOR_SOUND");
}

FMOD_RESULT tst_SystemCreate::create()
{
    const FMOD_RESULT result = FMOD::System_Create(&m_system);
    if (m_system)
        m_system->release();
    return result;
}

void tst_SystemCreate::theLibraryIsTakenWhereThereIsOne_data()
{
    QTest::addColumn<QByteArray>("choice");
    QTest::newRow("forced") << QByteArray("library");
    QTest::newRow("by itself") << QByteArray("");
}

void tst_SystemCreate::theLibraryIsTakenWhereThereIsOne()
{
    QFETCH(QByteArray, choice);
    const FakeFmod fake;
    qputenv("QUILLMOOR_SOUND", choice);
    QCOMPARE(create(), FMOD_OK);
    QCOMPARE(fake.functions().value(0), QStringLiteral("FMOD_System_Create"));
}

namespace {

void expectUnloadable()
{
    qputenv("QUILLMOOR_FMOD_LIBRARY", "/nowhere/libfmodex64.so");
    QTest::ignoreMessage(
        QtWarningMsg,
        QRegularExpression(QStringLiteral("^The sound library that QUILLMOOR_FMOD_LIBRARY names "
                                          "cannot be loaded: ")));
}

QStringList messages;

void noteMessage(QtMsgType, const QMessageLogContext &context, const QString &text)
{
    messages.append(QLatin1String(context.file) + QLatin1String(" | ")
                    + QLatin1String(context.function) + QLatin1String(" | ") + text);
}

} // namespace

void tst_SystemCreate::theBuiltInEngineIsTakenWhereThereIsNoLibrary()
{
    expectUnloadable();
    QCOMPARE(create(), FMOD_OK);
    QVERIFY(m_system);
}

void tst_SystemCreate::theBuiltInEngineIsTakenWhereTheLibraryIsIncomplete()
{
    qputenv("QUILLMOOR_FMOD_LIBRARY", FakeFmod::incompletePath().toLocal8Bit());
    QTest::ignoreMessage(
        QtWarningMsg,
        qPrintable(
            QStringLiteral("The sound library \"%1\" is not used: it lacks FMOD_Channel_SetDelay.")
                .arg(FakeFmod::incompletePath())));
    QCOMPARE(create(), FMOD_OK);
    QVERIFY(m_system);
}

void tst_SystemCreate::theBuiltInEngineCanBeForced()
{
    const FakeFmod fake;
    qputenv("QUILLMOOR_SOUND", "builtin");
    QCOMPARE(create(), FMOD_OK);
    QVERIFY(m_system);
    QCOMPARE(fake.calls(), QStringList());
}

void tst_SystemCreate::theLibraryForcedWithoutALibraryFails()
{
    expectUnloadable();
    qputenv("QUILLMOOR_SOUND", "library");
    QTest::ignoreMessage(QtCriticalMsg,
                         "QUILLMOOR_SOUND asks for the installed sound library, but no usable one "
                         "was found.");
    QCOMPARE(create(), FMOD_ERR_PLUGIN_MISSING);
    QCOMPARE(m_system, nullptr);
}

void tst_SystemCreate::anUnknownChoiceIsIgnoredWithAWarning()
{
    const FakeFmod fake;
    qputenv("QUILLMOOR_SOUND", "Library");
    QTest::ignoreMessage(QtWarningMsg,
                         "QUILLMOOR_SOUND is \"Library\", but only \"builtin\" and \"library\" are "
                         "known. It is ignored.");
    QCOMPARE(create(), FMOD_OK);
    QCOMPARE(fake.functions().value(0), QStringLiteral("FMOD_System_Create"));
}

void tst_SystemCreate::messagesNameTheirSource()
{
    const FakeFmod fake;
    qputenv("QUILLMOOR_SOUND", "x");
    messages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(noteMessage);
    create();
    qInstallMessageHandler(previous);
    QCOMPARE(messages,
             QStringList{QStringLiteral(
                 "Sound/SystemCreate | FMOD_RESULT FMOD::System_Create(FMOD::System **) | "
                 "QUILLMOOR_SOUND is \"x\", but only \"builtin\" and \"library\" are known. It is "
                 "ignored.")});
}

void tst_SystemCreate::aLibraryThatFailsIsNotReplaced()
{
    FakeFmod fake;
    qputenv("QUILLMOOR_SOUND", "");
    fake.fail(QStringLiteral("FMOD_System_Create"), 1, 43);
    QCOMPARE(create(), FMOD_ERR_MEMORY);
    QCOMPARE(m_system, nullptr);
}

QTEST_GUILESS_MAIN(tst_SystemCreate)

#include "tst_SystemCreate.moc"

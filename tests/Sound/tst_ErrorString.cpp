#include "Sound/Fmod.h"

#include <QtTest>

class tst_ErrorString : public QObject {
    Q_OBJECT

private slots:
    void codesHaveTexts_data();
    void codesHaveTexts();
    void everyCodeOfTheTableHasATextOfItsOwn();
};

namespace {

QString textOf(int code)
{
    return QString::fromUtf8(FMOD::errorString(static_cast<FMOD_RESULT>(code)));
}

} // namespace

void tst_ErrorString::codesHaveTexts_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, int code, const char *text) {
        QTest::newRow(name) << code << QString::fromLatin1(text);
    };
    row("FMOD_OK", FMOD_OK, "No errors.");
    row("FMOD_ERR_ALREADYLOCKED", 1, "The sound is locked already.");
    row("FMOD_ERR_CHANNEL_ALLOC", FMOD_ERR_CHANNEL_ALLOC, "No channel is free to play on.");
    row("FMOD_ERR_FILE_BAD", FMOD_ERR_FILE_BAD, "The file is damaged or unreadable.");
    row("FMOD_ERR_FILE_NOTFOUND", FMOD_ERR_FILE_NOTFOUND, "There is no such file.");
    row("FMOD_ERR_FORMAT", FMOD_ERR_FORMAT, "This kind of sound cannot be played.");
    row("FMOD_ERR_INITIALIZATION", FMOD_ERR_INITIALIZATION,
        "The sound system could not be started.");
    row("FMOD_ERR_INITIALIZED", FMOD_ERR_INITIALIZED,
        "This must be called before the sound system is started.");
    row("FMOD_ERR_INTERNAL", FMOD_ERR_INTERNAL, "Something went wrong inside the sound system.");
    row("FMOD_ERR_INVALID_HANDLE", FMOD_ERR_INVALID_HANDLE, "The object is no longer in use.");
    row("FMOD_ERR_INVALID_PARAM", FMOD_ERR_INVALID_PARAM,
        "An argument is missing or out of range.");
    row("FMOD_ERR_MEMORY", FMOD_ERR_MEMORY, "There is too little memory.");
    row("FMOD_ERR_OUTPUT_INIT", FMOD_ERR_OUTPUT_INIT, "The sound output could not be opened.");
    row("FMOD_ERR_PLUGIN_MISSING", FMOD_ERR_PLUGIN_MISSING,
        "A part that was asked for is not installed.");
    row("FMOD_ERR_UNSUPPORTED", 80, "This is not possible here.");
    row("FMOD_ERR_MUSIC_NOCALLBACK", 95, "The music system was given no function to call back.");
    row("past the table", 96, "Unknown error.");
    row("far past the table", 65536, "Unknown error.");
    row("negative", -1, "Unknown error.");
    row("most negative", std::numeric_limits<int>::min(), "Unknown error.");
}

void tst_ErrorString::codesHaveTexts()
{
    QFETCH(int, code);
    QFETCH(QString, text);
    QCOMPARE(textOf(code), text);
}

void tst_ErrorString::everyCodeOfTheTableHasATextOfItsOwn()
{
    QSet<QString> texts{QStringLiteral("Unknown error.")};
    for (int code = 0; code <= 95; ++code)
        texts.insert(textOf(code));
    QCOMPARE(texts.size(), 97);
}

QTEST_GUILESS_MAIN(tst_ErrorString)

#include "tst_ErrorString.moc"

#include "Quillmoor/InstrumentChoice.h"

#include <QtTest>

class TestInstrumentChoice : public QObject {
    Q_OBJECT

private slots:
    void theLastKnownInstructionChooses_data()
    {
        QTest::addColumn<QStringList>("instructions");
        QTest::addColumn<int>("chosen");
        const auto row = [](const char *tag) -> QTestData & { return QTest::newRow(tag); };
        const auto list = [](const char *text) {
            return QString::fromLatin1(text).split(QLatin1Char('|'));
        };
        row("none") << QStringList() << 7;
        row("plain") << list("instrument Lute") << 2;
        row("other case") << list("INSTRUMENT lUTE") << 2;
        row("unknown name") << list("instrument Kazoo") << 7;
        row("no space") << list("instrumentLute") << 7;
        row("a further space") << list("instrument  Lute") << 7;
        row("space behind") << list("instrument Lute ") << 7;
        row("other instruction") << list("papersize Lute") << 7;
        row("empty name") << list("instrument ") << 7;
        row("a later one overrides") << list("instrument Lute|instrument Flute") << 1;
        row("an unknown one is ignored") << list("instrument Lute|instrument Kazoo") << 2;
        row("the first of equal names") << list("instrument DRUM") << 0;
        row("accents") << list("instrument \xC4OLINE") << 4;
    }

    void theLastKnownInstructionChooses()
    {
        QFETCH(QStringList, instructions);
        const QStringList names{QStringLiteral("Drum"), QStringLiteral("Flute"),
                                QStringLiteral("Lute"), QStringLiteral("drum"),
                                QStringLiteral("\u00C4oline")};
        QTEST(chooseInstrument(instructions, names, 7), "chosen");
    }

    void anEmptyCatalogueKeepsTheStart()
    {
        QCOMPARE(chooseInstrument({QStringLiteral("instrument x")}, {}, -1), -1);
    }
};

QTEST_GUILESS_MAIN(TestInstrumentChoice)
#include "tst_InstrumentChoice.moc"

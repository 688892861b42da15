#include "Quillmoor/Instrument.h"

#include "support/MessageCapture.h"
#include "support/PackageBuilder.h"
#include "support/ResourceWatch.h"
#include "support/Thrown.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

QString name(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

Instrument tuned(const QByteArray &json)
{
    return Instrument::fromBytes(name("lute"), json);
}

Instrument mapped(const QByteArray &members)
{
    return tuned("{\"mapping\":{" + members + "}}");
}

InstrumentSample sample(const QStringList &files, double pitch, double frequency)
{
    return {files, pitch, frequency};
}

} // namespace

class TestInstrument : public QObject {
    Q_OBJECT

private slots:
    void aDefaultInstrumentIsEmpty()
    {
        const Instrument instrument;
        QCOMPARE(instrument.name(), QString());
        QCOMPARE(instrument.fadeout(), 0.0);
        QVERIFY(instrument.mapping().isEmpty());
    }

    void aDefaultSampleIsConcertPitchWithoutFiles()
    {
        const InstrumentSample empty;
        QCOMPARE(empty.files(), QStringList());
        QCOMPARE(empty.pitch(), 1.0);
        QCOMPARE(empty.frequency(), 440.0);
        QCOMPARE(empty.randomFile(), QString());
    }

    void itTravelsUnderItsName()
    {
        QCOMPARE(QByteArray(QMetaType::typeName(qMetaTypeId<Instrument>())),
                 QByteArray("Instrument"));
    }

    void aWholeTuningFileIsRead()
    {
        const Instrument instrument = Instrument::fromBytes(
            name("lute"),
            "// The lute.\n"
            "{ \"fadeout\" : 0.25, // seconds\n"
            "  \"mapping\" : {\n"
            "    \"60\" : { \"f\" : 261.63, \"file\" : \"/sfx/$instrument$/c4.ogg\" },\n"
            "    \"62\" : { \"f\" : 293.66, \"files\" : [ \"/sfx/$instrument$/d.ogg\",\n"
            "                                         \"/$instrument$/$instrument$.ogg\" ] }\n"
            "  } }",
            name("/mods/x"));
        QCOMPARE(instrument.name(), name("lute"));
        QCOMPARE(instrument.fadeout(), 0.25);
        QCOMPARE(instrument.mapping().keys(), (QList<uint>{60, 62}));
        QCOMPARE(instrument.sample(60), sample({name("/mods/x/sfx/lute/c4.ogg")}, 1.0, 261.63));
        QCOMPARE(
            instrument.sample(62),
            sample({name("/mods/x/sfx/lute/d.ogg"), name("/mods/x/lute/lute.ogg")}, 1.0, 293.66));
    }

    void aFileIsReadLikeItsBytes()
    {
        const QTemporaryDir dir;
        const QString path = dir.filePath(name("tuning.config"));
        const QByteArray json = "{\"fadeout\":2,\"mapping\":{\"60\":{\"f\":1,\"file\":\"/a\"}}}//";
        writeFile(path, json);
        QCOMPARE(Instrument::fromFile(name("lute"), path, name("pak://p::")),
                 Instrument::fromBytes(name("lute"), json, name("pak://p::")));
        QCOMPARE(Instrument::fromFile(name("lute"), path).sample(60).files(),
                 QStringList{name("/a")});
    }

    void whatCannotBeReadIsThrown()
    {
        const QString missing =
            thrownBy([] { Instrument::fromFile(name("lute %2"), name("/nowhere/tuning.config")); });
        QCOMPARE(missing,
                 name("Could not read tuning file for lute %2. Reason: Could not open file."));
        QCOMPARE(thrownBy([] { tuned("{\"mapping\":"); }),
                 name("Could not read tuning file for lute. Reason: unterminated object."));
        QCOMPARE(thrownBy([] { tuned("[1, 2]"); }),
                 name("Could not read tuning file for lute, root element is not an object."));
        QCOMPARE(thrownBy([] { tuned(QByteArray()); }),
                 name("Could not read tuning file for lute. Reason: illegal value."));
    }

    void aMappingThatIsNoneIsEmpty_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("absent") << QByteArray("{}");
        QTest::newRow("number") << QByteArray("{\"mapping\":5}");
        QTest::newRow("array") << QByteArray("{\"mapping\":[{\"f\":1,\"file\":\"/a\"}]}");
        QTest::newRow("empty") << QByteArray("{\"mapping\":{}}");
    }

    void aMappingThatIsNoneIsEmpty()
    {
        QFETCH(QByteArray, json);
        QVERIFY(tuned(json).mapping().isEmpty());
    }

    void membersThatAreNoNotesAreIgnored_data()
    {
        QTest::addColumn<QByteArray>("member");
        QTest::newRow("0") << QByteArray("\"0\":{\"f\":1,\"file\":\"/a\"}");
        QTest::newRow("x") << QByteArray("\"x\":{\"f\":1,\"file\":\"/a\"}");
        QTest::newRow("empty") << QByteArray("\"\":{\"f\":1,\"file\":\"/a\"}");
        QTest::newRow("negative") << QByteArray("\"-60\":{\"f\":1,\"file\":\"/a\"}");
        QTest::newRow("hexadecimal") << QByteArray("\"0x3c\":{\"f\":1,\"file\":\"/a\"}");
        QTest::newRow("past 32 bits") << QByteArray("\"4294967296\":{\"f\":1,\"file\":\"/a\"}");
        QTest::newRow("a number") << QByteArray("\"60\":5");
        QTest::newRow("no frequency") << QByteArray("\"60\":{\"file\":\"/a\"}");
        QTest::newRow("upper-case key") << QByteArray("\"60\":{\"F\":1,\"file\":\"/a\"}");
    }

    void membersThatAreNoNotesAreIgnored()
    {
        QFETCH(QByteArray, member);
        QVERIFY(mapped(member).mapping().isEmpty());
    }

    void theLargestNoteIs32Bits()
    {
        QCOMPARE(mapped("\"4294967295\":{\"f\":1,\"file\":\"/a\"}").mapping().keys(),
                 QList<uint>{4294967295U});
    }

    void fileComesBeforeFiles()
    {
        const Instrument instrument =
            mapped("\"60\":{\"f\":1,\"files\":[\"/b\",\"/c\"],\"file\":\"/a\"}");
        QCOMPARE(instrument.sample(60).files(), QStringList{name("/a")});
    }

    void onlyTheExactPlaceholderIsReplaced()
    {
        const Instrument instrument =
            mapped("\"60\":{\"f\":1,\"file\":\"/$INSTRUMENT$/$instrument/$instrument$\"}");
        QCOMPARE(instrument.sample(60).files(),
                 QStringList{name("/$INSTRUMENT$/$instrument/lute")});
    }

    void slashesCutAString()
    {
        const Instrument instrument = mapped("\"60\":{\"f\":1,\"file\":\"/a//b\"}}}\n\"}");
        QCOMPARE(instrument.sample(60).files(), QStringList{name("/a\n")});
    }

    void notesWithoutSampleBorrowTheNextLowerOne()
    {
        const Instrument instrument =
            mapped("\"48\":{\"f\":130.81,\"file\":\"/c3\"},"
                   "\"60\":{\"f\":261.63,\"files\":[\"/c4a\",\"/c4b\"]},"
                   "\"55\":{\"f\":196.0},\"40\":{\"f\":103.83},\"72\":{\"f\":523.25}");
        const QStringList c3{name("/c3")};
        QCOMPARE(instrument.sample(48), sample(c3, 1.0, 130.81));
        QCOMPARE(instrument.sample(55), sample(c3, 196.0 / 130.81, 196.0));
        QCOMPARE(instrument.sample(40), sample(c3, 103.83 / 130.81, 103.83));
        QCOMPARE(instrument.sample(72),
                 sample({name("/c4a"), name("/c4b")}, 523.25 / 261.63, 523.25));
    }

    void notesAreComparedAsNumbers()
    {
        const Instrument instrument =
            mapped("\"100\":{\"f\":100,\"file\":\"/100\"},\"9\":{\"f\":9,\"file\":\"/9\"},"
                   "\"50\":{\"f\":18}");
        QCOMPARE(instrument.sample(50), sample({name("/9")}, 2.0, 18.0));
    }

    void aFileWithoutSamplesNamesItsLowestNote()
    {
        QCOMPARE(thrownBy([] { mapped("\"100\":{\"f\":1},\"21\":{\"f\":1},\"5\":{}"); }),
                 name("Could not map instrument note 21 for lute."));
        QCOMPARE(
            thrownBy([] { Instrument::fromBytes(name("%1"), "{\"mapping\":{\"7\":{\"f\":1}}}"); }),
            name("Could not map instrument note 7 for %1."));
    }

    void theLaterOfTwoSpellingsStays()
    {
        // In the order of the member names, "060" comes first.
        const Instrument instrument = mapped("\"60\":{\"f\":60,\"file\":\"/60\"},"
                                             "\"060\":{\"f\":6,\"file\":\"/060\"}");
        QCOMPARE(instrument.mapping().size(), 1);
        QCOMPARE(instrument.sample(60), sample({name("/60")}, 1.0, 60.0));
    }

    void anEmptyListOfFilesIsPlayedAsTheEmptyPath()
    {
        const MessageCapture log;
        const Instrument instrument =
            mapped("\"48\":{\"f\":130.81,\"file\":\"/c3\"},"
                   "\"60\":{\"f\":261.63,\"files\":[]},\"62\":{\"f\":293.66}");
        QCOMPARE(instrument.sample(60), sample({}, 1.0, 261.63));
        QCOMPARE(instrument.sample(60).randomFile(), QString());
        QCOMPARE(instrument.sample(62), sample({}, 293.66 / 261.63, 293.66));
        QCOMPARE(log.texts(), QStringList());
    }

    void filesThatAreNoListAreNone()
    {
        QCOMPARE(mapped("\"60\":{\"f\":1,\"files\":\"/a\"}").sample(60), sample({}, 1.0, 1.0));
    }

    void anUnmappedNoteIsInvalid()
    {
        const Instrument instrument = mapped("\"60\":{\"f\":1,\"file\":\"/a\"}");
        QCOMPARE(thrownBy([&] { instrument.sample(61); }), name("Invalid note index"));
        QCOMPARE(thrownBy([] { Instrument().sample(0); }), name("Invalid note index"));
    }

    void fadeoutIsANumberOfSeconds_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<double>("fadeout");
        QTest::newRow("fraction") << QByteArray("{\"fadeout\":0.5}") << 0.5;
        QTest::newRow("integer") << QByteArray("{\"fadeout\":3}") << 3.0;
        QTest::newRow("zero") << QByteArray("{\"fadeout\":0}") << 0.0;
        QTest::newRow("absent") << QByteArray("{}") << 0.0;
        QTest::newRow("text") << QByteArray("{\"fadeout\":\"3\"}") << 0.0;
        QTest::newRow("null") << QByteArray("{\"fadeout\":null}") << 0.0;
    }

    void fadeoutIsANumberOfSeconds()
    {
        QFETCH(QByteArray, json);
        const MessageCapture log;
        QTEST(tuned(json).fadeout(), "fadeout");
        QCOMPARE(log.texts(), QStringList());
    }

    void aNegativeFadeoutIsNone()
    {
        const MessageCapture log;
        QCOMPARE(tuned("{\"fadeout\":-0.5}").fadeout(), 0.0);
        QCOMPARE(log.messages().size(), 1);
        const MessageCapture::Message message = log.messages().first();
        QCOMPARE(message.type, QtWarningMsg);
        QCOMPARE(message.text, name("The fadeout -0.5 of lute is not usable, 0 is used instead."));
        QCOMPARE(message.file, name("Quillmoor/Instrument"));
        QCOMPARE(message.function,
                 name("Instrument Instrument::fromObject(const QString&, const QJsonObject&, "
                      "const QString&)"));
    }

    void frequenciesWithoutRatioGivePitchOne_data()
    {
        QTest::addColumn<QByteArray>("base");
        QTest::addColumn<QByteArray>("frequency");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *base, const char *frequency) {
            QTest::addRow("%s to %s", frequency, base)
                << QByteArray(base) << QByteArray(frequency)
                << name("The pitch of note 62 of lute cannot be told from the frequencies %1 and "
                        "%2, 1 is used instead.")
                       .arg(QString::number(QByteArray(frequency).toDouble()),
                            QString::number(QByteArray(base).toDouble()));
        };
        row("0", "440");
        row("-0", "440");
        row("440", "0");
        row("-440", "440");
        row("440", "-440");
        row("1e-300", "1e300");
        row("1e300", "1e-300");
        row("1", "1e39");
        row("1", "1e-39");
    }

    void frequenciesWithoutRatioGivePitchOne()
    {
        QFETCH(QByteArray, base);
        QFETCH(QByteArray, frequency);
        QFETCH(QString, message);
        const MessageCapture log;
        const Instrument instrument = mapped("\"60\":{\"f\":" + base
                                             + ",\"file\":\"/a\"},"
                                               "\"62\":{\"f\":"
                                             + frequency + "}");
        QCOMPARE(instrument.sample(62).pitch(), 1.0);
        QCOMPARE(instrument.sample(62).files(), QStringList{name("/a")});
        QCOMPARE(log.texts(), QStringList{message});
    }

    void numbersPastDoublesAreNoJson()
    {
        QCOMPARE(thrownBy([] { tuned("{\"fadeout\":1e999}"); }),
                 name("Could not read tuning file for lute. Reason: illegal number."));
    }

    void aRandomFileIsOneOfTheFiles()
    {
        const QStringList files{name("/a"), name("/b"), name("/c")};
        const InstrumentSample three(files, 1.0, 1.0);
        QStringList chosen;
        for (int i = 0; i < 1000; ++i)
            chosen.append(three.randomFile());
        chosen.removeDuplicates();
        chosen.sort();
        QCOMPARE(chosen, files);
        QCOMPARE(sample({name("/a")}, 1.0, 1.0).randomFile(), name("/a"));
    }

    void manyNotesAreMappedQuickly()
    {
        QByteArray members = "\"1\":{\"f\":1,\"file\":\"/a\"}";
        for (int i = 2; i <= 20000; ++i)
            members += ",\"" + QByteArray::number(i) + "\":{\"f\":2}";
        const ResourceWatch watch;
        const Instrument instrument = mapped(members);
        QVERIFY(watch.isWithinLimits());
        QCOMPARE(instrument.mapping().size(), 20000);
        QCOMPARE(instrument.sample(20000), sample({name("/a")}, 2.0, 2.0));
    }
};

QTEST_GUILESS_MAIN(TestInstrument)
#include "tst_Instrument.moc"

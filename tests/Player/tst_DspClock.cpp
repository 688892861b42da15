#include "Player/DspClock.h"
#include "support/FakeFmod.h"

#include <QtTest>

#include <cmath>
#include <limits>
#include <vector>

namespace {

constexpr quint64 Largest = std::numeric_limits<quint64>::max();

} // namespace

class tst_DspClock : public QObject {
    Q_OBJECT

private slots:
    void joinsTheTwoHalves();
    void splitsIntoTwoHalves();
    void readsTheSampleRateAlone();
    void answers0WhenACallFails();
    void looksATenthOfASecondAhead();
    void truncatesWithin64Bits();
    void logsAnErrorInTheCallersName();
};

void tst_DspClock::joinsTheTwoHalves()
{
    FakeFmod fake;
    FMOD::System *system = nullptr;
    QCOMPARE(FMOD::System_Create(&system), FMOD_OK);
    fake.setClock((quint64(7) << 32) + 4294967295U);
    const auto check = [](FMOD_RESULT result) { QCOMPARE(result, FMOD_OK); };
    QCOMPARE(DspClock::now(*system, check), quint64(34359738367));
    QCOMPARE(system->release(), FMOD_OK);
}

void tst_DspClock::splitsIntoTwoHalves()
{
    QCOMPARE(DspClock::highHalf(34359738367), 7U);
    QCOMPARE(DspClock::lowHalf(34359738367), 4294967295U);
    QCOMPARE(DspClock::highHalf(4294967295), 0U);
    QCOMPARE(DspClock::lowHalf(4294967296), 0U);
}

void tst_DspClock::readsTheSampleRateAlone()
{
    FakeFmod fake;
    fake.setOutputRate(44100);
    FMOD::System *system = nullptr;
    QCOMPARE(FMOD::System_Create(&system), FMOD_OK);
    const auto check = [](FMOD_RESULT result) { QCOMPARE(result, FMOD_OK); };
    QCOMPARE(DspClock::rate(*system, check), 44100);
    QCOMPARE(fake.calls(QStringLiteral("FMOD_System_GetSoftwareFormat")),
             QStringList(QStringLiteral("FMOD_System_GetSoftwareFormat(system1, out, null, null, "
                                        "null, null, null) -> 44100")));
    QCOMPARE(system->release(), FMOD_OK);
}

void tst_DspClock::answers0WhenACallFails()
{
    FakeFmod fake;
    FMOD::System *system = nullptr;
    QCOMPARE(FMOD::System_Create(&system), FMOD_OK);
    fake.setClock(5);
    fake.fail(QStringLiteral("FMOD_System_GetDSPClock"), 1, FMOD_ERR_INTERNAL);
    fake.fail(QStringLiteral("FMOD_System_GetSoftwareFormat"), 1, FMOD_ERR_INVALID_PARAM);
    std::vector<FMOD_RESULT> results;
    const PassClock clock =
        PassClock::of(*system, [&results](FMOD_RESULT result) { results.push_back(result); });
    QCOMPARE(clock.now, quint64(0));
    QCOMPARE(clock.rate, 0);
    QVERIFY((results == std::vector<FMOD_RESULT>{FMOD_ERR_INTERNAL, FMOD_ERR_INVALID_PARAM}));
    QCOMPARE(system->release(), FMOD_OK);
}

void tst_DspClock::looksATenthOfASecondAhead()
{
    QCOMPARE((PassClock{1000, 48000}.horizon()), quint64(5800));
    QCOMPARE((PassClock{0, 44109}.horizon()), quint64(4410));
    QCOMPARE((PassClock{Largest, 48000}.horizon()), Largest);
    QCOMPARE((PassClock{7, -48000}.horizon()), quint64(7));
}

void tst_DspClock::truncatesWithin64Bits()
{
    QCOMPARE(DspClock::truncated(1.999), quint64(1));
    QCOMPARE(DspClock::truncated(-1.0), quint64(0));
    QCOMPARE(DspClock::truncated(std::nan("")), quint64(0));
    QCOMPARE(DspClock::truncated(std::numeric_limits<double>::infinity()), Largest);
    QCOMPARE(DspClock::truncated(18446744073709551616.0), Largest);
    QCOMPARE(DspClock::truncated(9223372036854775808.0), quint64(9223372036854775808U));
    QCOMPARE(DspClock::sum(Largest, 1), Largest);
    QCOMPARE(DspClock::sum(Largest - 1, 1), Largest);
    QCOMPARE(DspClock::sum(2, 3), quint64(5));
    QCOMPARE(DspClock::frames(0.5, 48000), quint64(24000));
}

void tst_DspClock::logsAnErrorInTheCallersName()
{
    QTest::ignoreMessage(QtCriticalMsg, "FMOD Error: There is no such file.\n");
    logFmodError("Player/Someone", "void Someone::checkErrors(FMOD_RESULT) const",
                 FMOD_ERR_FILE_NOTFOUND);
    logFmodError("Player/Someone", "void Someone::checkErrors(FMOD_RESULT) const", FMOD_OK);
}

QTEST_APPLESS_MAIN(tst_DspClock)
#include "tst_DspClock.moc"

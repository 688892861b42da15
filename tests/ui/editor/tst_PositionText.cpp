#include "ui/editor/PositionText.h"

#include <QtTest>

#include <limits>

class TestPositionText : public QObject {
    Q_OBJECT

private slots:
    void positionsAreMeasureBeatAndHundredths_data()
    {
        QTest::addColumn<quint64>("position");
        QTest::addColumn<quint32>("measure");
        QTest::addColumn<quint32>("beats");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *name, quint64 position, quint32 measure, quint32 beats,
                            const char *text) {
            QTest::newRow(name) << position << measure << beats << QString::fromUtf8(text);
        };
        constexpr quint64 last = std::numeric_limits<quint64>::max();
        row("the start", 0, 120960, 4, "Pos: 1:01:00");
        row("half of the second beat", 45360, 120960, 4, "Pos: 1:02:50");
        row("the third measure", 287280, 120960, 4, "Pos: 3:02:50");
        row("the last hundredth", 120959, 120960, 4, "Pos: 1:04:99");
        row("the second measure", 120960, 120960, 4, "Pos: 2:01:00");
        row("a hundredth of one digit", 1512, 120960, 4, "Pos: 1:01:05");
        row("3/4", 90720 + 60480, 90720, 3, "Pos: 2:03:00");
        row("twelve beats", 11 * 15120, 181440, 12, "Pos: 1:12:00");
        row("what is over when beats do not fill a measure", 99, 100, 3, "Pos: 1:04:00");
        row("a measure of 0", 45360, 0, 4, "Pos: 1:01:00");
        row("no beats", 45360, 120960, 0, "Pos: 1:01:00");
        row("neither", 45360, 0, 0, "Pos: 1:01:00");
        row("beats of less than a tick", 45360, 3, 4, "Pos: 1:01:00");
        row("the last tick there is", last, 120960, 4, "Pos: 152502844524716:01:83");
        row("the last measure there is", last, 1, 1, "Pos: 18446744073709551615:01:00");
        row("the longest measure", 4294967294, 4294967295, 1, "Pos: 1:01:99");
    }
    void positionsAreMeasureBeatAndHundredths()
    {
        QFETCH(const quint64, position);
        QFETCH(const quint32, measure);
        QFETCH(const quint32, beats);
        Track track;
        track.setMeasure(measure, beats);
        QTEST(positionText(position, track), "text");
    }
};

QTEST_APPLESS_MAIN(TestPositionText)
#include "tst_PositionText.moc"

#include "ui/TrackListModel.h"

#include <QAbstractItemModelTester>
#include <QtTest>

#include <limits>

class tst_TrackListModel : public QObject {
    Q_OBJECT

private slots:
    void aRowShowsTitleNotesAndLength();
    void theTitleAddedLastIsShown();
    void aTrackWithoutTitleIsUntitled();
    void columnsHaveNames();
    void itCanBeCleared();
    void lengthIsMinutesAndSeconds_data();
    void lengthIsMinutesAndSeconds();
};

namespace {

/// A quarter note of 120 to the minute lasts half a second.
Track trackOf(int quarters)
{
    Track track;
    for (int i = 0; i < quarters; ++i)
        track.addEvent(TrackEvent::makeNote(60, static_cast<quint64>(i) * 30240, 30240));
    track.sortEvents();
    return track;
}

QString cell(const TrackListModel &model, int row, int column)
{
    return model.index(row, column).data().toString();
}

} // namespace

void tst_TrackListModel::aRowShowsTitleNotesAndLength()
{
    TrackListModel model;
    const QAbstractItemModelTester tester(&model);
    Track track = trackOf(150);
    track.setHeader(QStringLiteral("T"), QStringLiteral("Morning"));
    model.append(track);
    model.append(trackOf(1));
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(cell(model, 0, TrackListModel::Title), QStringLiteral("Morning"));
    QCOMPARE(cell(model, 0, TrackListModel::Notes), QStringLiteral("150"));
    QCOMPARE(cell(model, 0, TrackListModel::Length), QStringLiteral("1:15"));
    QCOMPARE(cell(model, 1, TrackListModel::Notes), QStringLiteral("1"));
}

void tst_TrackListModel::theTitleAddedLastIsShown()
{
    TrackListModel model;
    Track track;
    track.addHeader(QStringLiteral("T"), QStringLiteral("First"));
    track.addHeader(QStringLiteral("T"), QStringLiteral("Second"));
    model.append(track);
    QCOMPARE(cell(model, 0, TrackListModel::Title), QStringLiteral("Second"));
}

void tst_TrackListModel::aTrackWithoutTitleIsUntitled()
{
    TrackListModel model;
    model.append(Track());
    QCOMPARE(cell(model, 0, TrackListModel::Title), QStringLiteral("Untitled"));
    QCOMPARE(cell(model, 0, TrackListModel::Length), QStringLiteral("0:00"));
}

void tst_TrackListModel::columnsHaveNames()
{
    const TrackListModel model;
    QStringList names;
    for (int i = 0; i < model.columnCount(); ++i)
        names.append(model.headerData(i, Qt::Horizontal, Qt::DisplayRole).toString());
    QCOMPARE(names.join(QLatin1Char(' ')), QStringLiteral("Title Notes Length"));
    QVERIFY(!model.headerData(3, Qt::Horizontal, Qt::DisplayRole).isValid());
    QVERIFY(!model.headerData(0, Qt::Vertical, Qt::DisplayRole).isValid());
}

void tst_TrackListModel::itCanBeCleared()
{
    TrackListModel model;
    const QAbstractItemModelTester tester(&model);
    model.append(trackOf(1));
    model.clear();
    QCOMPARE(model.rowCount(), 0);
    QVERIFY(!model.data(model.index(0, 0), Qt::DisplayRole).isValid());
}

void tst_TrackListModel::lengthIsMinutesAndSeconds_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    const auto add = [](const char *text, double seconds) {
        QTest::newRow(text) << seconds << QString::fromUtf8(text);
    };
    add("0:00", 0);
    add("0:01", 0.5);
    add("1:00", 59.6);
    add("1:09", 69.4);
    add("75:00", 4500);
    add("1000000000:00", 1e300);
}

void tst_TrackListModel::lengthIsMinutesAndSeconds()
{
    QFETCH(double, seconds);
    QTEST(lengthText(seconds), "text");
}

QTEST_GUILESS_MAIN(tst_TrackListModel)
#include "tst_TrackListModel.moc"

#include "model/Settings.h"
#include "model/Ticks.h"
#include "support/SettingsSandbox.h"
#include "ui/tracks/TrackVisualizationWidget.h"

#include <QImage>
#include <QMetaMethod>
#include <QPaintEvent>
#include <QPainter>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

#include <functional>
#include <limits>
#include <memory>

using Change = std::function<void(TrackVisualizationWidget &)>;
Q_DECLARE_METATYPE(Change)

namespace {

constexpr quint64 Longest = std::numeric_limits<quint64>::max();
constexpr QRgb Ground = 0xff000000;
constexpr QRgb MeasureLine = 0xff202020;
constexpr QRgb OctaveLine = 0xff303030;
constexpr QRgb Grey = 0xff404040;
constexpr QRgb Blue = 0xff2060ff;

/// What the widget was asked to paint.
class PaintWatch : public QObject {
public:
    explicit PaintWatch(QWidget *widget)
        : m_widget(widget)
    {
        widget->installEventFilter(this);
    }

    QRegion painted;
    int count = 0;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == m_widget && event->type() == QEvent::Paint) {
            painted += static_cast<QPaintEvent *>(event)->region();
            ++count;
        }
        return false;
    }

private:
    QWidget *m_widget;
};

/// The whole strip by the rule, note after note.
QImage byTheRule(const QSize &size, const Track &track, quint64 maxLength, bool hasMeasureLines)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    const QRect all = image.rect();
    painter.fillRect(all, Qt::black);
    const double vs = size.height() / 87.0;
    const double hs = size.width() / static_cast<double>(maxLength);
    painter.setPen(QColor(32, 32, 32));
    for (quint64 t = 0; hasMeasureLines && t <= maxLength; t += track.measureLength()) {
        const double x = static_cast<double>(t) * hs;
        if (all.left() <= x && x <= all.right())
            painter.drawLine(QLineF(x, all.top(), x, all.bottom()));
    }
    painter.setPen(QColor(48, 48, 48));
    for (const int pitch : {24, 36, 48, 60, 72, 84, 96, 108}) {
        const double y = (108 - pitch) * vs;
        if (all.top() <= y && y <= all.bottom())
            painter.drawLine(QLineF(all.left(), y, all.right(), y));
    }
    painter.setRenderHint(QPainter::Antialiasing);
    for (const TrackEvent &event : track.events()) {
        if (!event.isNote())
            continue;
        const double x = static_cast<double>(event.time()) * hs;
        const double y = (108 - static_cast<double>(event.note())) * vs + 1.0;
        const double width = qMax(2.0, static_cast<double>(event.duration()) * hs);
        painter.fillRect(QRectF(x, y, width, 2.0), QColor(32, 96, 255));
    }
    return image;
}

Track withNotes(std::initializer_list<TrackEvent> notes)
{
    Track track;
    for (const TrackEvent &note : notes)
        track.addEvent(note);
    return track;
}

/// Notes of all lengths, control events between them, and drones that last to the end.
Track randomTrack(int notes, quint64 length)
{
    QRandomGenerator random(7);
    Track track;
    for (int i = 0; i < notes; ++i) {
        const quint64 time = random.generate64() % length;
        const bool isDrone = i % 50 == 0;
        const quint64 duration = isDrone ? length - time : random.generate64() % (length / 50);
        track.addEvent(TrackEvent::makeNote(21 + random.bounded(88U), time, duration));
        if (i % 20 == 0)
            track.addEvent(TrackEvent::makeTempo(time, 1, 4, 100 + random.bounded(50U)));
    }
    track.sortEvents();
    return track;
}

} // namespace

class TestTrackVisualizationWidget : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<SettingsSandbox> m_home;
    std::unique_ptr<TrackVisualizationWidget> m_strip;

    /// At this size a pixel is a semitone, and a tick when maxLength is 128.
    void makeStrip(const QSize &size = QSize(128, 87))
    {
        m_strip = std::make_unique<TrackVisualizationWidget>(nullptr);
        m_strip->resize(size);
        m_strip->setMaxLength(128);
    }

    QImage painted(const QRect &part)
    {
        QImage image(m_strip->size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::magenta);
        m_strip->render(&image, part.topLeft(), part);
        return image;
    }
    QImage painted() { return painted(m_strip->rect()); }

    /// Shown and painted, so that what is painted from now on is due to what the test does.
    void showStrip()
    {
        m_strip->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_strip.get()));
        QCoreApplication::processEvents();
    }

    QWidget *marker() const
    {
        return m_strip->findChild<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    }

    QVariantList sought(const QPoint &place, Qt::MouseButton button = Qt::LeftButton)
    {
        const QSignalSpy spy(m_strip.get(), &TrackVisualizationWidget::seek);
        QTest::mouseClick(m_strip.get(), button, Qt::NoModifier, place);
        return spy.isEmpty() ? QVariantList() : spy.first();
    }

    static void set(Settings::Setting setting, const QVariant &value)
    {
        Settings::instance().setValue(setting, value);
    }

    static void compareRow(const QImage &image, int y, int from, int to, QRgb color)
    {
        for (int x = from; x < to; ++x)
            QVERIFY2(image.pixel(x, y) == color,
                     qPrintable(QStringLiteral("%1, %2").arg(x).arg(y)));
    }

private slots:
    void initTestCase() { m_home = std::make_unique<SettingsSandbox>(); }

    void init()
    {
        set(Settings::DrawMeasureLines, false);
        set(Settings::DrawOctaveLines, true);
        set(Settings::NoteColor, QColor(32, 96, 255));
        makeStrip();
    }

    void cleanup() { m_strip.reset(); }

    void signalAndSlotAreThese()
    {
        const QMetaObject &meta = TrackVisualizationWidget::staticMetaObject;
        QStringList methods;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            methods << QString::fromLatin1(meta.method(i).methodSignature());
        QCOMPARE(methods,
                 QStringList() << QStringLiteral("seek(qulonglong)")
                               << QStringLiteral("onSettingChanged(Settings::Setting)"));
    }

    void theGroundIsBlack()
    {
        set(Settings::DrawOctaveLines, false);
        const QImage image = painted();
        for (int y = 0; y < 87; ++y)
            compareRow(image, y, 0, 128, Ground);
    }

    void octaveLinesAreAtEachC()
    {
        const QImage image = painted();
        for (int y = 0; y < 87; ++y)
            compareRow(image, y, 0, 128, y % 12 == 0 ? OctaveLine : Ground);
    }

    void noOctaveLineIsBelowTheStrip()
    {
        makeStrip(QSize(128, 20));
        // The C of pitch 24 is at 19.3, the last row at 19.
        const QImage image = painted();
        compareRow(image, 19, 0, 128, Ground);
        compareRow(image, 16, 0, 128, OctaveLine);
    }

    void measureLinesAreDrawnOnRequest()
    {
        set(Settings::DrawOctaveLines, false);
        Track track;
        track.setMeasure(32, 4);
        m_strip->setTrack(track);
        compareRow(painted(), 5, 0, 128, Ground);
        set(Settings::DrawMeasureLines, true);
        const QImage image = painted();
        for (int x = 0; x < 128; ++x) {
            QCOMPARE(image.pixel(x, 0), x % 32 == 0 ? MeasureLine : Ground);
            QCOMPARE(image.pixel(x, 86), x % 32 == 0 ? MeasureLine : Ground);
        }
    }

    void octaveLinesCrossMeasureLines()
    {
        set(Settings::DrawMeasureLines, true);
        Track track;
        track.setMeasure(32, 4);
        m_strip->setTrack(track);
        QCOMPARE(painted().pixel(32, 12), OctaveLine);
        QCOMPARE(painted().pixel(32, 13), MeasureLine);
    }

    void aNoteIsTwoPixelsHighAtItsPitch()
    {
        m_strip->setTrack(withNotes({TrackEvent::makeNote(70, 10, 5)}));
        const QImage image = painted();
        compareRow(image, 38, 0, 128, Ground);
        compareRow(image, 41, 0, 128, Ground);
        for (const int y : {39, 40}) {
            compareRow(image, y, 0, 10, Ground);
            compareRow(image, y, 10, 15, Blue);
            compareRow(image, y, 15, 128, Ground);
        }
    }

    void aNoteIsAtLeastTwoPixelsWide_data()
    {
        QTest::addColumn<quint64>("duration");
        QTest::newRow("no length") << quint64(0);
        QTest::newRow("short") << quint64(1);
        QTest::newRow("two") << quint64(2);
    }
    void aNoteIsAtLeastTwoPixelsWide()
    {
        QFETCH(const quint64, duration);
        m_strip->setTrack(withNotes({TrackEvent::makeNote(70, 10, duration)}));
        const QImage image = painted();
        compareRow(image, 39, 0, 10, Ground);
        compareRow(image, 39, 10, 12, Blue);
        compareRow(image, 39, 12, 128, Ground);
    }

    void edgesOfNotesAreSmooth()
    {
        m_strip->setMaxLength(256);
        m_strip->setTrack(withNotes({TrackEvent::makeNote(70, 21, 10)}));
        const QImage image = painted();
        QVERIFY(qAbs(qBlue(image.pixel(10, 39)) - 127) < 3);
        QCOMPARE(image.pixel(11, 39), Blue);
        QVERIFY(qAbs(qBlue(image.pixel(15, 39)) - 127) < 3);
    }

    void onlyNotesAreDrawn()
    {
        m_strip->setTrack(withNotes({TrackEvent::makeTempo(20, 1, 4, 100),
                                     TrackEvent::makeKey(30, 3, 0), TrackEvent::makeMeter(40, 3, 4),
                                     TrackEvent::makeUnitLength(50, 1, 8), TrackEvent()}));
        const QImage image = painted();
        for (int y = 0; y < 87; ++y)
            compareRow(image, y, 0, 128, y % 12 == 0 ? OctaveLine : Ground);
    }

    void mutedNotesAreGrey()
    {
        m_strip->setTrack(withNotes({TrackEvent::makeNote(70, 10, 5)}));
        m_strip->setMuted(true);
        QCOMPARE(painted().pixel(12, 39), Grey);
        m_strip->setMuted(false);
        QCOMPARE(painted().pixel(12, 39), Blue);
    }

    void notesHaveTheChosenColour_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::newRow("a colour") << QVariant(QColor(200, 100, 50));
        QTest::newRow("a text") << QVariant(QStringLiteral("#c86432"));
    }
    void notesHaveTheChosenColour()
    {
        QFETCH(const QVariant, stored);
        set(Settings::NoteColor, stored);
        m_strip->setTrack(withNotes({TrackEvent::makeNote(70, 10, 5)}));
        QCOMPARE(painted().pixel(12, 39), qRgb(200, 100, 50));
    }

    void theWholeStripFollowsTheRule_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("notes");
        QTest::addColumn<bool>("hasMeasureLines");
        QTest::newRow("few notes") << QSize(300, 66) << 50 << false;
        QTest::newRow("measure lines") << QSize(300, 66) << 50 << true;
        QTest::newRow("many notes") << QSize(517, 71) << 3000 << true;
        QTest::newRow("more notes than pixels") << QSize(41, 30) << 20000 << true;
        QTest::newRow("one pixel") << QSize(1, 1) << 100 << true;
    }
    void theWholeStripFollowsTheRule()
    {
        QFETCH(const QSize, size);
        QFETCH(const int, notes);
        QFETCH(const bool, hasMeasureLines);
        constexpr quint64 Length = quint64(100) * Ticks::PerWholeNote;
        set(Settings::DrawMeasureLines, hasMeasureLines);
        const Track track = randomTrack(notes, Length);
        makeStrip(size);
        m_strip->setTrack(track);
        m_strip->setMaxLength(Length);
        QCOMPARE(painted(), byTheRule(size, track, Length, hasMeasureLines));
    }

    void unsortedEventsFollowTheRule()
    {
        makeStrip(QSize(300, 87));
        Track track;
        for (quint64 i = 0; i < 1000; ++i)
            track.addEvent(TrackEvent::makeNote(21 + quint32(i * 31 % 88), 1000 - i, i % 7 * 5));
        m_strip->setTrack(track);
        m_strip->setMaxLength(1000);
        QCOMPARE(painted(), byTheRule(m_strip->size(), track, 1000, false));
    }

    void aPartIsPaintedAsInTheWhole_data()
    {
        QTest::addColumn<QSize>("part");
        QTest::newRow("columns") << QSize(1, 61);
        QTest::newRow("wider columns") << QSize(7, 61);
        QTest::newRow("rows") << QSize(301, 1);
        QTest::newRow("tiles") << QSize(11, 9);
    }
    void aPartIsPaintedAsInTheWhole()
    {
        QFETCH(const QSize, part);
        constexpr quint64 Length = quint64(50) * Ticks::PerWholeNote + 12345;
        set(Settings::DrawMeasureLines, true);
        makeStrip(QSize(301, 61));
        Track track = randomTrack(2000, Length);
        track.setMeasure(90720, 3);
        m_strip->setTrack(track);
        m_strip->setMaxLength(Length);
        const QImage whole = painted();
        for (int y = 0; y < 61; y += part.height()) {
            for (int x = 0; x < 301; x += part.width()) {
                const QRect place = QRect(QPoint(x, y), part) & m_strip->rect();
                QCOMPARE(painted(place).copy(place), whole.copy(place));
            }
        }
    }

    void aPartAsksForItsOwnNotesOnly()
    {
        // A note that begins long before, and one that begins just behind.
        m_strip->setTrack(
            withNotes({TrackEvent::makeNote(70, 1, 120), TrackEvent::makeNote(80, 64, 20)}));
        const QImage image = painted(QRect(60, 0, 4, 87));
        compareRow(image, 39, 60, 64, Blue);
        compareRow(image, 29, 60, 64, Ground);
        QCOMPARE(image.pixel(64, 29), qRgb(255, 0, 255));
    }

    void absurdNotesAreDrawnWhereTheyAre_data()
    {
        QTest::addColumn<quint32>("pitch");
        QTest::addColumn<quint64>("time");
        QTest::addColumn<quint64>("duration");
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::newRow("endless") << 70U << quint64(10) << Longest << 10 << 128;
        QTest::newRow("end overflows") << 70U << quint64(100) << Longest - 50 << 100 << 128;
        QTest::newRow("far behind the end") << 70U << Longest << Longest << 128 << 128;
        QTest::newRow("just behind the end") << 70U << quint64(128) << quint64(1) << 128 << 128;
        QTest::newRow("at the end") << 70U << quint64(127) << quint64(1) << 127 << 128;
        QTest::newRow("above the strip") << 109U << quint64(0) << quint64(128) << 128 << 128;
        QTest::newRow("far above") << 4294967295U << quint64(0) << quint64(128) << 128 << 128;
        QTest::newRow("below") << 0U << quint64(0) << quint64(128) << 128 << 128;
    }
    void absurdNotesAreDrawnWhereTheyAre()
    {
        QFETCH(const quint32, pitch);
        QFETCH(const quint64, time);
        QFETCH(const quint64, duration);
        QFETCH(const int, from);
        QFETCH(const int, to);
        m_strip->setTrack(withNotes({TrackEvent::makeNote(pitch, time, duration)}));
        const QImage image = painted();
        compareRow(image, 39, 0, from, Ground);
        compareRow(image, 39, from, to, Blue);
        compareRow(image, 39, to, 128, Ground);
        compareRow(image, 86, 0, 128, Ground);
    }

    void anEmptySongShowsNoNotesAndSeeksToItsBeginning()
    {
        set(Settings::DrawMeasureLines, true);
        m_strip->setTrack(withNotes({TrackEvent::makeNote(70, 10, 5)}));
        m_strip->setMaxLength(0);
        const QImage image = painted();
        compareRow(image, 39, 1, 128, Ground);
        compareRow(image, 36, 0, 128, OctaveLine);
        QCOMPARE(sought(QPoint(60, 40)), QVariantList() << quint64(0));
        m_strip->setPlaying(true);
        m_strip->setPosition(100);
        QCOMPARE(marker()->geometry(), QRect(0, 0, 1, 87));
    }

    void aMeasureWithoutLengthHasOneLine()
    {
        set(Settings::DrawMeasureLines, true);
        Track track;
        track.setMeasure(0, 0);
        m_strip->setTrack(track);
        const QImage image = painted();
        QCOMPARE(image.pixel(0, 5), MeasureLine);
        compareRow(image, 5, 1, 128, Ground);
    }

    void linesCloserThanPixelsFillTheStrip_data()
    {
        QTest::addColumn<quint64>("maxLength");
        QTest::newRow("as close as pixels") << quint64(128);
        QTest::newRow("two in a pixel") << quint64(256);
        QTest::newRow("billions") << (quint64(1) << 40);
        QTest::newRow("longest") << Longest;
    }
    void linesCloserThanPixelsFillTheStrip()
    {
        QFETCH(const quint64, maxLength);
        set(Settings::DrawMeasureLines, true);
        Track track;
        track.setMeasure(1, 1);
        m_strip->setTrack(track);
        m_strip->setMaxLength(maxLength);
        const QImage image = painted();
        compareRow(image, 5, 0, 128, MeasureLine);
        const QRect part(100, 3, 5, 5);
        QCOMPARE(painted(part).copy(part), image.copy(part));
    }

    void aClickSeeks()
    {
        makeStrip(QSize(400, 66));
        m_strip->setMaxLength(120960);
        QCOMPARE(sought(QPoint(300, 10)), QVariantList() << quint64(90720));
        QCOMPARE(sought(QPoint(0, 65)), QVariantList() << quint64(0));
        QCOMPARE(sought(QPoint(399, 0)), QVariantList() << quint64(120657));
    }

    void longSongsAreSoughtInUnsigned()
    {
        makeStrip(QSize(4, 66));
        m_strip->setMaxLength(quint64(1) << 63);
        QCOMPARE(sought(QPoint(3, 10)), QVariantList() << (quint64(3) << 61));
        m_strip->setMaxLength(Longest);
        QCOMPARE(sought(QPoint(2, 10)), QVariantList() << (quint64(1) << 63));
        QCOMPARE(sought(QPoint(3, 10)), QVariantList() << (quint64(3) << 62));
    }

    void onlyTheLeftButtonSeeks()
    {
        QVERIFY(sought(QPoint(50, 40), Qt::RightButton).isEmpty());
        QVERIFY(sought(QPoint(50, 40), Qt::MiddleButton).isEmpty());
        QVERIFY(!sought(QPoint(50, 40)).isEmpty());
    }

    void aClickOnTheMarkerSeeks()
    {
        showStrip();
        m_strip->setPlaying(true);
        m_strip->setPosition(50);
        QVERIFY(marker()->geometry().contains(QPoint(50, 40)));
        const QSignalSpy spy(m_strip.get(), &TrackVisualizationWidget::seek);
        QTest::mouseClick(m_strip->windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(50, 40));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.first(), QVariantList() << quint64(50));
    }

    void theMarkerIsAWhiteLineWhilePlaying()
    {
        showStrip();
        QCOMPARE(marker()->styleSheet(), QStringLiteral("background: #FFFFFF"));
        QVERIFY(!marker()->isVisible());
        QVERIFY(!m_strip->isPlaying());
        m_strip->setPosition(32);
        m_strip->setPlaying(true);
        QVERIFY(m_strip->isPlaying());
        QVERIFY(marker()->isVisible());
        QCOMPARE(marker()->geometry(), QRect(32, 0, 1, 87));
        const QImage image = m_strip->grab().toImage();
        QCOMPARE(image.pixel(32, 40), 0xffffffff);
        QCOMPARE(image.pixel(31, 40), Ground);
        QCOMPARE(image.pixel(33, 40), Ground);
        m_strip->setPlaying(false);
        QVERIFY(!marker()->isVisible());
        QCOMPARE(m_strip->position(), quint64(32));
    }

    void theMarkerIsWhereTheTimeIs_data()
    {
        QTest::addColumn<quint64>("position");
        QTest::addColumn<int>("column");
        QTest::newRow("begin") << quint64(0) << 0;
        QTest::newRow("between pixels") << quint64(30239) << 99;
        QTest::newRow("quarter") << quint64(30240) << 100;
        QTest::newRow("end") << quint64(120960) << 400;
        QTest::newRow("behind the end") << quint64(120961) << 400;
        QTest::newRow("far behind the end") << Longest << 400;
    }
    void theMarkerIsWhereTheTimeIs()
    {
        QFETCH(const quint64, position);
        makeStrip(QSize(400, 66));
        m_strip->setMaxLength(120960);
        m_strip->setPosition(position);
        QCOMPARE(m_strip->position(), position);
        QTEST(marker()->x(), "column");
        QCOMPARE(marker()->y(), 0);
    }

    void theMarkerStaysAtItsTime()
    {
        makeStrip(QSize(400, 66));
        m_strip->setMaxLength(120960);
        m_strip->setPosition(30240);
        showStrip();
        m_strip->resize(200, 30);
        QCOMPARE(marker()->geometry(), QRect(50, 0, 1, 30));
        m_strip->setMaxLength(241920);
        QCOMPARE(marker()->geometry(), QRect(25, 0, 1, 30));
    }

    void aMovedMarkerRepaintsASliver()
    {
        m_strip->setPlaying(true);
        m_strip->setPosition(50);
        showStrip();
        PaintWatch watch(m_strip.get());
        m_strip->setPosition(51);
        QTRY_VERIFY(watch.count > 0);
        QVERIFY(watch.painted.boundingRect().width() <= 2);
        QVERIFY(watch.painted.contains(QPoint(50, 40)));
    }

    void aMarkerThatMovesWithinAPixelRepaintsNothing()
    {
        m_strip->setMaxLength(128000);
        m_strip->setPlaying(true);
        m_strip->setPosition(50000);
        showStrip();
        const PaintWatch watch(m_strip.get());
        m_strip->setPosition(50999);
        QCoreApplication::processEvents();
        QCOMPARE(watch.count, 0);
    }

    void whatIsSetIsPaintedAtOnce_data()
    {
        QTest::addColumn<Change>("change");
        QTest::newRow("track") << Change([](auto &strip) { strip.setTrack(Track()); });
        QTest::newRow("length") << Change([](auto &strip) { strip.setMaxLength(64); });
        QTest::newRow("muted") << Change([](auto &strip) { strip.setMuted(true); });
        QTest::newRow("colour") << Change(
            [](auto &) { set(Settings::NoteColor, QColor(255, 0, 0)); });
        QTest::newRow("measure lines")
            << Change([](auto &) { set(Settings::DrawMeasureLines, true); });
        QTest::newRow("octave lines")
            << Change([](auto &) { set(Settings::DrawOctaveLines, false); });
    }
    void whatIsSetIsPaintedAtOnce()
    {
        QFETCH(const Change, change);
        m_strip->setTrack(withNotes({TrackEvent::makeNote(70, 10, 5)}));
        showStrip();
        const PaintWatch watch(m_strip.get());
        change(*m_strip);
        QTRY_COMPARE(watch.painted.boundingRect(), m_strip->rect());
    }

    void theTrackIsACopy()
    {
        Track track = withNotes({TrackEvent::makeNote(70, 10, 5)});
        m_strip->setTrack(track);
        track.event(0) = TrackEvent::makeNote(20, 100, 5);
        QCOMPARE(painted().pixel(12, 39), Blue);
    }
};

QTEST_MAIN(TestTrackVisualizationWidget)
#include "tst_TrackVisualizationWidget.moc"

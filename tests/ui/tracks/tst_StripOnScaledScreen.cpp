#include "support/SettingsSandbox.h"
#include "ui/tracks/TrackVisualizationWidget.h"

#include <QApplication>
#include <QBackingStore>
#include <QImage>
#include <QtTest>

/// The strip on a screen that has one and a half pixels for each of the program's: what is painted
/// anew ends within a pixel.
class tst_StripOnScaledScreen : public QObject {
    Q_OBJECT

private slots:
    void aMarkerLeavesNoTrace_data();
    void aMarkerLeavesNoTrace();
};

namespace {

Track scale()
{
    Track track;
    for (quint32 i = 0; i < 50; ++i)
        track.addEvent(TrackEvent::makeNote(30 + i, quint64{i} * 10, 10));
    track.sortEvents();
    return track;
}

/// In the screen's pixels, as it was painted step by step.
QImage seen(const QWidget &widget)
{
    QCoreApplication::processEvents();
    return dynamic_cast<const QImage &>(*widget.backingStore()->paintDevice()).copy();
}

/// An image that is made next may find its memory as this one leaves it.
void leaveRubbishInMemory(const QSize &pixels)
{
    QImage(pixels, QImage::Format_RGB32).fill(Qt::magenta);
}

} // namespace

void tst_StripOnScaledScreen::aMarkerLeavesNoTrace_data()
{
    QTest::addColumn<QPoint>("place");
    QTest::newRow("between pixels") << QPoint(5, 7);
    QTest::newRow("on pixels") << QPoint(4, 6);
}

void tst_StripOnScaledScreen::aMarkerLeavesNoTrace()
{
    QFETCH(const QPoint, place);
    QWidget window;
    window.resize(110, 50);
    TrackVisualizationWidget strip(&window);
    strip.move(place);
    strip.setTrack(scale());
    strip.setMaxLength(500);
    strip.resize(100, 40);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QImage before = seen(window);
    QCOMPARE(before.size(), QSize(165, 75));
    strip.setPlaying(true);
    for (quint64 position = 0; position < 500; position += 5) {
        strip.setPosition(position);
        leaveRubbishInMemory(QSize(150, 60));
        QCoreApplication::processEvents();
    }
    strip.setPlaying(false);
    leaveRubbishInMemory(QSize(150, 60));
    QCOMPARE(seen(window), before);
}

int main(int argc, char **argv)
{
    qputenv("QT_SCALE_FACTOR", "1.5");
    const SettingsSandbox sandbox;
    QApplication application(argc, argv);
    tst_StripOnScaledScreen test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_StripOnScaledScreen.moc"

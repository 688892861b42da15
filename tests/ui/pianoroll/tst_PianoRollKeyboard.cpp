#include "ui/pianoroll/PianoRollKeyboard.h"

#include <QGraphicsRectItem>
#include <QScrollBar>
#include <QtTest>

class tst_PianoRollKeyboard : public QObject {
    Q_OBJECT

private slots:
    void keysAreBlackAndWhite();
    void blackKeysLieOnWhiteOnes();
    void keysTellTheirName();
    void aPressedKeyIsGrey();
    void aPressedBlackKeyIsLighter();
    void pressesAreCounted();
    void releaseAllForgetsHowOften();
    void aReleaseTooManyChangesNothing();
    void theOutermostKeysWork_data();
    void theOutermostKeysWork();
    void notesWithoutKeyAreIgnored_data();
    void notesWithoutKeyAreIgnored();
    void itHasNoFrameAndNoScrollBars();
};

namespace {

/// 40 pixels wide, 8 pixels a row, from the highest pitch down.
struct Stage {
    Stage()
    {
        view.setSceneRect(0, 20, 1000, 89);
        view.scale(1, -8);
        keyboard.resize(40, 89 * 8);
    }

    QImage picture() { return keyboard.grab().toImage(); }
    /// `x` in keyboard widths.
    QColor at(qreal x, qreal pitch)
    {
        return picture().pixelColor(static_cast<int>(x * 40), static_cast<int>((109 - pitch) * 8));
    }

    QGraphicsView view;
    PianoRollKeyboard keyboard{&view, 40};
};

QColor gray(int value)
{
    return {value, value, value};
}

} // namespace

void tst_PianoRollKeyboard::keysAreBlackAndWhite()
{
    Stage stage;
    QCOMPARE(stage.at(0.9, 60.5), gray(255)); // C
    QCOMPARE(stage.at(0.3, 61.5), gray(64));  // C sharp
    QCOMPARE(stage.at(0.9, 62.5), gray(255)); // D
    QCOMPARE(stage.at(0.9, 71.5), gray(255)); // B
    QCOMPARE(stage.at(0.9, 60), gray(0));
    QCOMPARE(stage.at(0.9, 65), gray(0));    // between E and F
    QCOMPARE(stage.at(0.9, 20.2), gray(48)); // below the lowest key
}

void tst_PianoRollKeyboard::blackKeysLieOnWhiteOnes()
{
    Stage stage;
    QCOMPARE(stage.at(0.6, 61.5), gray(0));    // its edge
    QCOMPARE(stage.at(0.7, 61.3), gray(255));  // the white key beside it
    QCOMPARE(stage.at(0.3, 61.667), gray(64)); // over the gap between C and D
    stage.keyboard.pressKey(60);
    stage.keyboard.pressKey(62);
    QCOMPARE(stage.at(0.3, 61.5), gray(64));
}

void tst_PianoRollKeyboard::keysTellTheirName()
{
    Stage stage;
    QCOMPARE(stage.keyboard.scene()->itemAt({0.9, 60.5}, {})->toolTip(), QStringLiteral("C5"));
    QCOMPARE(stage.keyboard.scene()->itemAt({0.3, 61.5}, {})->toolTip(), QStringLiteral("C#5"));
    QCOMPARE(stage.keyboard.scene()->itemAt({0.9, 21}, {})->toolTip(), QStringLiteral("A1"));
    QCOMPARE(stage.keyboard.scene()->itemAt({0.9, 108.5}, {})->toolTip(), QStringLiteral("C9"));
    QCOMPARE(stage.keyboard.scene()->items().size(), 88);
}

void tst_PianoRollKeyboard::aPressedKeyIsGrey()
{
    Stage stage;
    stage.keyboard.pressKey(60);
    QCOMPARE(stage.at(0.9, 60.5), gray(128));
    stage.keyboard.releaseKey(60);
    QCOMPARE(stage.at(0.9, 60.5), gray(255));
}

void tst_PianoRollKeyboard::aPressedBlackKeyIsLighter()
{
    Stage stage;
    stage.keyboard.pressKey(61);
    QCOMPARE(stage.at(0.3, 61.5), gray(192));
    stage.keyboard.releaseKey(61);
    QCOMPARE(stage.at(0.3, 61.5), gray(64));
}

void tst_PianoRollKeyboard::pressesAreCounted()
{
    Stage stage;
    stage.keyboard.pressKey(60);
    stage.keyboard.pressKey(60);
    stage.keyboard.releaseKey(60);
    QCOMPARE(stage.at(0.9, 60.5), gray(128));
    stage.keyboard.releaseKey(60);
    QCOMPARE(stage.at(0.9, 60.5), gray(255));
}

void tst_PianoRollKeyboard::releaseAllForgetsHowOften()
{
    Stage stage;
    stage.keyboard.pressKey(60);
    stage.keyboard.pressKey(60);
    stage.keyboard.pressKey(61);
    stage.keyboard.releaseAll();
    QCOMPARE(stage.at(0.9, 60.5), gray(255));
    QCOMPARE(stage.at(0.3, 61.5), gray(64));
    stage.keyboard.pressKey(60);
    stage.keyboard.releaseKey(60);
    QCOMPARE(stage.at(0.9, 60.5), gray(255));
}

void tst_PianoRollKeyboard::aReleaseTooManyChangesNothing()
{
    Stage stage;
    stage.keyboard.releaseKey(60);
    QCOMPARE(stage.at(0.9, 60.5), gray(255));
    stage.keyboard.pressKey(60);
    QCOMPARE(stage.at(0.9, 60.5), gray(128));
}

void tst_PianoRollKeyboard::theOutermostKeysWork_data()
{
    QTest::addColumn<int>("note");
    QTest::addColumn<qreal>("place");
    QTest::newRow("lowest") << 21 << 21.0;
    QTest::newRow("highest") << 108 << 108.5;
}

void tst_PianoRollKeyboard::theOutermostKeysWork()
{
    QFETCH(int, note);
    QFETCH(qreal, place);
    Stage stage;
    QCOMPARE(stage.at(0.9, place), gray(255));
    stage.keyboard.pressKey(note);
    QCOMPARE(stage.at(0.9, place), gray(128));
}

void tst_PianoRollKeyboard::notesWithoutKeyAreIgnored_data()
{
    QTest::addColumn<int>("note");
    for (const int note : {20, 109, 0, -1, 128, INT_MAX, INT_MIN})
        QTest::addRow("%d", note) << note;
}

void tst_PianoRollKeyboard::notesWithoutKeyAreIgnored()
{
    QFETCH(int, note);
    Stage stage;
    const QImage before = stage.picture();
    stage.keyboard.pressKey(note);
    QCOMPARE(stage.picture(), before);
    stage.keyboard.releaseKey(note);
    QCOMPARE(stage.picture(), before);
}

void tst_PianoRollKeyboard::itHasNoFrameAndNoScrollBars()
{
    Stage stage;
    QCOMPARE(stage.picture().size(), QSize(40, 712));
    QCOMPARE(stage.keyboard.viewport()->size(), stage.keyboard.size());
    QCOMPARE(stage.keyboard.scene()->sceneRect(), QRectF(0, 20, 1, 89));
    QCOMPARE(stage.keyboard.transform(), QTransform::fromScale(40, -8));
    QCOMPARE(stage.keyboard.backgroundBrush().color(), gray(48));
}

QTEST_MAIN(tst_PianoRollKeyboard)
#include "tst_PianoRollKeyboard.moc"

#include "ui/dialogs/ColorWidget.h"

#include <QImage>
#include <QtTest>

class TestColorWidget : public QObject {
    Q_OBJECT

private slots:
    void itIsBlackAtFirst()
    {
        const ColorWidget widget;
        QCOMPARE(widget.color(), QColor(0, 0, 0));
    }

    void theStyleSheetNamesTheColor()
    {
        ColorWidget widget;
        widget.setColor(QColor(32, 96, 255));
        QCOMPARE(widget.color(), QColor(32, 96, 255));
        QCOMPARE(widget.styleSheet(),
                 QStringLiteral("border: 2px solid black; border-radius: 4px; "
                                "background-color: #2060ff;"));
    }

    void whatIsTransparentIsKeptAndShownAsOpaque()
    {
        ColorWidget widget;
        widget.setColor(QColor(255, 0, 0, 128));
        QCOMPARE(widget.color(), QColor(255, 0, 0, 128));
        QVERIFY(widget.styleSheet().endsWith(QStringLiteral("background-color: #ff0000;")));
    }

    void itShowsTheColorInAFrame()
    {
        ColorWidget widget;
        widget.resize(48, 24);
        widget.setColor(QColor(32, 96, 255));
        const QImage image = widget.grab().toImage();
        QCOMPARE(image.pixelColor(24, 12), QColor(32, 96, 255));
        QCOMPARE(image.pixelColor(24, 0), QColor(0, 0, 0));
        QCOMPARE(image.pixelColor(24, 23), QColor(0, 0, 0));
    }

    void itIsReadOutByTheColorsName()
    {
        ColorWidget widget;
        QCOMPARE(widget.accessibleDescription(), QStringLiteral("#000000"));
        widget.setColor(QColor(32, 96, 255));
        QCOMPARE(widget.accessibleDescription(), QStringLiteral("#2060ff"));
    }
};

QTEST_MAIN(TestColorWidget)
#include "tst_ColorWidget.moc"

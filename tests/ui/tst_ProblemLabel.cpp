#include "ui/ProblemLabel.h"

#include <QStatusBar>
#include <QtTest>

class tst_ProblemLabel : public QObject {
    Q_OBJECT

private slots:
    void takesNoPlaceWithoutAText();
    void leavesRoomForMessages();
    void markupIsShownAsItIs();
    void isOneLine();
};

void tst_ProblemLabel::takesNoPlaceWithoutAText()
{
    QStatusBar bar;
    auto *const label = new ProblemLabel(&bar);
    bar.addPermanentWidget(label);
    bar.show();
    QVERIFY(!label->isVisible());
    label->setLine(QStringLiteral("Silence."));
    QVERIFY(label->isVisible());
    label->setLine(QString());
    QVERIFY(!label->isVisible());
}

void tst_ProblemLabel::leavesRoomForMessages()
{
    QStatusBar bar;
    auto *const label = new ProblemLabel(&bar);
    bar.addPermanentWidget(label);
    label->setLine(QStringLiteral("Silence. ").repeated(100));
    bar.resize(710, 30);
    bar.show();
    QVERIFY(label->width() < 500);
    QVERIFY(label->width() > 100);
    QVERIFY(bar.minimumSizeHint().width() < 300);
}

void tst_ProblemLabel::markupIsShownAsItIs()
{
    ProblemLabel label(nullptr);
    label.setLine(QStringLiteral("<b>"));
    QCOMPARE(label.text(), QStringLiteral("<b>"));
    QCOMPARE(label.textFormat(), Qt::PlainText);
}

void tst_ProblemLabel::isOneLine()
{
    ProblemLabel label(nullptr);
    label.setLine(QStringLiteral("a\nb\tc"));
    QCOMPARE(label.text(), QStringLiteral("a b c"));
}

QTEST_MAIN(tst_ProblemLabel)
#include "tst_ProblemLabel.moc"

#include "ui/ProblemLabel.h"

#include <QStatusBar>
#include <QtTest>

class tst_ProblemLabel : public QObject {
    Q_OBJECT

private slots:
    void takesNoPlaceWithoutAText();
    void leavesRoomForMessages();
    void aShortProblemIsShownWhole();
};

void tst_ProblemLabel::takesNoPlaceWithoutAText()
{
    QStatusBar bar;
    auto *const label = new ProblemLabel(&bar);
    bar.addPermanentWidget(label);
    bar.show();
    QVERIFY(!label->isVisible());
    label->setProblem(QStringLiteral("Silence."));
    QVERIFY(label->isVisible());
    label->setProblem(QString());
    QVERIFY(!label->isVisible());
}

void tst_ProblemLabel::leavesRoomForMessages()
{
    QStatusBar bar;
    auto *const label = new ProblemLabel(&bar);
    bar.addPermanentWidget(label);
    label->setProblem(QStringLiteral("Silence. ").repeated(100));
    bar.resize(710, 30);
    bar.show();
    QVERIFY(label->width() < 500);
    QVERIFY(label->width() > 100);
    QVERIFY(bar.minimumSizeHint().width() < 300);
}

void tst_ProblemLabel::aShortProblemIsShownWhole()
{
    ProblemLabel label(nullptr);
    label.setProblem(QStringLiteral("No sound device was found."));
    QVERIFY(label.sizeHint().width()
            > label.fontMetrics().horizontalAdvance(QStringLiteral("No sound device was found.")));
}

QTEST_MAIN(tst_ProblemLabel)
#include "tst_ProblemLabel.moc"

#include "ui/AboutText.h"

#include <QRegularExpression>
#include <QtTest>

class tst_AboutText : public QObject {
    Q_OBJECT

private slots:
    void linesAreInOrder();
    void theVersionIsNoMarkup();
};

void tst_AboutText::linesAreInOrder()
{
    const QStringList lines = aboutText(QStringLiteral("0.8.5")).split(QStringLiteral("<br/>"));
    QCOMPARE(lines.size(), 11);
    QCOMPARE(lines.at(0), QStringLiteral("<html><b>Quillmoor Composer (v<i>0.8.5<i>)</b>"));
    QCOMPARE(lines.at(1), QString());
    QVERIFY(lines.at(2).endsWith(QStringLiteral("All rights reserved.")));
    QCOMPARE(lines.at(3), QString());
    QCOMPARE(lines.at(4), QStringLiteral("Third party attribution:"));
    QVERIFY(lines.at(5).contains(QRegularExpression(QStringLiteral(
        "^<a href=\"[^\"]+\">Qt</a> 5\\.2 cross-platform application and UI framework\\.$"))));
    QVERIFY(lines.at(6).contains(QRegularExpression(
        QStringLiteral("^<a href=\"[^\"]+\">FMOD Sound System</a>.*1994-2013"))));
    QVERIFY(lines.at(7).startsWith(QStringLiteral("Icons ")));
    QCOMPARE(lines.at(8), QString());
    QVERIFY(lines.at(9).contains(QStringLiteral("rights holder")));
    QVERIFY(lines.at(10).contains(QStringLiteral("not affiliated")));
}

void tst_AboutText::theVersionIsNoMarkup()
{
    QVERIFY(aboutText(QStringLiteral("<b>9 & 8"))
                .startsWith(QStringLiteral(
                    "<html><b>Quillmoor Composer (v<i>&lt;b&gt;9 &amp; 8<i>)</b><br/>")));
}

QTEST_APPLESS_MAIN(tst_AboutText)
#include "tst_AboutText.moc"

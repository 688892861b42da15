#include "support/WidgetDriver.h"
#include "ui/dialogs/UnitLengthDialog.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

using namespace WidgetDriver;

class TestUnitLengthDialog : public QObject {
    Q_OBJECT

private:
    static QComboBox *combo(const QDialog &dialog)
    {
        return dialog.findChild<QComboBox *>(QStringLiteral("cboUnitLength"));
    }

    static QPushButton *button(const QDialog &dialog, QDialogButtonBox::StandardButton which)
    {
        return dialog.findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"))->button(which);
    }

private slots:
    void textsAreThese()
    {
        const UnitLengthDialog dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Change Unit Length"));
        const auto *label = dialog.findChild<QLabel *>(QStringLiteral("lblUnitLength"));
        QCOMPARE(shown(label->text()), QStringLiteral("Change unit length to"));
        QStringList items;
        for (int index = 0; index < combo(dialog)->count(); ++index)
            items << combo(dialog)->itemText(index);
        QCOMPARE(items, texts({"1/16", "1/32", "1/64", "1/128"}));
        QVERIFY(button(dialog, QDialogButtonBox::Ok) != nullptr);
        QVERIFY(button(dialog, QDialogButtonBox::Cancel) != nullptr);
    }

    void startsWithTheThirdLength()
    {
        const UnitLengthDialog dialog;
        QCOMPARE(combo(dialog)->currentIndex(), 2);
        QCOMPARE(dialog.unitLength(), QStringLiteral("1/64"));
    }

    void opensOnTheLengthOfTheTrack_data()
    {
        QTest::addColumn<QString>("length");
        QTest::addColumn<QString>("chosen");
        for (const char *length : {"1/16", "1/32", "1/64", "1/128"})
            QTest::newRow(length) << QString::fromUtf8(length) << QString::fromUtf8(length);
        QTest::newRow("a length that is not offered") << "1/8"
                                                      << "1/64";
        QTest::newRow("no length") << ""
                                   << "1/64";
        QTest::newRow("the beginning of one") << "1/1"
                                              << "1/64";
        QTest::newRow("more than one") << "1/16 "
                                       << "1/64";
        QTest::newRow("an equal number") << "2/32"
                                         << "1/64";
        QTest::newRow("a pattern") << "1/*"
                                   << "1/64";
    }
    void opensOnTheLengthOfTheTrack()
    {
        QFETCH(const QString, length);
        UnitLengthDialog dialog;
        dialog.setUnitLength(length);
        QTEST(dialog.unitLength(), "chosen");
    }

    void aLengthThatIsNotOfferedKeepsTheChoice()
    {
        UnitLengthDialog dialog;
        dialog.setUnitLength(QStringLiteral("1/128"));
        dialog.setUnitLength(QStringLiteral("1/8"));
        QCOMPARE(dialog.unitLength(), QStringLiteral("1/128"));
    }

    void theArrowKeysChoose()
    {
        UnitLengthDialog dialog;
        QVERIFY(show(dialog));
        QCOMPARE(focus(), QStringLiteral("cboUnitLength"));
        press(Qt::Key_Up);
        QCOMPARE(dialog.unitLength(), QStringLiteral("1/32"));
        press(Qt::Key_End);
        QCOMPARE(dialog.unitLength(), QStringLiteral("1/128"));
        press(Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(!dialog.isVisible());
    }

    void theMouseChooses()
    {
        UnitLengthDialog dialog;
        QVERIFY(show(dialog));
        click(combo(dialog));
        QAbstractItemView *list = combo(dialog)->view();
        QTRY_VERIFY(list->isVisible());
        QVERIFY(QTest::qWaitForWindowExposed(list->window()));
        // A list takes no click so soon after the one that has opened it.
        QTest::qWait(QApplication::doubleClickInterval());
        const QModelIndex first = list->model()->index(0, 0);
        click(list->viewport(), list->visualRect(first).topLeft() + QPoint(5, 5));
        QTRY_COMPARE(dialog.unitLength(), QStringLiteral("1/16"));
        click(button(dialog, QDialogButtonBox::Ok));
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }

    void escapeRejects()
    {
        UnitLengthDialog dialog;
        QVERIFY(show(dialog));
        press(Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void cancelRejects()
    {
        UnitLengthDialog dialog;
        QVERIFY(show(dialog));
        click(button(dialog, QDialogButtonBox::Cancel));
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void closingTheWindowRejects()
    {
        UnitLengthDialog dialog;
        QVERIFY(show(dialog));
        dialog.close();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void noMnemonicIsGivenTwice()
    {
        const UnitLengthDialog dialog;
        QCOMPARE(sharedMnemonics(dialog), QStringList());
    }

    void theKeyboardReachesEverything()
    {
        UnitLengthDialog dialog;
        QVERIFY(show(dialog));
        QStringList order = tabOrder();
        QCOMPARE(order.takeFirst(), QStringLiteral("cboUnitLength"));
        order.sort();
        QCOMPARE(order, texts({"Cancel", "OK"}));
        press(Qt::Key_Tab);
        press(Qt::Key_U, Qt::AltModifier);
        QCOMPARE(focus(), QStringLiteral("cboUnitLength"));
    }

    void theListIsReadOutByName()
    {
        const UnitLengthDialog dialog;
        QCOMPARE(readOut(combo(dialog)), QStringLiteral("Change unit length to"));
    }

    void noTextIsCutInALargeFont()
    {
        UnitLengthDialog dialog;
        dialog.setFont(QFont(dialog.font().family(), 24));
        QVERIFY(show(dialog));
        QCOMPARE(cutTexts(dialog), QStringList());
    }
};

QTEST_MAIN(TestUnitLengthDialog)
#include "tst_UnitLengthDialog.moc"

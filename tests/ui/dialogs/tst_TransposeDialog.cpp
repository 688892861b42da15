#include "icons/Icons.h"
#include "support/WidgetDriver.h"
#include "ui/dialogs/TransposeDialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QStyle>
#include <QStyleOptionSpinBox>
#include <QtTest>

using namespace WidgetDriver;

class TestTransposeDialog : public QObject {
    Q_OBJECT

private:
    static QSpinBox *spinBox(const QDialog &dialog)
    {
        return dialog.findChild<QSpinBox *>(QStringLiteral("spnSemitones"));
    }

    static QLabel *label(const QDialog &dialog, const char *name)
    {
        return dialog.findChild<QLabel *>(QString::fromUtf8(name));
    }

    static QPushButton *button(const QDialog &dialog, QDialogButtonBox::StandardButton which)
    {
        return dialog.findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"))->button(which);
    }

private slots:
    void initTestCase() { Icons::load(); }

    void textsAreThese()
    {
        const TransposeDialog dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Transpose"));
        QCOMPARE(shown(label(dialog, "lblTranspose")->text()),
                 QStringLiteral("Transpose all notes"));
        QCOMPARE(spinBox(dialog)->suffix(), QStringLiteral(" semitone(s)"));
        QCOMPARE(label(dialog, "lblWarning")->text(),
                 QStringLiteral("Notes that fall outside of the valid octave range after "
                                "transposing will be removed!"));
        QVERIFY(button(dialog, QDialogButtonBox::Ok) != nullptr);
        QVERIFY(button(dialog, QDialogButtonBox::Cancel) != nullptr);
    }

    void theWarningHasItsPicture()
    {
        const TransposeDialog dialog;
        const QPixmap picture = label(dialog, "lblWarningIcon")->pixmap(Qt::ReturnByValue);
        QCOMPARE(picture.toImage(), QPixmap(QStringLiteral(":/icons/exclamation.png")).toImage());
        QCOMPARE(picture.size() / picture.devicePixelRatio(), QSize(16, 16));
    }

    void theWarningIsBelowTheValue()
    {
        TransposeDialog dialog;
        QVERIFY(show(dialog));
        const int below = spinBox(dialog)->geometry().bottom();
        QVERIFY(label(dialog, "lblWarningIcon")->y() > below);
        QVERIFY(label(dialog, "lblWarning")->y() > below);
        QVERIFY(label(dialog, "lblWarning")->x() > label(dialog, "lblWarningIcon")->x());
    }

    void fourOctavesEitherWayAreOffered()
    {
        const TransposeDialog dialog;
        QCOMPARE(dialog.value(), 0);
        QCOMPARE(spinBox(dialog)->minimum(), -48);
        QCOMPARE(spinBox(dialog)->maximum(), 48);
        QCOMPARE(spinBox(dialog)->text(), QStringLiteral("0 semitone(s)"));
    }

    void aTypedNumberIsTaken_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("value");
        QTest::newRow("an octave up") << "12" << 12;
        QTest::newRow("a fifth down") << "-7" << -7;
        QTest::newRow("the highest") << "48" << 48;
        QTest::newRow("the lowest") << "-48" << -48;
        QTest::newRow("a digit too many is not taken") << "49" << 4;
        QTest::newRow("nor is one below the range") << "-49" << -4;
        QTest::newRow("nor are letters") << "1x2" << 12;
        QTest::newRow("a sign alone changes nothing") << "-" << 0;
    }
    void aTypedNumberIsTaken()
    {
        QFETCH(const QString, typed);
        TransposeDialog dialog;
        QVERIFY(show(dialog));
        type(typed);
        press(Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QTEST(dialog.value(), "value");
    }

    void keysStepUpAndDownToTheEndsOfTheRange()
    {
        TransposeDialog dialog;
        QVERIFY(show(dialog));
        press(Qt::Key_Up);
        QCOMPARE(dialog.value(), 1);
        press(Qt::Key_PageDown);
        QCOMPARE(dialog.value(), -9);
        for (int i = 0; i < 10; ++i)
            press(Qt::Key_PageDown);
        QCOMPARE(dialog.value(), -48);
        for (int i = 0; i < 10; ++i)
            press(Qt::Key_PageUp);
        QCOMPARE(dialog.value(), 48);
        press(Qt::Key_Up);
        QCOMPARE(dialog.value(), 48);
    }

    void theMouseStepsAndAccepts()
    {
        TransposeDialog dialog;
        QVERIFY(show(dialog));
        QStyleOptionSpinBox option;
        option.initFrom(spinBox(dialog));
        option.subControls = QStyle::SC_All;
        option.stepEnabled = QAbstractSpinBox::StepUpEnabled | QAbstractSpinBox::StepDownEnabled;
        const QRect up = spinBox(dialog)->style()->subControlRect(
            QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxUp, spinBox(dialog));
        click(spinBox(dialog), up.center());
        click(spinBox(dialog), up.center());
        QCOMPARE(dialog.value(), 2);
        click(button(dialog, QDialogButtonBox::Ok));
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.value(), 2);
    }

    void escapeRejects()
    {
        TransposeDialog dialog;
        QVERIFY(show(dialog));
        press(Qt::Key_Escape);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void cancelRejects()
    {
        TransposeDialog dialog;
        QVERIFY(show(dialog));
        click(button(dialog, QDialogButtonBox::Cancel));
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void closingTheWindowRejects()
    {
        TransposeDialog dialog;
        QVERIFY(show(dialog));
        dialog.close();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void noMnemonicIsGivenTwice()
    {
        const TransposeDialog dialog;
        QCOMPARE(sharedMnemonics(dialog), QStringList());
    }

    void theKeyboardReachesEverything()
    {
        TransposeDialog dialog;
        QVERIFY(show(dialog));
        QStringList order = tabOrder();
        QCOMPARE(order.takeFirst(), QStringLiteral("spnSemitones"));
        order.sort();
        QCOMPARE(order, texts({"Cancel", "OK"}));
        press(Qt::Key_Tab);
        press(Qt::Key_T, Qt::AltModifier);
        QCOMPARE(focus(), QStringLiteral("spnSemitones"));
    }

    void whatHasNoTextIsReadOutByName()
    {
        const TransposeDialog dialog;
        QCOMPARE(readOut(label(dialog, "lblWarningIcon")), QStringLiteral("Warning"));
        QCOMPARE(readOut(spinBox(dialog)), QStringLiteral("Transpose all notes"));
    }

    void noTextIsCutInALargeFont()
    {
        TransposeDialog dialog;
        dialog.setFont(QFont(dialog.font().family(), 24));
        QVERIFY(show(dialog));
        QCOMPARE(cutTexts(dialog), QStringList());
    }
};

QTEST_MAIN(TestTransposeDialog)
#include "tst_TransposeDialog.moc"

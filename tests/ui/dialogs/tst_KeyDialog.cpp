#include "support/DialogAnswers.h"
#include "support/WidgetDriver.h"
#include "ui/dialogs/KeyDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QtTest>

using namespace WidgetDriver;

using Cancelling = void (*)(QDialog &);
Q_DECLARE_METATYPE(Cancelling)

class TestKeyDialog : public QObject {
    Q_OBJECT

private:
    template <typename Widget> static Widget *find(const QDialog &dialog, const char *name)
    {
        return dialog.findChild<Widget *>(QString::fromUtf8(name));
    }

    static QComboBox *mode(const QDialog &dialog) { return find<QComboBox>(dialog, "cboMode"); }
    static QComboBox *sharpsFlats(const QDialog &dialog)
    {
        return find<QComboBox>(dialog, "cboSharpsFlats");
    }
    static QCheckBox *qualifier(const QDialog &dialog)
    {
        return find<QCheckBox>(dialog, "chkMajorQualifier");
    }

    static QPushButton *button(const QDialog &dialog, QDialogButtonBox::StandardButton which)
    {
        return find<QDialogButtonBox>(dialog, "buttonBox")->button(which);
    }

    static QStringList items(const QComboBox *combo)
    {
        QStringList items;
        for (int index = 0; index < combo->count(); ++index)
            items << combo->itemText(index);
        return items;
    }

    static QString preview(const QDialog &dialog) { return find<QLabel>(dialog, "lblKey")->text(); }

    /// The choice as the user reads it.
    static QString choice(const QDialog &dialog)
    {
        return mode(dialog)->currentText() + QStringLiteral(", ")
            + sharpsFlats(dialog)->currentText();
    }

private slots:
    void textsAreThese()
    {
        const KeyDialog dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Change Key"));
        QCOMPARE(find<QGroupBox>(dialog, "grpNewKey")->title(), QStringLiteral("New Key"));
        QCOMPARE(shown(find<QLabel>(dialog, "lblCaptionMode")->text()), QStringLiteral("Mode:"));
        QCOMPARE(shown(find<QLabel>(dialog, "lblCaptionSharpsFlats")->text()),
                 QStringLiteral("Sharps / flats:"));
        QCOMPARE(shown(qualifier(dialog)->text()), QStringLiteral("Include Major qualifier"));
        QCOMPARE(qualifier(dialog)->toolTip(),
                 QStringLiteral("As Major is the default mode, it does not have to be included "
                                "explicitly. If this option is checked, it will be added "
                                "regardless."));
        QCOMPARE(find<QLabel>(dialog, "lblCaptionKey")->text(), QStringLiteral("New key:"));
        QVERIFY(button(dialog, QDialogButtonBox::Ok) != nullptr);
        QVERIFY(button(dialog, QDialogButtonBox::Cancel) != nullptr);
    }

    void theListsAreThese()
    {
        const KeyDialog dialog;
        QCOMPARE(items(mode(dialog)),
                 texts({"Major / Ionian", "Minor / Aeolian", "Mixolydian", "Dorian", "Phrygian",
                        "Lydian", "Locrian"}));
        QCOMPARE(items(sharpsFlats(dialog)),
                 texts({"7 sharps", "6 sharps", "5 sharps", "4 sharps", "3 sharps", "2 sharps",
                        "1 sharp", "0 sharps / flats", "1 flat", "2 flats", "3 flats", "4 flats",
                        "5 flats", "6 flats", "7 flats"}));
    }

    void startsInCMajor()
    {
        const KeyDialog dialog;
        QCOMPARE(choice(dialog), QStringLiteral("Major / Ionian, 0 sharps / flats"));
        QVERIFY(!qualifier(dialog)->isChecked());
        QCOMPARE(dialog.key(), QStringLiteral("C"));
        QCOMPARE(preview(dialog), QStringLiteral("C"));
    }

    void opensOnTheKeyOfTheTrack_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QString>("key");
        QTest::newRow("Bb") << "Bb"
                            << "Major / Ionian, 2 flats"
                            << "Bb";
        QTest::newRow("D dor") << "D dor"
                               << "Dorian, 0 sharps / flats"
                               << "Ddor";
        QTest::newRow("Gb is not F#") << "Gb"
                                      << "Major / Ionian, 6 flats"
                                      << "Gb";
        QTest::newRow("F#m") << "F#m"
                             << "Minor / Aeolian, 3 sharps"
                             << "F#m";
        QTest::newRow("any case") << "eB MIN"
                                  << "Minor / Aeolian, 6 flats"
                                  << "Ebm";
        QTest::newRow("long names") << "G mixolydian"
                                    << "Mixolydian, 0 sharps / flats"
                                    << "Gmix";
        QTest::newRow("Phrygian") << "E#phr"
                                  << "Phrygian, 7 sharps"
                                  << "E#phr";
        QTest::newRow("Lydian") << "Fb lyd"
                                << "Lydian, 7 flats"
                                << "Fblyd";
        QTest::newRow("Locrian") << "Bbloc"
                                 << "Locrian, 7 flats"
                                 << "Bbloc";
        QTest::newRow("Ionian is major") << "C ion"
                                         << "Major / Ionian, 0 sharps / flats"
                                         << "C";
        QTest::newRow("Aeolian is minor") << "A aeo"
                                          << "Minor / Aeolian, 0 sharps / flats"
                                          << "Am";
    }
    void opensOnTheKeyOfTheTrack()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, key);
        KeyDialog dialog;
        dialog.setKey(text);
        QTEST(choice(dialog), "chosen");
        QCOMPARE(dialog.key(), key);
        QCOMPARE(preview(dialog), key);
    }

    void whatIsNoKeyKeepsTheChoice_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << "";
        QTest::newRow("no letter of a key") << "123";
        QTest::newRow("a key of no row") << "B# maj";
        QTest::newRow("another of no row") << "Fb";
    }
    void whatIsNoKeyKeepsTheChoice()
    {
        QFETCH(const QString, text);
        KeyDialog dialog;
        dialog.setKey(QStringLiteral("Ebm"));
        dialog.setKey(text);
        QCOMPARE(choice(dialog), QStringLiteral("Minor / Aeolian, 6 flats"));
        QCOMPARE(preview(dialog), QStringLiteral("Ebm"));
    }

    void everyKeyThatCanBeChosenIsFoundAgain()
    {
        KeyDialog dialog;
        KeyDialog other;
        QVERIFY(show(dialog));
        for (int modeIndex = 0; modeIndex < 7; ++modeIndex) {
            press(Qt::Key_M, Qt::AltModifier);
            press(modeIndex == 0 ? Qt::Key_Home : Qt::Key_Down);
            press(Qt::Key_S, Qt::AltModifier);
            for (int row = 0; row < 15; ++row) {
                press(row == 0 ? Qt::Key_Home : Qt::Key_Down);
                QCOMPARE(mode(dialog)->currentIndex(), modeIndex);
                QCOMPARE(sharpsFlats(dialog)->currentIndex(), row);
                QCOMPARE(preview(dialog), dialog.key());
                other.setKey(dialog.key());
                QCOMPARE(choice(other), choice(dialog));
            }
        }
    }

    void theMajorQualifierIsAddedOnRequest()
    {
        KeyDialog dialog;
        dialog.setKey(QStringLiteral("Bb"));
        QVERIFY(show(dialog));
        click(qualifier(dialog), QPoint(8, qualifier(dialog)->height() / 2));
        QVERIFY(qualifier(dialog)->isChecked());
        QCOMPARE(dialog.key(), QStringLiteral("Bbmaj"));
        QCOMPARE(preview(dialog), QStringLiteral("Bbmaj"));
        press(Qt::Key_I, Qt::AltModifier);
        QTRY_VERIFY(!qualifier(dialog)->isChecked());
        QCOMPARE(preview(dialog), QStringLiteral("Bb"));
        press(Qt::Key_Space);
        QCOMPARE(preview(dialog), QStringLiteral("Bbmaj"));
    }

    void theMajorQualifierIsForMajorKeysAlone()
    {
        KeyDialog dialog;
        QVERIFY(show(dialog));
        click(qualifier(dialog), QPoint(8, qualifier(dialog)->height() / 2));
        dialog.setKey(QStringLiteral("Am"));
        QVERIFY(qualifier(dialog)->isChecked());
        QCOMPARE(preview(dialog), QStringLiteral("Am"));
    }

    void aMajorOrMinorKeyIsAcceptedAtOnce_data()
    {
        QTest::addColumn<QString>("key");
        QTest::newRow("major") << "Eb";
        QTest::newRow("minor") << "Cm";
    }
    void aMajorOrMinorKeyIsAcceptedAtOnce()
    {
        QFETCH(const QString, key);
        KeyDialog dialog;
        dialog.setKey(key);
        QVERIFY(show(dialog));
        DialogAnswers answers;
        answers.visit([](QWidget &box) { box.close(); });
        press(Qt::Key_Return);
        QVERIFY(!answers.isDone());
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.key(), key);
    }

    void anyOtherModeIsAskedFor_data()
    {
        QTest::addColumn<QString>("key");
        for (const char *key : {"Gmix", "Ddor", "Ephr", "Flyd", "Bloc"})
            QTest::newRow(key) << QString::fromUtf8(key);
    }
    void anyOtherModeIsAskedFor()
    {
        QFETCH(const QString, key);
        KeyDialog dialog;
        dialog.setKey(key);
        QVERIFY(show(dialog));
        DialogAnswers answers;
        answers.press("Yes");
        click(button(dialog, QDialogButtonBox::Ok));
        QCOMPARE(answers.seen(),
                 texts({"warning [Change Key] You've chosen a key that is not supported by "
                        "Quillmoor.\nAre you sure you want to continue? (Yes,No)"}));
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.key(), key);
    }

    void onlyYesAccepts_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Escape") << int(Qt::Key_Escape);
        QTest::newRow("N") << int(Qt::Key_N);
        QTest::newRow("window closed") << 0;
    }
    void onlyYesAccepts()
    {
        QFETCH(const int, key);
        KeyDialog dialog;
        dialog.setKey(QStringLiteral("D dor"));
        QVERIFY(show(dialog));
        DialogAnswers answers;
        answers.visit([&](QWidget &box) {
            const bool isLetter = key == Qt::Key_N;
            if (key == 0)
                box.close();
            else
                press(Qt::Key(key), isLetter ? Qt::AltModifier : Qt::NoModifier);
        });
        press(Qt::Key_Return);
        QVERIFY(answers.isDone());
        QVERIFY(dialog.isVisible());
        QCOMPARE(dialog.key(), QStringLiteral("Ddor"));
    }

    void afterNoAnotherKeyCanBeChosen()
    {
        KeyDialog dialog;
        dialog.setKey(QStringLiteral("D dor"));
        QVERIFY(show(dialog));
        DialogAnswers answers;
        answers.press("No");
        press(Qt::Key_Return);
        QVERIFY(answers.isDone());
        QVERIFY(show(dialog));
        press(Qt::Key_M, Qt::AltModifier);
        press(Qt::Key_Home);
        press(Qt::Key_Return);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.key(), QStringLiteral("C"));
    }

    void cancellingAsksNothing_data()
    {
        QTest::addColumn<Cancelling>("cancel");
        QTest::newRow("Escape") << Cancelling([](QDialog &) { press(Qt::Key_Escape); });
        QTest::newRow("Cancel") << Cancelling(
            [](QDialog &dialog) { click(button(dialog, QDialogButtonBox::Cancel)); });
        QTest::newRow("window closed") << Cancelling([](QDialog &dialog) { dialog.close(); });
    }
    void cancellingAsksNothing()
    {
        QFETCH(const Cancelling, cancel);
        KeyDialog dialog;
        dialog.setKey(QStringLiteral("D dor"));
        QVERIFY(show(dialog));
        DialogAnswers answers;
        answers.visit([](QWidget &box) { box.close(); });
        cancel(dialog);
        QVERIFY(!answers.isDone());
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }

    void noMnemonicIsGivenTwice()
    {
        const KeyDialog dialog;
        QCOMPARE(sharedMnemonics(dialog), QStringList());
    }

    void theKeyboardReachesEverything()
    {
        KeyDialog dialog;
        QVERIFY(show(dialog));
        const QStringList order = tabOrder();
        QCOMPARE(order.mid(0, 3), texts({"cboMode", "cboSharpsFlats", "chkMajorQualifier"}));
        QStringList buttons = order.mid(3);
        buttons.sort();
        QCOMPARE(buttons, texts({"Cancel", "OK"}));
        press(Qt::Key_S, Qt::AltModifier);
        QCOMPARE(focus(), QStringLiteral("cboSharpsFlats"));
        press(Qt::Key_M, Qt::AltModifier);
        QCOMPARE(focus(), QStringLiteral("cboMode"));
    }

    void theListsAreReadOutByName()
    {
        const KeyDialog dialog;
        QCOMPARE(readOut(mode(dialog)), QStringLiteral("Mode:"));
        QCOMPARE(readOut(sharpsFlats(dialog)), QStringLiteral("Sharps / flats:"));
    }

    void nothingMovesWhileChoosing()
    {
        KeyDialog dialog;
        QVERIFY(show(dialog));
        const QSize size = dialog.size();
        const QRect list = mode(dialog)->geometry();
        for (const char *key : {"C", "C#phr", "A#m", "Bbloc"}) {
            dialog.setKey(QString::fromUtf8(key));
            QCoreApplication::sendPostedEvents();
            QCOMPARE(dialog.size(), size);
            QCOMPARE(mode(dialog)->geometry(), list);
            QCOMPARE(cutTexts(dialog), QStringList());
        }
    }

    void noTextIsCutInALargeFont()
    {
        KeyDialog dialog;
        dialog.setFont(QFont(dialog.font().family(), 24));
        QVERIFY(show(dialog));
        QCOMPARE(cutTexts(dialog), QStringList());
    }

    void thePreviewCanBeAskedForBySlot()
    {
        QVERIFY(KeyDialog::staticMetaObject.indexOfSlot("updateKey()") >= 0);
    }
};

QTEST_MAIN(TestKeyDialog)
#include "tst_KeyDialog.moc"

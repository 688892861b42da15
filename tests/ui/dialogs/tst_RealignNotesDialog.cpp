#include "model/Settings.h"
#include "support/SettingsSandbox.h"
#include "support/WidgetDriver.h"
#include "ui/dialogs/RealignNotesDialog.h"

#include <QAccessible>
#include <QDial>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <climits>

using namespace WidgetDriver;

namespace {

const QStringList names = texts({"Regular", "Triplets", "Quintuplets", "Septuplets", "Nonuplets"});
const QVector<int> maxima{7, 6, 5, 5, 4};
const QVector<Settings::Setting> keptIn{Settings::RealignRegular, Settings::RealignTriplets,
                                        Settings::RealignQuintuplets, Settings::RealignSeptuplets,
                                        Settings::RealignNonuplets};

} // namespace

using Cancelling = void (*)(QDialog &);
Q_DECLARE_METATYPE(Cancelling)

class TestRealignNotesDialog : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<SettingsSandbox> m_sandbox;

    static QDial *dial(const QDialog &dialog, const QString &name)
    {
        return dialog.findChild<QDial *>(QStringLiteral("dial") + name);
    }
    static QLabel *caption(const QDialog &dialog, const QString &name)
    {
        return dialog.findChild<QLabel *>(QStringLiteral("lblCaption") + name);
    }
    static QLabel *valueLabel(const QDialog &dialog, const QString &name)
    {
        return dialog.findChild<QLabel *>(QStringLiteral("lbl") + name);
    }

    static QPushButton *button(const QDialog &dialog, QDialogButtonBox::StandardButton which)
    {
        return dialog.findChild<QDialogButtonBox *>(QStringLiteral("buttonBox"))->button(which);
    }

    static QStringList labels(const QDialog &dialog)
    {
        QStringList labels;
        for (const QString &name : names)
            labels << valueLabel(dialog, name)->text();
        return labels;
    }

    static QVector<int> positions(const QDialog &dialog)
    {
        QVector<int> positions;
        for (const QString &name : names)
            positions << dial(dialog, name)->value();
        return positions;
    }

    static void store(const QVector<int> &positions)
    {
        for (int index = 0; index < keptIn.size(); ++index)
            Settings::instance().setValue(keptIn[index], positions[index]);
    }

    static QVector<int> stored()
    {
        QVector<int> positions;
        for (const Settings::Setting setting : keptIn)
            positions << Settings::instance().value(setting).toInt();
        return positions;
    }

    static Qt::Key mnemonic(const QString &name) { return Qt::Key(name.at(0).unicode()); }

    static QRect placeOf(const QWidget *widget)
    {
        return {widget->mapTo(widget->window(), QPoint()), widget->size()};
    }

    static QVector<QRect> places(const QDialog &dialog)
    {
        QVector<QRect> places{dialog.rect()};
        for (const QWidget *widget : dialog.findChildren<QWidget *>())
            places << placeOf(widget);
        return places;
    }

private slots:
    void initTestCase() { m_sandbox = std::make_unique<SettingsSandbox>(); }
    void cleanupTestCase() { m_sandbox.reset(); }

    void init()
    {
        for (const Settings::Setting setting : keptIn)
            Settings::instance().setValue(setting, Settings::defaultValue(setting));
    }

    void textsAreThese()
    {
        const RealignNotesDialog dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Realign Notes"));
        QCOMPARE(dialog.findChild<QGroupBox *>()->title(),
                 QStringLiteral("Quantization Precision"));
        for (const QString &name : names)
            QCOMPARE(shown(caption(dialog, name)->text()), name);
        QVERIFY(button(dialog, QDialogButtonBox::Ok) != nullptr);
        QVERIFY(button(dialog, QDialogButtonBox::Cancel) != nullptr);
    }

    void theDialsAreThese()
    {
        const RealignNotesDialog dialog;
        QCOMPARE(dialog.findChildren<QDial *>().size(), 5);
        for (int index = 0; index < names.size(); ++index) {
            const QDial *dial = TestRealignNotesDialog::dial(dialog, names[index]);
            QCOMPARE(dial->minimum(), 0);
            QCOMPARE(dial->maximum(), maxima[index]);
            QCOMPARE(dial->pageStep(), 1);
            QVERIFY(dial->notchesVisible());
            QVERIFY(!dial->wrapping());
            QCOMPARE(dial->maximumSize(), QSize(50, 50));
        }
    }

    void eachDialIsBetweenItsCaptionAndItsValue()
    {
        RealignNotesDialog dialog;
        QVERIFY(show(dialog));
        int left = 0;
        for (const QString &name : names) {
            const QRect place = placeOf(dial(dialog, name));
            const QRect above = placeOf(caption(dialog, name));
            const QRect below = placeOf(valueLabel(dialog, name));
            QVERIFY(above.bottom() < place.top());
            QVERIFY(place.bottom() < below.top());
            QVERIFY(qAbs(above.center().x() - place.center().x()) <= 1);
            QVERIFY(qAbs(below.center().x() - place.center().x()) <= 1);
            QVERIFY(place.left() > left);
            left = place.right();
        }
    }

    void theDialsAreEvenlySpaced()
    {
        RealignNotesDialog dialog;
        QVERIFY(show(dialog));
        const int first = dial(dialog, names[0])->x();
        const int step = dial(dialog, names[1])->x() - first;
        for (int index = 2; index < names.size(); ++index)
            QVERIFY(qAbs(dial(dialog, names[index])->x() - first - index * step) <= index);
    }

    void startsWithTheFinestGrids()
    {
        const RealignNotesDialog dialog;
        QCOMPARE(positions(dialog), maxima);
        QCOMPARE(labels(dialog), texts({"128ths", "96ths", "80ths", "112ths", "72nds"}));
        QCOMPARE(dialog.divisions(), QVector<int>({128, 96, 80, 112, 72}));
    }

    void startsWithWhatWasChosenTheLastTime()
    {
        store({4, 1, 0, 2, 3});
        const RealignNotesDialog dialog;
        QCOMPARE(positions(dialog), QVector<int>({4, 1, 0, 2, 3}));
        QCOMPARE(labels(dialog), texts({"16ths", "3rds", "None", "14ths", "36ths"}));
        QCOMPARE(dialog.divisions(), QVector<int>({16, 3, 14, 36}));
    }

    void whatIsStoredOutsideTheRangeIsBroughtIntoIt_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QVector<int>>("chosen");
        const QVector<int> coarsest(5, 0);
        QTest::newRow("below") << QVariant(-1) << coarsest;
        QTest::newRow("far below") << QVariant(INT_MIN) << coarsest;
        QTest::newRow("beyond the shortest dial") << QVariant(5) << QVector<int>({5, 5, 5, 5, 4});
        QTest::newRow("beyond all") << QVariant(8) << maxima;
        QTest::newRow("more than an int holds") << QVariant(4294967296LL) << maxima;
        QTest::newRow("far beyond") << QVariant(INT_MAX) << maxima;
        QTest::newRow("a number as text") << QVariant(QStringLiteral("2")) << QVector<int>(5, 2);
        QTest::newRow("a word") << QVariant(QStringLiteral("fine")) << maxima;
        QTest::newRow("a list") << QVariant(QVariantList{1}) << maxima;
    }
    void whatIsStoredOutsideTheRangeIsBroughtIntoIt()
    {
        QFETCH(const QVariant, value);
        for (const Settings::Setting setting : keptIn)
            Settings::instance().setValue(setting, value);
        const RealignNotesDialog dialog;
        QTEST(positions(dialog), "chosen");
    }

    void everyPositionHasItsLabel_data()
    {
        QTest::addColumn<QStringList>("fromTheFinest");
        QTest::newRow("Regular") << texts(
            {"128ths", "64ths", "32nds", "16ths", "8ths", "4ths", "2nds", "Whole"});
        QTest::newRow("Triplets") << texts(
            {"96ths", "48ths", "24ths", "12ths", "6ths", "3rds", "None"});
        QTest::newRow("Quintuplets") << texts({"80ths", "40ths", "20ths", "10ths", "5ths", "None"});
        QTest::newRow("Septuplets") << texts({"112ths", "56ths", "28ths", "14ths", "7ths", "None"});
        QTest::newRow("Nonuplets") << texts({"72nds", "36ths", "18ths", "9ths", "None"});
    }
    void everyPositionHasItsLabel()
    {
        QFETCH(const QStringList, fromTheFinest);
        const QString name = QString::fromUtf8(QTest::currentDataTag());
        const int index = names.indexOf(name);
        RealignNotesDialog dialog;
        QVERIFY(show(dialog));
        QStringList expected = labels(dialog);
        press(mnemonic(name), Qt::AltModifier);
        for (const QString &label : fromTheFinest) {
            expected[index] = label;
            QCOMPARE(labels(dialog), expected);
            press(Qt::Key_PageDown);
        }
        QCOMPARE(labels(dialog), expected);
        QCOMPARE(dial(dialog, name)->value(), 0);
    }

    void aTupletDialAtNothingIsLeftOut()
    {
        RealignNotesDialog dialog;
        QVERIFY(show(dialog));
        for (const QString &name : names) {
            press(mnemonic(name), Qt::AltModifier);
            press(Qt::Key_Home);
        }
        QCOMPARE(labels(dialog), texts({"Whole", "None", "None", "None", "None"}));
        QCOMPARE(dialog.divisions(), QVector<int>({1}));
        press(Qt::Key_Up);
        QCOMPARE(dialog.divisions(), QVector<int>({1, 9}));
    }

    void theMouseTurnsADial()
    {
        RealignNotesDialog dialog;
        QVERIFY(show(dialog));
        click(dial(dialog, QStringLiteral("Triplets")), QPoint(25, 5));
        QCOMPARE(labels(dialog), texts({"128ths", "12ths", "80ths", "112ths", "72nds"}));
    }

    void acceptingKeepsThePositions_data()
    {
        QTest::addColumn<bool>("byMouse");
        QTest::newRow("Enter") << false;
        QTest::newRow("OK") << true;
    }
    void acceptingKeepsThePositions()
    {
        QFETCH(const bool, byMouse);
        store({3, 2, 1, 0, 4});
        RealignNotesDialog dialog;
        QVERIFY(show(dialog));
        press(Qt::Key_R, Qt::AltModifier);
        press(Qt::Key_PageUp);
        press(Qt::Key_N, Qt::AltModifier);
        press(Qt::Key_Home);
        QCOMPARE(stored(), QVector<int>({3, 2, 1, 0, 4}));
        const QSignalSpy changes(&Settings::instance(), &Settings::settingChanged);
        if (byMouse)
            click(button(dialog, QDialogButtonBox::Ok));
        else
            press(Qt::Key_Return);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(stored(), QVector<int>({4, 2, 1, 0, 0}));
        QCOMPARE(changes.size(), 5);
        QCOMPARE(positions(RealignNotesDialog()), QVector<int>({4, 2, 1, 0, 0}));
    }

    void cancellingKeepsNothing_data()
    {
        QTest::addColumn<Cancelling>("cancel");
        QTest::newRow("Escape") << Cancelling([](QDialog &) { press(Qt::Key_Escape); });
        QTest::newRow("Cancel") << Cancelling(
            [](QDialog &dialog) { click(button(dialog, QDialogButtonBox::Cancel)); });
        QTest::newRow("window closed") << Cancelling([](QDialog &dialog) { dialog.close(); });
    }
    void cancellingKeepsNothing()
    {
        QFETCH(const Cancelling, cancel);
        store({3, 2, 1, 0, 4});
        RealignNotesDialog dialog;
        QVERIFY(show(dialog));
        press(Qt::Key_PageUp);
        const QSignalSpy changes(&Settings::instance(), &Settings::settingChanged);
        cancel(dialog);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        QCOMPARE(changes.size(), 0);
        QCOMPARE(stored(), QVector<int>({3, 2, 1, 0, 4}));
    }

    void noMnemonicIsGivenTwice()
    {
        const RealignNotesDialog dialog;
        QCOMPARE(sharedMnemonics(dialog), QStringList());
    }

    void theKeyboardReachesEverything()
    {
        RealignNotesDialog dialog;
        QVERIFY(show(dialog));
        const QStringList order = tabOrder();
        QCOMPARE(order.mid(0, 5),
                 texts({"dialRegular", "dialTriplets", "dialQuintuplets", "dialSeptuplets",
                        "dialNonuplets"}));
        QStringList buttons = order.mid(5);
        buttons.sort();
        QCOMPARE(buttons, texts({"Cancel", "OK"}));
        for (const QString &name : names) {
            press(mnemonic(name), Qt::AltModifier);
            QCOMPARE(focus(), QStringLiteral("dial") + name);
        }
    }

    void theDialsAreReadOutByNameAndGrid()
    {
        store({7, 6, 0, 5, 4});
        const RealignNotesDialog dialog;
        QStringList all;
        for (const QString &name : names) {
            QDial *dial = TestRealignNotesDialog::dial(dialog, name);
            const auto *read = QAccessible::queryAccessibleInterface(dial);
            all << read->text(QAccessible::Name) + QStringLiteral(": ")
                    + read->text(QAccessible::Description);
            QCOMPARE(readOut(dial), name);
        }
        QCOMPARE(all,
                 texts({"Regular: 128ths", "Triplets: 96ths", "Quintuplets: None",
                        "Septuplets: 112ths", "Nonuplets: 72nds"}));
    }

    void nothingMovesWhileDialsAreTurned()
    {
        RealignNotesDialog dialog;
        QVERIFY(show(dialog));
        const QVector<QRect> before = places(dialog);
        for (const QString &name : names) {
            press(mnemonic(name), Qt::AltModifier);
            for (int position = 0; position < 7; ++position) {
                press(Qt::Key_PageDown);
                QCoreApplication::sendPostedEvents();
                QCOMPARE(places(dialog), before);
                QCOMPARE(cutTexts(dialog), QStringList());
            }
        }
    }

    void noTextIsCutInALargeFont()
    {
        RealignNotesDialog dialog;
        dialog.setFont(QFont(dialog.font().family(), 24));
        QVERIFY(show(dialog));
        QCOMPARE(cutTexts(dialog), QStringList());
    }

    void theSlotsHaveTheirNames()
    {
        for (const QString &name : names) {
            const QByteArray slot = "on" + name.toUtf8() + "Changed(int)";
            QVERIFY(RealignNotesDialog::staticMetaObject.indexOfSlot(slot.constData()) >= 0);
        }
    }
};

QTEST_MAIN(TestRealignNotesDialog)
#include "tst_RealignNotesDialog.moc"

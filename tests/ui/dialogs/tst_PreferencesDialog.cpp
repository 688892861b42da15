#include "icons/Icons.h"
#include "model/Settings.h"
#include "support/DialogAnswers.h"
#include "support/SettingsSandbox.h"
#include "support/WidgetDriver.h"
#include "ui/dialogs/ColorWidget.h"
#include "ui/dialogs/PreferencesDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

using namespace WidgetDriver;

namespace {

const QString Notice =
    QStringLiteral("information [Quillmoor Composer] This change will take effect next time you "
                   "start Quillmoor Composer. (OK)");
const QString Refusal =
    QStringLiteral("critical [Quillmoor Composer] No Quillmoor installation was found at the "
                   "specified directory. (OK)");
const QColor DefaultColor(32, 96, 255);

struct Box {
    const char *name;
    Settings::Setting setting;
    int page;
    bool isRestartRequired;
};
const QVector<Box> Boxes = {
    {"chkLoadMods", Settings::LoadMods, 0, true},
    {"chkPreviewDrawOctave", Settings::DrawOctaveLines, 1, false},
    {"chkPreviewDrawMeasure", Settings::DrawMeasureLines, 1, false},
    {"chkMergeChannels", Settings::MergeChannels, 2, false},
    {"chkRealign", Settings::AutoRealign, 2, false},
    {"chkPitchBend", Settings::PitchBend, 2, false},
};

Settings &store()
{
    return Settings::instance();
}

template <typename Widget> Widget *part(const QDialog &dialog, const char *name)
{
    return dialog.findChild<Widget *>(QString::fromUtf8(name));
}

QListWidget *selector(const QDialog &dialog)
{
    return part<QListWidget>(dialog, "propertySelector");
}

void clickEntry(const QDialog &dialog, int row)
{
    QListWidget *const list = selector(dialog);
    click(list->viewport(), list->visualItemRect(list->item(row)).center());
}

QCheckBox *checkBox(const QDialog &dialog, const char *name)
{
    return part<QCheckBox>(dialog, name);
}

void clickBox(const QDialog &dialog, const char *name)
{
    QCheckBox *const box = checkBox(dialog, name);
    click(box, {10, box->height() / 2});
}

QPushButton *button(const QDialog &dialog, QDialogButtonBox::StandardButton which)
{
    return part<QDialogButtonBox>(dialog, "buttonBox")->button(which);
}

bool canApply(const QDialog &dialog)
{
    return button(dialog, QDialogButtonBox::Apply)->isEnabled();
}

QString shownPath(const QDialog &dialog)
{
    return part<QLineEdit>(dialog, "txtQuillmoorPath")->text();
}

QColor shownColor(const QDialog &dialog)
{
    return part<ColorWidget>(dialog, "clNoteColor")->color();
}

void makeGame(const QString &path)
{
    QDir().mkpath(path + QStringLiteral("/assets"));
    QDir().mkpath(path + QStringLiteral("/win32"));
    QFile program(path + QStringLiteral("/win32/quillmoor.exe"));
    QVERIFY(program.open(QIODevice::WriteOnly));
}

/// Everything back to its default, which is stored then.
void resetSettings()
{
    for (int key = Settings::RootPath; key <= Settings::PitchBend; ++key)
        store().setValue(Settings::Setting(key), Settings::defaultValue(Settings::Setting(key)));
}

} // namespace

class TestPreferencesDialog : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<SettingsSandbox> m_sandbox;
    QTemporaryDir m_folder;

    QString path(const char *name) const { return m_folder.filePath(QString::fromUtf8(name)); }

private slots:
    void initTestCase()
    {
        m_sandbox = std::make_unique<SettingsSandbox>();
        Icons::load();
        makeGame(path("game"));
        makeGame(path("other"));
        QVERIFY(QDir().mkpath(path("no game")));
    }

    void init() { resetSettings(); }

    void textsAreThese()
    {
        const PreferencesDialog dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Preferences"));
        const auto text = [&](const char *name) {
            return shown(
                dialog.findChild<QWidget *>(QString::fromUtf8(name))->property("text").toString());
        };
        QCOMPARE(text("lblQuillmoorPath"), QStringLiteral("Quillmoor Location:"));
        QCOMPARE(text("chkLoadMods"), QStringLiteral("Load instruments from mods directory"));
        QCOMPARE(text("chkPreviewDrawOctave"), QStringLiteral("Draw octave lines"));
        QCOMPARE(text("chkPreviewDrawMeasure"), QStringLiteral("Draw measure lines"));
        QCOMPARE(text("lblNoteColor"), QStringLiteral("Note color"));
        QCOMPARE(text("btnPickNoteColor"), QStringLiteral("Change color"));
        QCOMPARE(text("btnResetNoteColor"), QStringLiteral("Revert to default"));
        QCOMPARE(text("chkMergeChannels"), QStringLiteral("Create one track per MIDI channel"));
        QCOMPARE(text("chkRealign"),
                 QStringLiteral("Automatically re-align notes after importing"));
        QCOMPARE(text("chkPitchBend"), QStringLiteral("Process pitch bending"));
    }

    void toolTipsAreThese()
    {
        const PreferencesDialog dialog;
        QCOMPARE(checkBox(dialog, "chkMergeChannels")->toolTip(),
                 QStringLiteral("If checked, all notes playing on the same channel will be merged "
                                "into a single track, even if they are in separate tracks in the "
                                "MIDI."));
        QCOMPARE(checkBox(dialog, "chkRealign")->toolTip(),
                 QStringLiteral("If checked, all notes will automatically be re-aligned after "
                                "importing a MIDI."));
        QCOMPARE(checkBox(dialog, "chkPitchBend")->toolTip(),
                 QStringLiteral("If checked, pitch bending in MIDIs will be approximated with "
                                "additional notes"));
    }

    void eachPageHasItsEntryAndTab_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("tabs");
        QTest::addColumn<QString>("title");
        QTest::newRow("first") << 0 << "Instruments"
                               << "pageInstruments"
                               << "tabInstruments"
                               << "Quillmoor";
        QTest::newRow("second") << 1 << "Track Preview"
                                << "pagePreview"
                                << "tabPreview"
                                << "Visualization";
        QTest::newRow("third") << 2 << "Midi Import"
                               << "pageMidiImport"
                               << "tabMidiImport"
                               << "Import Settings";
    }
    void eachPageHasItsEntryAndTab()
    {
        QFETCH(const int, row);
        QFETCH(const QString, page);
        QFETCH(const QString, title);
        QFETCH(const QString, tabs);
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        QCOMPARE(selector(dialog)->count(), 3);
        QTEST(selector(dialog)->item(row)->text(), "entry");
        clickEntry(dialog, row);
        const auto *const pages = part<QStackedWidget>(dialog, "propertyPages");
        QCOMPARE(pages->count(), 3);
        QCOMPARE(pages->currentWidget()->objectName(), page);
        const auto *const tab = pages->currentWidget()->findChild<QTabWidget *>(tabs);
        QCOMPARE(tab->count(), 1);
        QCOMPARE(tab->tabText(0), title);
        QVERIFY(tab->isVisible());
    }

    void picturesAreThese()
    {
        const PreferencesDialog dialog;
        const auto isPicture = [](const QIcon &icon, const char *name) {
            return !icon.isNull()
                && icon.pixmap(16, 16).toImage()
                == QIcon(QStringLiteral(":/icons/%1.png").arg(QString::fromUtf8(name)))
                       .pixmap(16, 16)
                       .toImage();
        };
        QVERIFY(isPicture(dialog.windowIcon(), "appicon"));
        QVERIFY(isPicture(selector(dialog)->item(0)->icon(), "instrument"));
        QVERIFY(isPicture(selector(dialog)->item(1)->icon(), "preview"));
        QVERIFY(isPicture(selector(dialog)->item(2)->icon(), "midiimport"));
        QVERIFY(isPicture(part<QPushButton>(dialog, "btnPickNoteColor")->icon(), "color-swatch"));
        QVERIFY(isPicture(part<QPushButton>(dialog, "btnResetNoteColor")->icon(), "revert"));
    }

    void theFirstPageIsShownAtFirst()
    {
        const PreferencesDialog dialog;
        QCOMPARE(selector(dialog)->currentRow(), 0);
        QCOMPARE(part<QStackedWidget>(dialog, "propertyPages")->currentIndex(), 0);
    }

    void defaultsAreShown()
    {
        const PreferencesDialog dialog;
        QCOMPARE(shownPath(dialog), QString());
        QVERIFY(!checkBox(dialog, "chkLoadMods")->isChecked());
        QVERIFY(checkBox(dialog, "chkPreviewDrawOctave")->isChecked());
        QVERIFY(!checkBox(dialog, "chkPreviewDrawMeasure")->isChecked());
        QCOMPARE(shownColor(dialog), DefaultColor);
        QVERIFY(checkBox(dialog, "chkMergeChannels")->isChecked());
        QVERIFY(checkBox(dialog, "chkRealign")->isChecked());
        QVERIFY(checkBox(dialog, "chkPitchBend")->isChecked());
        QVERIFY(!canApply(dialog));
    }

    void storedValuesAreShown()
    {
        store().setValue(Settings::RootPath, QStringLiteral("/games/<b>Quillmoor</b>"));
        store().setValue(Settings::NoteColor, QStringLiteral("#102030"));
        for (const Box &box : Boxes)
            store().setValue(box.setting, !Settings::defaultValue(box.setting).toBool());
        const PreferencesDialog dialog;
        QCOMPARE(shownPath(dialog), QStringLiteral("/games/<b>Quillmoor</b>"));
        QCOMPARE(shownColor(dialog), QColor(16, 32, 48));
        for (const Box &box : Boxes)
            QCOMPARE(checkBox(dialog, box.name)->isChecked(),
                     !Settings::defaultValue(box.setting).toBool());
        QVERIFY(!canApply(dialog));
    }

    void eachBoxIsWrittenOnlyWhenApplied_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < Boxes.size(); ++i)
            QTest::newRow(Boxes.at(i).name) << i;
    }
    void eachBoxIsWrittenOnlyWhenApplied()
    {
        QFETCH(const int, index);
        const Box &box = Boxes.at(index);
        const bool before = Settings::defaultValue(box.setting).toBool();
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        clickEntry(dialog, box.page);
        DialogAnswers answers;
        if (box.isRestartRequired)
            answers.press("OK");
        clickBox(dialog, box.name);
        QVERIFY(answers.isDone());
        QCOMPARE(checkBox(dialog, box.name)->isChecked(), !before);
        QVERIFY(canApply(dialog));
        QCOMPARE(store().value(box.setting), QVariant(before));

        click(button(dialog, QDialogButtonBox::Apply));
        QVERIFY(!canApply(dialog));
        QCOMPARE(store().value(box.setting), QVariant(!before));
    }

    void theNoticeComesOnceUntilTheNextCommit()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        DialogAnswers first;
        first.press("OK");
        clickBox(dialog, "chkLoadMods");
        clickBox(dialog, "chkLoadMods");
        QCOMPARE(first.seen(), QStringList(Notice));
        QVERIFY(canApply(dialog));
        click(button(dialog, QDialogButtonBox::Apply));
        QCOMPARE(store().value(Settings::LoadMods), QVariant(false));

        DialogAnswers second;
        second.press("OK");
        clickBox(dialog, "chkLoadMods");
        QCOMPARE(second.seen(), QStringList(Notice));
    }

    void theNoticeComesForEachSetting()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        DialogAnswers answers;
        answers.press("OK").choose(path("game")).press("OK");
        clickBox(dialog, "chkLoadMods");
        click(part<QPushButton>(dialog, "btnBrowseQMPath"));
        QVERIFY(answers.isDone());
        QCOMPARE(answers.seen().first(), Notice);
        QCOMPARE(answers.seen().last(), Notice);
    }

    void theLinesOfThePreviewNeverBringTheNotice()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        clickEntry(dialog, 1);
        DialogAnswers answers;
        answers.press("OK");
        clickBox(dialog, "chkPreviewDrawOctave");
        clickBox(dialog, "chkPreviewDrawOctave");
        clickBox(dialog, "chkPreviewDrawMeasure");
        QCoreApplication::processEvents();
        QCOMPARE(answers.seen(), QStringList());
    }

    void aChosenGameIsShownAndWaits()
    {
        store().setValue(Settings::RootPath, path("other"));
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        DialogAnswers answers;
        answers.choose(path("game")).press("OK");
        click(part<QPushButton>(dialog, "btnBrowseQMPath"));
        QVERIFY(answers.isDone());
        QCOMPARE(answers.seen(),
                 (QStringList{QStringLiteral("chooser [Please locate the Quillmoor directory.] "
                                             "Directories; in %1")
                                  .arg(path("other")),
                              Notice}));
        QCOMPARE(shownPath(dialog), path("game"));
        QVERIFY(canApply(dialog));
        QCOMPARE(store().value(Settings::RootPath), QVariant(path("other")));
        dialog.commit();
        QCOMPARE(store().value(Settings::RootPath), QVariant(path("game")));
    }

    void aSecondChoiceBringsNoSecondNotice()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        DialogAnswers answers;
        answers.choose(path("game")).press("OK").choose(path("other"));
        click(part<QPushButton>(dialog, "btnBrowseQMPath"));
        click(part<QPushButton>(dialog, "btnBrowseQMPath"));
        QVERIFY(answers.isDone());
        QCOMPARE(answers.seen().size(), 3);
        QVERIFY(answers.seen().last().endsWith(QStringLiteral("in ") + path("game")));
        QCOMPARE(shownPath(dialog), path("other"));
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    }

    void aDirectoryWithoutTheGameIsRefused()
    {
        store().setValue(Settings::RootPath, path("other"));
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        DialogAnswers answers;
        answers.choose(path("no game")).press("OK");
        click(part<QPushButton>(dialog, "btnBrowseQMPath"));
        QVERIFY(answers.isDone());
        QCOMPARE(answers.seen().last(), Refusal);
        QCOMPARE(shownPath(dialog), path("other"));
        QVERIFY(!canApply(dialog));
        dialog.commit();
        QCOMPARE(store().value(Settings::RootPath), QVariant(path("other")));
    }

    void aRefusedDirectoryKeepsTheChosenOne()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        DialogAnswers answers;
        answers.choose(path("game")).press("OK").choose(path("no game")).press("OK");
        click(part<QPushButton>(dialog, "btnBrowseQMPath"));
        click(part<QPushButton>(dialog, "btnBrowseQMPath"));
        QVERIFY(answers.isDone());
        QCOMPARE(shownPath(dialog), path("game"));
        dialog.commit();
        QCOMPARE(store().value(Settings::RootPath), QVariant(path("game")));
    }

    void aCancelledChoiceChangesNothing()
    {
        store().setValue(Settings::RootPath, path("other"));
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        DialogAnswers answers;
        answers.cancel();
        click(part<QPushButton>(dialog, "btnBrowseQMPath"));
        QVERIFY(answers.isDone());
        QCOMPARE(shownPath(dialog), path("other"));
        QVERIFY(!canApply(dialog));
    }

    /// What is typed would be lost.
    void thePathIsChosenNotTyped()
    {
        store().setValue(Settings::RootPath, path("game"));
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        click(part<QLineEdit>(dialog, "txtQuillmoorPath"));
        type(QStringLiteral("x"));
        QCOMPARE(shownPath(dialog), path("game"));
    }

    void aPickedColorIsShownAndWaits()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        clickEntry(dialog, 1);
        DialogAnswers answers;
        answers.pick("#ff8000");
        click(part<QPushButton>(dialog, "btnPickNoteColor"));
        QVERIFY(answers.isDone());
        QCOMPARE(answers.seen(), texts({"colors [Pick note color] #2060ff"}));
        QCOMPARE(shownColor(dialog), QColor(255, 128, 0));
        QVERIFY(canApply(dialog));
        QCOMPARE(store().value(Settings::NoteColor).value<QColor>(), DefaultColor);
        click(button(dialog, QDialogButtonBox::Apply));
        QCOMPARE(store().value(Settings::NoteColor).value<QColor>(), QColor(255, 128, 0));
    }

    void theSameColorChangesNothing()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        clickEntry(dialog, 1);
        DialogAnswers answers;
        answers.pick("#2060ff");
        click(part<QPushButton>(dialog, "btnPickNoteColor"));
        QVERIFY(answers.isDone());
        QCOMPARE(shownColor(dialog), DefaultColor);
        QVERIFY(!canApply(dialog));
    }

    void aCancelledColorChangesNothing()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        clickEntry(dialog, 1);
        DialogAnswers answers;
        answers.cancel();
        click(part<QPushButton>(dialog, "btnPickNoteColor"));
        QCOMPARE(answers.seen(), texts({"colors [Pick note color] #2060ff"}));
        QCOMPARE(shownColor(dialog), DefaultColor);
        QVERIFY(!canApply(dialog));
    }

    void revertingTakesTheDefaultColor()
    {
        store().setValue(Settings::NoteColor, QColor(Qt::red));
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        clickEntry(dialog, 1);
        QCOMPARE(shownColor(dialog), QColor(Qt::red));
        click(part<QPushButton>(dialog, "btnResetNoteColor"));
        QCOMPARE(shownColor(dialog), DefaultColor);
        QVERIFY(canApply(dialog));
        QCOMPARE(store().value(Settings::NoteColor).value<QColor>(), QColor(Qt::red));
        dialog.commit();
        QCOMPARE(store().value(Settings::NoteColor).value<QColor>(), DefaultColor);
    }

    void revertingTheDefaultChangesNothing_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::newRow("a colour") << QVariant(DefaultColor);
        QTest::newRow("its name") << QVariant(QStringLiteral("#2060ff"));
        QTest::newRow("in another notation") << QVariant(DefaultColor.toHsv());
    }
    void revertingTheDefaultChangesNothing()
    {
        QFETCH(const QVariant, stored);
        store().setValue(Settings::NoteColor, stored);
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        clickEntry(dialog, 1);
        click(part<QPushButton>(dialog, "btnResetNoteColor"));
        QVERIFY(!canApply(dialog));
    }

    void cancellingAfterApplyKeepsWhatWasApplied()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        clickEntry(dialog, 1);
        clickBox(dialog, "chkPreviewDrawMeasure");
        click(button(dialog, QDialogButtonBox::Apply));
        clickBox(dialog, "chkPreviewDrawOctave");
        click(button(dialog, QDialogButtonBox::Cancel));
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        QVERIFY(!dialog.isVisible());
        QCOMPARE(store().value(Settings::DrawMeasureLines), QVariant(true));
        QCOMPARE(store().value(Settings::DrawOctaveLines), QVariant(true));
    }

    void cancellingLeavesEverything_data()
    {
        QTest::addColumn<bool>("isKey");
        QTest::newRow("Cancel") << false;
        QTest::newRow("Escape") << true;
    }
    void cancellingLeavesEverything()
    {
        QFETCH(const bool, isKey);
        {
            PreferencesDialog dialog;
            QVERIFY(show(dialog));
            clickEntry(dialog, 2);
            clickBox(dialog, "chkRealign");
            if (isKey)
                press(Qt::Key_Escape);
            else
                click(button(dialog, QDialogButtonBox::Cancel));
            QVERIFY(!dialog.isVisible());
            QCOMPARE(dialog.result(), int(QDialog::Rejected));
        }
        QCOMPARE(store().value(Settings::AutoRealign), QVariant(true));
        const PreferencesDialog again;
        QVERIFY(checkBox(again, "chkRealign")->isChecked());
    }

    void whoOpensItCommitsWhatWasAccepted()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        clickEntry(dialog, 2);
        clickBox(dialog, "chkPitchBend");
        clickBox(dialog, "chkMergeChannels");
        click(button(dialog, QDialogButtonBox::Ok));
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(store().value(Settings::PitchBend), QVariant(true));
        dialog.commit();
        QCOMPARE(store().value(Settings::PitchBend), QVariant(false));
        QCOMPARE(store().value(Settings::MergeChannels), QVariant(false));
        QCOMPARE(store().value(Settings::AutoRealign), QVariant(true));
    }

    void eachChangeIsAnnouncedOnce()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        clickEntry(dialog, 1);
        clickBox(dialog, "chkPreviewDrawOctave");
        clickBox(dialog, "chkPreviewDrawMeasure");
        QSignalSpy changes(&store(), &Settings::settingChanged);
        click(button(dialog, QDialogButtonBox::Apply));
        QMap<int, QVariant> announced;
        for (const QList<QVariant> &change : changes)
            announced.insert(change.at(0).value<Settings::Setting>(), change.at(1));
        QCOMPARE(changes.size(), 2);
        QCOMPARE(announced,
                 (QMap<int, QVariant>{{Settings::DrawOctaveLines, false},
                                      {Settings::DrawMeasureLines, true}}));
        dialog.commit();
        QCOMPARE(changes.size(), 2);
    }

    void aBoxThatIsBackWhereItWasIsWrittenAllTheSame()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        clickEntry(dialog, 1);
        clickBox(dialog, "chkPreviewDrawOctave");
        clickBox(dialog, "chkPreviewDrawOctave");
        QVERIFY(canApply(dialog));
        QSignalSpy changes(&store(), &Settings::settingChanged);
        dialog.commit();
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.first().at(1), QVariant(true));
    }

    void aSettingOfAnotherKindDoesNothing_data()
    {
        QTest::addColumn<int>("key");
        for (const int key : {-1, int(Settings::RootPath), int(Settings::LoadMods),
                              int(Settings::NoteColor), int(Settings::FindString), 1000})
            QTest::addRow("%d", key) << key;
    }
    void aSettingOfAnotherKindDoesNothing()
    {
        QFETCH(const int, key);
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        if (key != Settings::RootPath)
            dialog.onDirectoryBrowse(key);
        if (key != Settings::LoadMods)
            dialog.onCheckBoxChanged(key);
        if (key != Settings::NoteColor) {
            dialog.onColorPick(key);
            dialog.onColorReset(key);
        }
        QVERIFY(!canApply(dialog));
    }

    void theSlotsHaveTheirOrder()
    {
        QStringList slotNames;
        const QMetaObject &meta = PreferencesDialog::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            slotNames << QString::fromLatin1(meta.method(i).methodSignature());
        QCOMPARE(slotNames,
                 texts({"commit()", "onDirectoryBrowse(int)", "onCheckBoxChanged(int)",
                        "onColorPick(int)", "onColorReset(int)"}));
    }

    void theKeyboardReachesEverything_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QStringList>("order");
        QTest::newRow("instruments")
            << 0 << texts({"txtQuillmoorPath", "btnBrowseQMPath", "chkLoadMods"});
        QTest::newRow("preview") << 1
                                 << texts({"chkPreviewDrawOctave", "chkPreviewDrawMeasure",
                                           "btnPickNoteColor", "btnResetNoteColor"});
        QTest::newRow("midi") << 2 << texts({"chkMergeChannels", "chkRealign", "chkPitchBend"});
    }
    void theKeyboardReachesEverything()
    {
        QFETCH(const int, row);
        QFETCH(const QStringList, order);
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        QCOMPARE(focus(), QStringLiteral("propertySelector"));
        for (int i = 0; i < row; ++i)
            press(Qt::Key_Down);
        QCOMPARE(part<QStackedWidget>(dialog, "propertyPages")->currentIndex(), row);
        QStringList reached = tabOrder();
        QCOMPARE(reached.takeFirst(), QStringLiteral("propertySelector"));
        QCOMPARE(reached.takeFirst(), QStringLiteral("qt_tabwidget_tabbar"));
        QCOMPARE(reached.mid(0, order.size()), order);
        QStringList last = reached.mid(order.size());
        last.sort();
        QCOMPARE(last, texts({"Cancel", "OK"}));
    }

    void mnemonicsAreGivenOnce()
    {
        const PreferencesDialog dialog;
        QCOMPARE(sharedMnemonics(dialog), QStringList());
    }

    void mnemonicsWork()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        press(Qt::Key_L, Qt::AltModifier);
        QCOMPARE(focus(), QStringLiteral("txtQuillmoorPath"));
        DialogAnswers answers;
        answers.press("OK");
        press(Qt::Key_M, Qt::AltModifier);
        QTRY_VERIFY(answers.isDone());
        QVERIFY(show(dialog)); // active again
        QVERIFY(checkBox(dialog, "chkLoadMods")->isChecked());
        clickEntry(dialog, 1);
        answers.cancel();
        press(Qt::Key_N, Qt::AltModifier);
        QTRY_VERIFY(answers.isDone());
        QVERIFY(show(dialog)); // active again
        press(Qt::Key_V, Qt::AltModifier);
        QTRY_VERIFY(!checkBox(dialog, "chkPreviewDrawOctave")->isChecked());
    }

    void enterAccepts()
    {
        PreferencesDialog dialog;
        QVERIFY(show(dialog));
        press(Qt::Key_Return);
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }

    void whatHasNoTextIsReadOutByName()
    {
        const PreferencesDialog dialog;
        QCOMPARE(readOut(part<QWidget>(dialog, "txtQuillmoorPath")),
                 QStringLiteral("Quillmoor Location:"));
        QCOMPARE(readOut(part<QWidget>(dialog, "clNoteColor")), QStringLiteral("Note color"));
        QCOMPARE(readOut(part<QWidget>(dialog, "propertySelector")), QStringLiteral("Page"));
    }

    void noTextIsCut_data()
    {
        QTest::addColumn<int>("points");
        QTest::newRow("usual") << 9;
        QTest::newRow("large") << 24;
    }
    void noTextIsCut()
    {
        QFETCH(const int, points);
        PreferencesDialog dialog;
        dialog.setFont(QFont(dialog.font().family(), points));
        QVERIFY(show(dialog));
        const QSize size = dialog.size();
        for (int row = 0; row < 3; ++row) {
            clickEntry(dialog, row);
            QCOMPARE(cutTexts(dialog), QStringList());
        }
        QCOMPARE(dialog.size(), size);
        QVERIFY(selector(dialog)->viewport()->width() >= selector(dialog)->sizeHintForColumn(0));
    }
};

QTEST_MAIN(TestPreferencesDialog)
#include "tst_PreferencesDialog.moc"

#include "model/Settings.h"
#include "support/DialogAnswers.h"
#include "support/SettingsSandbox.h"
#include "support/WidgetDriver.h"
#include "ui/editor/ABCCodeEditor.h"
#include "ui/editor/FindReplaceDialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QtTest>

using namespace WidgetDriver;

namespace {

const QVector<Settings::Setting> kept{Settings::FindString,      Settings::ReplaceString,
                                      Settings::MatchWholeWords, Settings::MatchWholeCase,
                                      Settings::WrapAround,      Settings::SearchMode,
                                      Settings::Direction};

QVariant stored(Settings::Setting setting)
{
    return Settings::instance().value(setting);
}

void store(Settings::Setting setting, const QVariant &value)
{
    Settings::instance().setValue(setting, value);
}

QString boxOf(const char *kind, const char *text)
{
    return QStringLiteral("%1 [Find / Replace] %2 (OK)")
        .arg(QString::fromUtf8(kind), QString::fromUtf8(text));
}

} // namespace

class TestFindReplaceDialog : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<SettingsSandbox> m_sandbox;
    std::unique_ptr<QMainWindow> m_window;
    ABCCodeEditor *m_editor = nullptr;
    FindReplaceDialog *m_dialog = nullptr;

    template <typename Widget> Widget *part(const char *name) const
    {
        return m_dialog->findChild<Widget *>(QString::fromUtf8(name));
    }
    bool isChecked(const char *name) const { return part<QAbstractButton>(name)->isChecked(); }
    void click(const char *name) { WidgetDriver::click(part<QWidget>(name)); }
    void choose(const char *name)
    {
        auto *button = part<QAbstractButton>(name);
        WidgetDriver::click(button, QPoint(8, button->height() / 2));
    }
    void write(const char *name, const QString &text) { part<QLineEdit>(name)->setText(text); }

    void open()
    {
        m_dialog = new FindReplaceDialog(m_editor, m_window.get());
        QVERIFY(show(*m_dialog));
    }

    void reopen()
    {
        delete m_dialog;
        open();
    }

    void setText(const QString &text, int anchor, int position)
    {
        m_editor->setPlainText(text);
        QTextCursor cursor = m_editor->textCursor();
        cursor.setPosition(anchor);
        cursor.setPosition(position, QTextCursor::KeepAnchor);
        m_editor->setTextCursor(cursor);
    }
    void setText(const QString &text) { setText(text, 0, 0); }
    void setText(const char *text) { setText(QString::fromUtf8(text)); }

    QString text() const { return m_editor->toPlainText(); }
    QString selection() const
    {
        const QTextCursor cursor = m_editor->textCursor();
        return QStringLiteral("%1-%2").arg(cursor.selectionStart()).arg(cursor.selectionEnd());
    }

    /// What comes up when the button is clicked.
    QString told(const char *button)
    {
        DialogAnswers answers;
        answers.press("OK");
        click(button);
        return answers.isDone() ? answers.seen().join(QLatin1Char('|')) : QStringLiteral("nothing");
    }

private slots:
    void initTestCase() { m_sandbox = std::make_unique<SettingsSandbox>(); }
    void cleanupTestCase() { m_sandbox.reset(); }

    void init()
    {
        for (const Settings::Setting setting : kept)
            store(setting, Settings::defaultValue(setting));
        m_window = std::make_unique<QMainWindow>();
        m_editor = new ABCCodeEditor(m_window.get());
        m_window->setCentralWidget(m_editor);
        m_window->resize(400, 300);
        QVERIFY(show(*m_window));
        open();
    }
    void cleanup() { m_window.reset(); }

    void textsAreThese()
    {
        QCOMPARE(m_dialog->windowTitle(), QStringLiteral("Find / Replace"));
        QCOMPARE(shown(part<QLabel>("lblFind")->text()), QStringLiteral("Find what:"));
        QCOMPARE(shown(part<QLabel>("lblReplace")->text()), QStringLiteral("Replace with:"));
        const QStringList buttons = texts({"btnFindNext", "Find Next", "btnReplace", "Replace",
                                           "btnReplaceAll", "Replace All", "btnClose", "Close"});
        const QStringList boxes =
            texts({"chkWholeWords", "Match whole words only", "chkMatchCase", "Match case",
                   "chkWrapAround", "Wrap Around", "optUp", "Up", "optDown", "Down", "optNormal",
                   "Normal", "optRegularExpressions", "Regular Expressions", "optDocument",
                   "Document", "optSelection", "Selection"});
        const QStringList all = buttons + boxes;
        for (int i = 0; i < all.size(); i += 2)
            QCOMPARE(shown(m_dialog->findChild<QAbstractButton *>(all[i])->text()), all[i + 1]);
        QCOMPARE(part<QGroupBox>("grpDirection")->title(), QStringLiteral("Direction"));
        QCOMPARE(part<QGroupBox>("grpSearchMode")->title(), QStringLiteral("Search mode"));
        QCOMPARE(part<QGroupBox>("grpScope")->title(), QStringLiteral("Replace All Scope"));
    }

    void eachGroupHasItsRadioButtons()
    {
        QCOMPARE(part<QRadioButton>("optUp")->parentWidget()->objectName(),
                 QStringLiteral("grpDirection"));
        QCOMPARE(part<QRadioButton>("optDown")->parentWidget()->objectName(),
                 QStringLiteral("grpDirection"));
        QCOMPARE(part<QRadioButton>("optNormal")->parentWidget()->objectName(),
                 QStringLiteral("grpSearchMode"));
        QCOMPARE(part<QRadioButton>("optRegularExpressions")->parentWidget()->objectName(),
                 QStringLiteral("grpSearchMode"));
        QCOMPARE(part<QRadioButton>("optDocument")->parentWidget()->objectName(),
                 QStringLiteral("grpScope"));
        QCOMPARE(part<QRadioButton>("optSelection")->parentWidget()->objectName(),
                 QStringLiteral("grpScope"));
    }

    void itIsNotModal() { QVERIFY(!m_dialog->isModal()); }

    void everythingFitsAndCanBeReached()
    {
        QCOMPARE(cutTexts(*m_dialog), QStringList());
        QCOMPARE(sharedMnemonics(*m_dialog), QStringList());
        QCOMPARE(readOut(part<QLineEdit>("txtFind")), QStringLiteral("Find what:"));
        QCOMPARE(readOut(part<QLineEdit>("txtReplace")), QStringLiteral("Replace with:"));
        QCOMPARE(tabOrder(),
                 texts({"txtFind", "txtReplace", "chkWholeWords", "chkMatchCase", "chkWrapAround",
                        "optUp", "optNormal", "optDocument", "btnFindNext", "btnReplace",
                        "btnReplaceAll", "btnClose"}));
    }

    void everyWidgetHasAMnemonic()
    {
        for (const QAbstractButton *button : m_dialog->findChildren<QAbstractButton *>())
            QVERIFY2(!QKeySequence::mnemonic(button->text()).isEmpty(), qPrintable(button->text()));
        press(Qt::Key_R, Qt::AltModifier);
        QCOMPARE(focus(), QStringLiteral("txtReplace"));
        press(Qt::Key_F, Qt::AltModifier);
        QCOMPARE(focus(), QStringLiteral("txtFind"));
    }

    void theDefaultsAreShown()
    {
        QVERIFY(!isChecked("chkWholeWords"));
        QVERIFY(!isChecked("chkMatchCase"));
        QVERIFY(isChecked("chkWrapAround"));
        QVERIFY(isChecked("optNormal"));
        QVERIFY(isChecked("optDown"));
        QVERIFY(isChecked("optDocument"));
        QCOMPARE(part<QLineEdit>("txtFind")->text(), QString());
        QCOMPARE(part<QLineEdit>("txtReplace")->text(), QString());
    }

    void theSettingsAreShown()
    {
        store(Settings::MatchWholeWords, true);
        store(Settings::MatchWholeCase, true);
        store(Settings::WrapAround, false);
        store(Settings::FindString, QStringLiteral("old"));
        store(Settings::ReplaceString, QStringLiteral("new"));
        store(Settings::SearchMode, 1);
        store(Settings::Direction, 0);
        reopen();
        QVERIFY(isChecked("chkWholeWords"));
        QVERIFY(isChecked("chkMatchCase"));
        QVERIFY(!isChecked("chkWrapAround"));
        QVERIFY(isChecked("optRegularExpressions"));
        QVERIFY(isChecked("optUp"));
        QCOMPARE(part<QLineEdit>("txtFind")->text(), QStringLiteral("old"));
        QCOMPARE(part<QLineEdit>("txtReplace")->text(), QStringLiteral("new"));
    }

    void numbersThatMeanNothingAreTheDefaults()
    {
        store(Settings::SearchMode, 7);
        store(Settings::Direction, -1);
        reopen();
        QVERIFY(isChecked("optNormal"));
        QVERIFY(isChecked("optDown"));
    }

    void openingStoresNothing()
    {
        store(Settings::SearchMode, 0);
        store(Settings::Direction, 0);
        QSignalSpy changes(&Settings::instance(), &Settings::settingChanged);
        reopen();
        QCOMPARE(changes.count(), 0);
    }

    void boxesAreStoredWhenTheyAreToggled_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("setting");
        QTest::newRow("words") << "chkWholeWords" << int(Settings::MatchWholeWords);
        QTest::newRow("case") << "chkMatchCase" << int(Settings::MatchWholeCase);
        QTest::newRow("wrap") << "chkWrapAround" << int(Settings::WrapAround);
    }

    void boxesAreStoredWhenTheyAreToggled()
    {
        QFETCH(QString, name);
        QFETCH(int, setting);
        const auto which = Settings::Setting(setting);
        const bool before = stored(which).toBool();
        choose(qPrintable(name));
        QCOMPARE(stored(which), QVariant(!before));
        choose(qPrintable(name));
        QCOMPARE(stored(which), QVariant(before));
    }

    void theModeIsStored()
    {
        choose("optRegularExpressions");
        QCOMPARE(stored(Settings::SearchMode), QVariant(1));
        choose("optNormal");
        QCOMPARE(stored(Settings::SearchMode), QVariant(0));
    }

    void theDirectionIsStoredAsTheMode()
    {
        choose("optRegularExpressions");
        choose("optUp");
        QCOMPARE(stored(Settings::SearchMode), QVariant(0));
        QCOMPARE(stored(Settings::Direction), QVariant(1));
        choose("optDown");
        QCOMPARE(stored(Settings::SearchMode), QVariant(1));
        choose("optUp");
        reopen();
        QVERIFY(isChecked("optNormal"));
        QVERIFY(isChecked("optDown"));
    }

    void theTextsAreStoredByEachCommand_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("find") << "btnFindNext";
        QTest::newRow("replace") << "btnReplace";
        QTest::newRow("replace all") << "btnReplaceAll";
    }

    void theTextsAreStoredByEachCommand()
    {
        QFETCH(QString, button);
        choose("optRegularExpressions");
        write("txtFind", QStringLiteral("(new"));
        write("txtReplace", QStringLiteral("text"));
        QCOMPARE(stored(Settings::FindString), QVariant(QString()));
        QCOMPARE(told(qPrintable(button)), boxOf("critical", "Invalid regular expression"));
        QCOMPARE(stored(Settings::FindString), QVariant(QStringLiteral("(new")));
        QCOMPARE(stored(Settings::ReplaceString), QVariant(QStringLiteral("text")));
    }

    void anInvalidPatternChangesNothing()
    {
        setText(QStringLiteral("(a (a"), 0, 2);
        choose("optRegularExpressions");
        write("txtFind", QStringLiteral("(a"));
        for (const char *button : {"btnFindNext", "btnReplace", "btnReplaceAll"})
            QCOMPARE(told(button), boxOf("critical", "Invalid regular expression"));
        QCOMPARE(text(), QStringLiteral("(a (a"));
        QCOMPARE(selection(), QStringLiteral("0-2"));
    }

    void documentIsTheScopeOnEveryOpening()
    {
        choose("optSelection");
        QVERIFY(!isChecked("optDocument"));
        click("btnClose");
        QVERIFY(!m_dialog->isVisible());
        QVERIFY(show(*m_window));
        QVERIFY(show(*m_dialog));
        QVERIFY(isChecked("optDocument"));
    }

    void aWindowThatIsNoLongerMinimisedIsAsItWas()
    {
        choose("optSelection");
        part<QLineEdit>("txtFind")->deselect();
        part<QWidget>("txtReplace")->setFocus();
        QShowEvent shown;
        QSpontaneKeyEvent::setSpontaneous(&shown);
        QApplication::instance()->notify(m_dialog, &shown);
        QVERIFY(isChecked("optSelection"));
        QVERIFY(part<QWidget>("txtReplace")->hasFocus());
    }

    void theTextToFindIsReadyToBeWrittenOver_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("focus elsewhere") << int(Qt::Key_Tab);
        QTest::newRow("nothing selected") << int(Qt::Key_End);
    }

    void theTextToFindIsReadyToBeWrittenOver()
    {
        QFETCH(int, key);
        write("txtFind", QStringLiteral("old"));
        press(Qt::Key(key));
        press(Qt::Key_Escape);
        QVERIFY(!m_dialog->isVisible());
        QVERIFY(show(*m_window));
        QVERIFY(show(*m_dialog));
        type(QStringLiteral("new"));
        QCOMPARE(part<QLineEdit>("txtFind")->text(), QStringLiteral("new"));
    }

    void returnFinds()
    {
        setText("x ab ab");
        type(QStringLiteral("ab"));
        press(Qt::Key_Return);
        QCOMPARE(selection(), QStringLiteral("2-4"));
        press(Qt::Key_Return);
        QCOMPARE(selection(), QStringLiteral("5-7"));
        QVERIFY(m_dialog->isVisible());
    }

    void theKeysOfTheButtonsWork()
    {
        setText("ab ab ab");
        write("txtFind", QStringLiteral("ab"));
        write("txtReplace", QStringLiteral("x"));
        press(Qt::Key_N, Qt::AltModifier);
        QTRY_COMPARE(selection(), QStringLiteral("0-2"));
        press(Qt::Key_P, Qt::AltModifier);
        QTRY_COMPARE(text(), QStringLiteral("x ab ab"));
        press(Qt::Key_C, Qt::AltModifier);
        QTRY_VERIFY(!m_dialog->isVisible());
    }

    void theSearchWrapsAroundIfItShall()
    {
        setText(QStringLiteral("ab x"), 4, 4);
        write("txtFind", QStringLiteral("ab"));
        click("btnFindNext");
        QCOMPARE(selection(), QStringLiteral("0-2"));
        choose("chkWrapAround");
        QCOMPARE(told("btnFindNext"), boxOf("information", "No matches found"));
        QCOMPARE(selection(), QStringLiteral("0-2"));
    }

    void theSearchWrapsAroundUpwards()
    {
        setText("x\nab");
        write("txtFind", QStringLiteral("ab"));
        choose("optUp");
        click("btnFindNext");
        QCOMPARE(selection(), QStringLiteral("2-4"));
        choose("chkWrapAround");
        setText("x\nab");
        QCOMPARE(told("btnFindNext"), boxOf("information", "No matches found"));
    }

    void upFindsTheMatchBefore()
    {
        setText(QStringLiteral("ab ab ab"), 8, 8);
        write("txtFind", QStringLiteral("ab"));
        choose("optUp");
        click("btnFindNext");
        QCOMPARE(selection(), QStringLiteral("6-8"));
        click("btnFindNext");
        QCOMPARE(selection(), QStringLiteral("3-5"));
    }

    void nothingToFindIsNotFound()
    {
        setText("abc");
        QCOMPARE(told("btnFindNext"), boxOf("information", "No matches found"));
        write("txtReplace", QStringLiteral("x"));
        QCOMPARE(told("btnReplace"), boxOf("information", "No matches found"));
        QCOMPARE(told("btnReplaceAll"), boxOf("information", "0 occurence(s) replaced."));
        choose("optRegularExpressions");
        QCOMPARE(told("btnFindNext"), boxOf("information", "No matches found"));
        QCOMPARE(told("btnReplace"), boxOf("information", "No matches found"));
        QCOMPARE(told("btnReplaceAll"), boxOf("information", "0 occurence(s) replaced."));
        QCOMPARE(text(), QStringLiteral("abc"));
    }

    void wordsAndCaseMatterIfTheyShall()
    {
        setText("abx Ab ab");
        write("txtFind", QStringLiteral("ab"));
        choose("chkWholeWords");
        click("btnFindNext");
        QCOMPARE(selection(), QStringLiteral("4-6"));
        setText("abx Ab ab");
        choose("chkMatchCase");
        click("btnFindNext");
        QCOMPARE(selection(), QStringLiteral("7-9"));
    }

    void aPatternIsFound()
    {
        setText("xy a1 B2");
        choose("optRegularExpressions");
        write("txtFind", QStringLiteral("b\\d"));
        click("btnFindNext");
        QCOMPARE(selection(), QStringLiteral("6-8"));
        choose("chkMatchCase");
        QCOMPARE(told("btnFindNext"), boxOf("information", "No matches found"));
    }

    void replaceFindsFirstThenReplacesAndGoesOn()
    {
        setText("ab ab ab");
        write("txtFind", QStringLiteral("ab"));
        write("txtReplace", QStringLiteral("abc"));
        click("btnReplace");
        QCOMPARE(text(), QStringLiteral("ab ab ab"));
        QCOMPARE(selection(), QStringLiteral("0-2"));
        click("btnReplace");
        QCOMPARE(text(), QStringLiteral("abc ab ab"));
        QCOMPARE(selection(), QStringLiteral("4-6"));
        m_editor->undo();
        QCOMPARE(text(), QStringLiteral("ab ab ab"));
    }

    void replacingTheLastTellsThatThereAreNoMore()
    {
        setText(QStringLiteral("ab"), 0, 2);
        write("txtFind", QStringLiteral("ab"));
        write("txtReplace", QStringLiteral("x"));
        QCOMPARE(told("btnReplace"), boxOf("information", "No matches found"));
        QCOMPARE(text(), QStringLiteral("x"));
    }

    void replaceTakesGroups()
    {
        setText(QStringLiteral("a1 b2"), 0, 2);
        choose("optRegularExpressions");
        write("txtFind", QStringLiteral("([a-z])(\\d)"));
        write("txtReplace", QStringLiteral("\\2\\1"));
        click("btnReplace");
        QCOMPARE(text(), QStringLiteral("1a b2"));
        QCOMPARE(selection(), QStringLiteral("3-5"));
    }

    void replaceTakesWhatIsSelectedOverLines()
    {
        setText(QStringLiteral("xa\nby ab"), 1, 4);
        choose("optRegularExpressions");
        write("txtFind", QStringLiteral("a\\n?b"));
        write("txtReplace", QStringLiteral("-"));
        click("btnReplace");
        QCOMPARE(text(), QStringLiteral("x-y ab"));
        QCOMPARE(selection(), QStringLiteral("4-6"));
    }

    void replaceAllIsOneStep()
    {
        setText("ab\nab ab");
        write("txtFind", QStringLiteral("ab"));
        write("txtReplace", QStringLiteral("abab"));
        QCOMPARE(told("btnReplaceAll"), boxOf("information", "3 occurence(s) replaced."));
        QCOMPARE(text(), QStringLiteral("abab\nabab abab"));
        m_editor->undo();
        QCOMPARE(text(), QStringLiteral("ab\nab ab"));
        QVERIFY(!m_editor->document()->isUndoAvailable());
    }

    void replaceAllOfNothingIsNoStep()
    {
        setText("ab");
        write("txtFind", QStringLiteral("x"));
        QCOMPARE(told("btnReplaceAll"), boxOf("information", "0 occurence(s) replaced."));
        QVERIFY(!m_editor->document()->isModified());
    }

    void replaceAllLooksThroughTheDocumentFromItsStart()
    {
        setText(QStringLiteral("ab ab ab"), 5, 5);
        write("txtFind", QStringLiteral("ab"));
        QCOMPARE(told("btnReplaceAll"), boxOf("information", "3 occurence(s) replaced."));
        QCOMPARE(text(), QStringLiteral("  "));
    }

    void replaceAllLooksThroughTheSelectionFromTheCursor()
    {
        setText(QStringLiteral("ab ab ab ab"), 8, 3);
        write("txtFind", QStringLiteral("ab"));
        write("txtReplace", QStringLiteral("x"));
        choose("optSelection");
        QCOMPARE(told("btnReplaceAll"), boxOf("information", "2 occurence(s) replaced."));
        QCOMPARE(text(), QStringLiteral("ab x x ab"));
        setText(QStringLiteral("ab ab ab ab"), 3, 8);
        QCOMPARE(told("btnReplaceAll"), boxOf("information", "0 occurence(s) replaced."));
    }

    void replaceAllUpFromTheStartFindsNothing()
    {
        setText(QStringLiteral("ab ab"), 5, 5);
        write("txtFind", QStringLiteral("ab"));
        choose("optUp");
        QCOMPARE(told("btnReplaceAll"), boxOf("information", "0 occurence(s) replaced."));
    }

    void replaceAllOfEmptyMatchesEnds()
    {
        setText("ab\n\nc");
        choose("optRegularExpressions");
        write("txtFind", QStringLiteral("^"));
        write("txtReplace", QStringLiteral("%"));
        QCOMPARE(told("btnReplaceAll"), boxOf("information", "3 occurence(s) replaced."));
        QCOMPARE(text(), QStringLiteral("%ab\n%\n%c"));
    }

    // Without the box, the window would be dead for hours.
    void aLongSearchCanBeEnded()
    {
        setText(QStringLiteral("a").repeated(60'000));
        choose("optRegularExpressions");
        write("txtFind", QStringLiteral(".*x"));
        write("txtReplace", QStringLiteral("y"));
        for (const char *button : {"btnFindNext", "btnReplaceAll"}) {
            DialogAnswers answers;
            answers.visit([](QWidget &box) {
                QCOMPARE(box.windowTitle(), QStringLiteral("Find / Replace"));
                QCOMPARE(box.findChild<QLabel *>()->text(), QStringLiteral("Searching..."));
                WidgetDriver::click(box.findChild<QPushButton *>());
            });
            click(button);
            QVERIFY(answers.isDone());
            QVERIFY(QApplication::activeModalWidget() == nullptr);
        }
        QCOMPARE(text(), QStringLiteral("a").repeated(60'000));
        QVERIFY(!m_editor->document()->isModified());
    }

    void aLineTooLongForThePatternIsToldOf()
    {
        setText(QStringLiteral("a").repeated(60'000));
        choose("optRegularExpressions");
        write("txtFind", QStringLiteral("(a*)(a*)\\1\\2x"));
        QCOMPARE(told("btnFindNext"),
                 boxOf("critical", "A line of the text is too long for this regular expression."));
    }
};

QTEST_MAIN(TestFindReplaceDialog)
#include "tst_FindReplaceDialog.moc"

#include "MainWindowStage.h"

#include "support/WidgetDriver.h"
#include "ui/editor/ABCCodeEditor.h"
#include "ui/editor/ABCEditor.h"

#include <QAccessible>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QWindow>

/// What may come while a dialog is in front of the window, above all one of a row's editor: the
/// editor and its dialog are in the middle of a call, and go with their row.
class tst_MainWindowModality : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void keysAndClicksDoNotReachTheWindow();
    void rowsStayWhateverAsksForTheirRemoval_data();
    void rowsStayWhateverAsksForTheirRemoval();
    void aRemovalWaitsForTheReturnOfTheBox_data();
    void aRemovalWaitsForTheReturnOfTheBox();
    void aDropWaitsForTheBoxInFront();
    void aDropWaitsForTheSearchInFront();
    void theSessionEndsBehindADialog_data();
    void theSessionEndsBehindADialog();

private:
    /// As the program runs: not in the test's own loop, which counts as none.
    static void inProgram(const std::function<void()> &work);
    /// Has a box in front that tells of a text which cannot be read.
    /// Once the work is done, the dialogs that come are answered by these.
    void failToApply(const std::function<void()> &meanwhile,
                     std::initializer_list<const char *> answers = {"OK"});
    ABCEditor *openEditor() const;
    QString titles() const { return m_stage->titles().join(QLatin1Char(' ')); }

    std::unique_ptr<MainWindowStage> m_stage;
};

namespace {

const char *const ApplyBox =
    "critical [ABC Editor] Could not parse ABC: Unknown token found in ABC body at line 3, "
    "column 2. (OK)";
const char *const DropBox =
    "question [Import Files] Would you like to remove the existing tracks first? (Yes,No)";

template <typename Child> Child *child(const QWidget *parent, const char *name)
{
    auto *const found = parent->findChild<Child *>(text(name));
    if (found == nullptr)
        qFatal("There is no %s.", name);
    return found;
}

/// From the event loop, or from the next turn of what takes events.
void soon(QObject *context, const std::function<void()> &work)
{
    auto *const timer = new QTimer(context);
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, context, work);
    timer->start(0);
}

/// As a screen reader does it.
void pressByName(QWidget *button)
{
    QAccessible::queryAccessibleInterface(button)->actionInterface()->doAction(
        QAccessibleActionInterface::pressAction());
}

} // namespace

void tst_MainWindowModality::init()
{
    m_stage = std::make_unique<MainWindowStage>();
    m_stage->paste(abc("There", "K:C\nC"));
}

void tst_MainWindowModality::cleanup()
{
    QVERIFY(m_stage->answers().isDone());
    m_stage.reset();
}

void tst_MainWindowModality::inProgram(const std::function<void()> &work)
{
    QTimer start;
    start.setSingleShot(true);
    connect(&start, &QTimer::timeout, [&work] {
        work();
        QCoreApplication::exit();
    });
    start.start(0);
    QApplication::exec();
}

ABCEditor *tst_MainWindowModality::openEditor() const
{
    m_stage->click("T1", "btnEdit");
    for (QWidget *const widget : QApplication::topLevelWidgets()) {
        if (auto *const editor = qobject_cast<ABCEditor *>(widget))
            return editor;
    }
    qFatal("There is no editor.");
}

void tst_MainWindowModality::failToApply(const std::function<void()> &meanwhile,
                                         std::initializer_list<const char *> answers)
{
    inProgram([&] {
        QPointer<ABCEditor> editor = openEditor();
        editor->findChild<ABCCodeEditor *>()->selectAll();
        editor->findChild<ABCCodeEditor *>()->insertPlainText(text("X:1\nK:C\nC*"));
        m_stage->answers().visit([&](QWidget &box) {
            soon(&box, [&] {
                meanwhile();
                for (const char *const answer : answers)
                    m_stage->answers().press(answer);
            });
        });
        QVERIFY(!editor->onApply());
        QVERIFY(editor);
        QTRY_VERIFY(m_stage->answers().isDone());
    });
}

void tst_MainWindowModality::keysAndClicksDoNotReachTheWindow()
{
    failToApply([this] {
        QTest::keyClick(m_stage->window().windowHandle(), Qt::Key_Delete, Qt::ShiftModifier);
        WidgetDriver::click(m_stage->control<QWidget>("T1", "btnDelete"));
    });
    QCOMPARE(titles(), text("There"));
    QCOMPARE(m_stage->answers().seen().last(), text(ApplyBox));
}

/// A menu that the desktop shows in its own bar and a screen reader do not ask what is in front.
void tst_MainWindowModality::rowsStayWhateverAsksForTheirRemoval_data()
{
    QTest::addColumn<QString>("asking");
    for (const char *const asking : {"actionClear_Tracks", "actionRemove_Selected", "btnDelete"})
        QTest::newRow(asking) << text(asking);
}

void tst_MainWindowModality::rowsStayWhateverAsksForTheirRemoval()
{
    QFETCH(QString, asking);
    m_stage->select({text("T1")});
    failToApply([&] {
        if (asking == text("btnDelete"))
            pressByName(m_stage->control<QWidget>("T1", "btnDelete"));
        else
            m_stage->trigger(asking.toUtf8().constData());
    });
    QTest::qWait(0);
    QCOMPARE(titles(), text("There"));
    m_stage->trigger("actionClear_Tracks");
    QCOMPARE(titles(), QString());
}

/// Both clicks may have waited for a busy window.
void tst_MainWindowModality::aRemovalWaitsForTheReturnOfTheBox_data()
{
    QTest::addColumn<QString>("action");
    for (const char *const action : {"actionClear_Tracks", "actionRemove_Selected"})
        QTest::newRow(action) << text(action);
}

void tst_MainWindowModality::aRemovalWaitsForTheReturnOfTheBox()
{
    QFETCH(QString, action);
    m_stage->select({text("T1")});
    failToApply(
        [&] {
            QApplication::activeModalWidget()->findChild<QPushButton *>()->click();
            m_stage->trigger(action.toUtf8().constData());
        },
        {});
    QTRY_COMPARE(titles(), QString());
}

void tst_MainWindowModality::aDropWaitsForTheBoxInFront()
{
    failToApply([this] { m_stage->drop({m_stage->tune("New")}); }, {"OK", "Yes"});
    QCOMPARE(m_stage->answers().seen().mid(1), QStringList({text(ApplyBox), text(DropBox)}));
    QTRY_COMPARE(titles(), text("New"));
}

/// It takes events in the middle of its work.
void tst_MainWindowModality::aDropWaitsForTheSearchInFront()
{
    inProgram([this] {
        ABCEditor *const editor = openEditor();
        editor->findChild<ABCCodeEditor *>()->setPlainText(text("a").repeated(60'000));
        editor->onFindReplace();
        auto *const find = editor->findChild<QDialog *>(text("FindReplaceDialog"));
        child<QRadioButton>(find, "optRegularExpressions")->click();
        child<QLineEdit>(find, "txtFind")->setText(text(".*x"));
        m_stage->answers()
            .visit([this](QWidget &box) {
                soon(&box, [this, &box] {
                    m_stage->drop({m_stage->tune("New")});
                    WidgetDriver::click(box.findChild<QPushButton *>());
                });
            })
            .press("Yes");
        child<QPushButton>(find, "btnFindNext")->click();
        QCOMPARE(m_stage->answers().seen().size(), 1);
        QTRY_VERIFY(m_stage->answers().isDone());
    });
    QCOMPARE(m_stage->answers().seen().last(), text(DropBox));
    QTRY_COMPARE(titles(), text("New"));
}

void tst_MainWindowModality::theSessionEndsBehindADialog_data()
{
    QTest::addColumn<QString>("action");
    for (const char *const action : {"actionSaveAs", "actionTranspose", "actionRealignNotes"})
        QTest::newRow(action) << text(action);
}

/// All windows are asked to close then, and those in front first.
void tst_MainWindowModality::theSessionEndsBehindADialog()
{
    QFETCH(QString, action);
    QPointer<ABCEditor> editor;
    inProgram([&] {
        editor = openEditor();
        m_stage->answers().visit([](QWidget &) {
            QMetaObject::invokeMethod(qApp, "closeAllWindows", Qt::QueuedConnection);
        });
        child<QAction>(editor, action.toUtf8().constData())->trigger();
    });
    QTRY_VERIFY(!editor);
    QVERIFY(!m_stage->window().isVisible());
}

MAIN_WINDOW_TEST_MAIN(tst_MainWindowModality)
#include "tst_MainWindowModality.moc"

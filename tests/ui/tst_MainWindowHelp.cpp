#include "MainWindowStage.h"

#include "model/Settings.h"
#include "ui/dialogs/PreferencesDialog.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QPushButton>

/// Preferences, web pages, the about box and what is said of updates.
class tst_MainWindowHelp : public QObject {
    Q_OBJECT

public slots:
    void onUrl(const QUrl &url) { m_opened.append(url.toString()); }

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void pagesAreOpened_data();
    void pagesAreOpened();
    void theAboutBoxTellsTheVersion();

    void aStartIsSilent();
    void aRequestedCheckTellsItsFailure();
    void anUpdateIsOffered();
    void aRefusedUpdateIsNotOpened();
    void anUpdateIsOfferedAfterASilentCheck();
    void addressesThatAreNoWebPagesAreNotOpened_data();
    void addressesThatAreNoWebPagesAreNotOpened();
    void theLatestVersionIsToldOnRequest();
    void anErrorIsToldOnRequest();

    void preferencesAreModalAndCommitted();
    void cancelledPreferencesAreForgotten();

private:
    void beginRequestedCheck();

    std::unique_ptr<MainWindowStage> m_stage;
    QStringList m_opened;
};

namespace {

const char *const Question = "question [Update available] Quillmoor Composer v%1 is "
                             "available.\nWould you like to download it now? (Yes,No)";

} // namespace

void tst_MainWindowHelp::initTestCase()
{
    for (const char *const scheme : {"https", "http", "file", "quillmoor"})
        QDesktopServices::setUrlHandler(text(scheme), this, "onUrl");
}

void tst_MainWindowHelp::init()
{
    m_stage = std::make_unique<MainWindowStage>();
    m_opened.clear();
}

void tst_MainWindowHelp::cleanup()
{
    QVERIFY(m_stage->answers().isDone());
    m_stage.reset();
}

/// Its answer, which is a failure for want of a server, is waited for.
void tst_MainWindowHelp::beginRequestedCheck()
{
    m_stage->answers().press("OK");
    m_stage->trigger("actionCheck_for_updates");
    QTRY_VERIFY(m_stage->answers().isDone());
}

void tst_MainWindowHelp::pagesAreOpened_data()
{
    QTest::addColumn<QString>("page");
    QTest::newRow("actionLyrehall_Forum_Section")
        << text("https://quillmoor-composer.example/forum");
    QTest::newRow("actionLyrehall_Bug_Tracker") << text("https://quillmoor-composer.example/bugs");
    QTest::newRow("actionDonate") << text("https://quillmoor-composer.example/donate");
}

void tst_MainWindowHelp::pagesAreOpened()
{
    QFETCH(QString, page);
    m_stage->trigger(QTest::currentDataTag());
    QCOMPARE(m_opened, QStringList{page});
}

void tst_MainWindowHelp::theAboutBoxTellsTheVersion()
{
    QCoreApplication::setApplicationVersion(text("0.8.5"));
    m_stage->answers().press("OK");
    m_stage->trigger("actionAbout_Quillmoor_Composer");
    QVERIFY2(m_stage->answers().seen().value(0).contains(
                 text("[Quillmoor Composer] <html><b>Quillmoor Composer (v<i>0.8.5<i>)</b><br/>")),
             qPrintable(m_stage->answers().seen().value(0)));
}

void tst_MainWindowHelp::aStartIsSilent()
{
    m_stage->window().onUpdateFailed(text("Nobody there"));
    m_stage->window().onUpdateAvailable(false, text("0.8.5"), text("https://a.example/"));
    QVERIFY(m_stage->answers().seen().isEmpty());
}

void tst_MainWindowHelp::aRequestedCheckTellsItsFailure()
{
    beginRequestedCheck();
    QVERIFY2(m_stage->answers().seen().value(0).startsWith(
                 text("critical [Updates check failed] Failed to check for updates: ")),
             qPrintable(m_stage->answers().seen().value(0)));
}

void tst_MainWindowHelp::anUpdateIsOffered()
{
    beginRequestedCheck();
    m_stage->answers().press("Yes");
    m_stage->window().onUpdateAvailable(true, text("<b>9</b>"), text("https://a.example/get"));
    QCOMPARE(m_stage->answers().seen().last(), text(Question).arg(text("<b>9</b>")));
    QCOMPARE(m_opened, QStringList{text("https://a.example/get")});
}

void tst_MainWindowHelp::aRefusedUpdateIsNotOpened()
{
    m_stage->answers().press("No");
    m_stage->window().onUpdateAvailable(true, text("9"), text("https://a.example/get"));
    QVERIFY(m_opened.isEmpty());
}

void tst_MainWindowHelp::anUpdateIsOfferedAfterASilentCheck()
{
    m_stage->answers().press("Yes");
    m_stage->window().onUpdateAvailable(true, text("9"), text("HTTP://a.example/get"));
    QCOMPARE(m_stage->answers().seen(), QStringList{text(Question).arg(text("9"))});
    QCOMPARE(m_opened, QStringList{text("http://a.example/get")});
}

void tst_MainWindowHelp::addressesThatAreNoWebPagesAreNotOpened_data()
{
    QTest::addColumn<QString>("url");
    for (const char *const url : {"file:///etc/passwd", "quillmoor:run", "", "a.example/get",
                                  "https:///get", "javascript:alert(1)", "<a href='x'>x</a>"})
        QTest::newRow(url) << text(url);
}

void tst_MainWindowHelp::addressesThatAreNoWebPagesAreNotOpened()
{
    QFETCH(QString, url);
    m_stage->answers().press("Yes").press("OK");
    m_stage->window().onUpdateAvailable(true, text("9"), url);
    QCOMPARE(m_stage->answers().seen().value(1),
             text("warning [Update available] The address of the download is no web page:\n%1 (OK)")
                 .arg(url));
    QVERIFY(m_opened.isEmpty());
}

void tst_MainWindowHelp::theLatestVersionIsToldOnRequest()
{
    beginRequestedCheck();
    m_stage->answers().press("OK").press("OK");
    for (int i = 0; i < 2; ++i) {
        m_stage->window().onUpdateAvailable(false, text("0.8.5"), QString());
        QCOMPARE(m_stage->answers().seen().last(),
                 text("information [No updates] You are running the latest version of Quillmoor "
                      "Composer. (OK)"));
    }
}

void tst_MainWindowHelp::anErrorIsToldOnRequest()
{
    beginRequestedCheck();
    m_stage->answers().press("OK");
    m_stage->window().onUpdateFailed(text("<b>Nobody</b> there"));
    QCOMPARE(m_stage->answers().seen().last(),
             text("critical [Updates check failed] Failed to check for updates: <b>Nobody</b> "
                  "there (OK)"));
}

void tst_MainWindowHelp::preferencesAreModalAndCommitted()
{
    Settings::instance().setValue(Settings::PitchBend, true);
    m_stage->answers().visit([](QWidget &dialog) {
        QVERIFY(qobject_cast<PreferencesDialog *>(&dialog) != nullptr);
        QCOMPARE(dialog.parentWidget(), nullptr);
        QVERIFY(dialog.isModal());
        dialog.findChild<QAbstractButton *>(text("chkPitchBend"))->click();
        dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
    });
    m_stage->trigger("actionPreferences");
    QCOMPARE(Settings::instance().value(Settings::PitchBend).toBool(), false);
}

void tst_MainWindowHelp::cancelledPreferencesAreForgotten()
{
    Settings::instance().setValue(Settings::PitchBend, true);
    m_stage->answers().visit([](QWidget &dialog) {
        dialog.findChild<QAbstractButton *>(text("chkPitchBend"))->click();
        dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel)->click();
    });
    m_stage->trigger("actionPreferences");
    QCOMPARE(Settings::instance().value(Settings::PitchBend).toBool(), true);
}

MAIN_WINDOW_TEST_MAIN(tst_MainWindowHelp)
#include "tst_MainWindowHelp.moc"

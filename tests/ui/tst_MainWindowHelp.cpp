#include "MainWindowStage.h"

#include "model/Settings.h"
#include "ui/dialogs/PreferencesDialog.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QPushButton>

/// Preferences, web pages and the about box.
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

    void preferencesAreModalAndCommitted();
    void cancelledPreferencesAreForgotten();

private:
    std::unique_ptr<MainWindowStage> m_stage;
    QStringList m_opened;
};

void tst_MainWindowHelp::initTestCase()
{
    QDesktopServices::setUrlHandler(text("https"), this, "onUrl");
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

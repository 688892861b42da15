#include "MainWindowStage.h"

#include "support/TestHttpServer.h"

#include <QDesktopServices>

/// The check for updates from the window's start or menu to its box, with a server that answers.
class tst_MainWindowUpdates : public QObject {
    Q_OBJECT

public:
    explicit tst_MainWindowUpdates(TestHttpServer &server)
        : m_server(server)
    {
    }

public slots:
    void onUrl(const QUrl &url) { m_opened.append(url.toString()); }

private slots:
    void initTestCase();
    void init();

    void theStartTellsOfAnUpdate();
    void theStartIsSilentElse_data();
    void theStartIsSilentElse();
    void aRequestTellsWhatItFound_data();
    void aRequestTellsWhatItFound();
    void anErrorIsToldOnRequest();
    void anUpdateIsOffered();
    void aRefusedUpdateIsNotOpened();
    void addressesThatAreNoWebPagesAreNotOpened_data();
    void addressesThatAreNoWebPagesAreNotOpened();
    void theWindowClosesDuringACheck();

private:
    TestHttpServer &m_server;
    QStringList m_opened;
};

namespace {

const char *const Question = "question [Update available] Quillmoor Composer v%1 is available.\n"
                             "Would you like to download it now? (Yes,No)";

const QByteArray Newer = R"({"version":[0,9,0,0],"versionString":"0.9 \"Lute\"",)"
                         R"("url":"https://a.example/get"})";
const QByteArray Latest = R"({"version":[0,8,5,0],"versionString":"0.8.5","url":""})";

} // namespace

void tst_MainWindowUpdates::initTestCase()
{
    for (const char *const scheme : {"https", "http", "file", "quillmoor", "javascript"})
        QDesktopServices::setUrlHandler(text(scheme), this, "onUrl");
}

void tst_MainWindowUpdates::init()
{
    m_opened.clear();
    m_server.setAnswer(HttpAnswers::silence());
}

void tst_MainWindowUpdates::theStartTellsOfAnUpdate()
{
    m_server.setAnswer(HttpAnswers::body(Newer));
    MainWindowStage stage;
    stage.answers().press("Yes");
    QTRY_VERIFY(stage.answers().isDone());
    QCOMPARE(stage.answers().seen(), QStringList{text(Question).arg(text("0.9 \"Lute\""))});
    QTRY_COMPARE(m_opened, QStringList{text("https://a.example/get")});
}

void tst_MainWindowUpdates::theStartIsSilentElse_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("latest") << Latest;
    QTest::newRow("rubbish") << QByteArray("<html>");
}

void tst_MainWindowUpdates::theStartIsSilentElse()
{
    QFETCH(QByteArray, answer);
    const int before = m_server.requests().size();
    m_server.setAnswer(HttpAnswers::body(answer));
    MainWindowStage stage;
    QTRY_COMPARE(m_server.requests().size(), before + 1);
    QTRY_COMPARE(m_server.openConnections(), 0);
    QCoreApplication::processEvents();
    QVERIFY(stage.answers().seen().isEmpty());
}

void tst_MainWindowUpdates::aRequestTellsWhatItFound_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("box");
    QTest::newRow("latest") << Latest
                            << text("information [No updates] You are running the latest version "
                                    "of Quillmoor Composer. (OK)");
    QTest::newRow("rubbish") << QByteArray("<html>")
                             << text("critical [Updates check failed] Failed to check for updates: "
                                     "Could not read update information (OK)");
}

void tst_MainWindowUpdates::aRequestTellsWhatItFound()
{
    QFETCH(QByteArray, answer);
    const int before = m_server.requests().size();
    MainWindowStage stage; // whose check at the start gets no answer
    QTRY_COMPARE(m_server.requests().size(), before + 1);
    m_server.setAnswer(HttpAnswers::body(answer));
    stage.answers().press("OK");
    stage.trigger("actionCheck_for_updates");
    QTRY_VERIFY(stage.answers().isDone());
    QTEST(stage.answers().seen().value(0), "box");
}

void tst_MainWindowUpdates::anUpdateIsOffered()
{
    MainWindowStage stage;
    stage.answers().press("Yes");
    stage.window().onUpdateAvailable(true, text("<b>9</b>"), text("https://a.example/get"));
    QCOMPARE(stage.answers().seen().last(), text(Question).arg(text("<b>9</b>")));
    QCOMPARE(m_opened, QStringList{text("https://a.example/get")});
}

void tst_MainWindowUpdates::aRefusedUpdateIsNotOpened()
{
    MainWindowStage stage;
    stage.answers().press("No");
    stage.window().onUpdateAvailable(true, text("9"), text("https://a.example/get"));
    QVERIFY(m_opened.isEmpty());
}

void tst_MainWindowUpdates::addressesThatAreNoWebPagesAreNotOpened_data()
{
    QTest::addColumn<QString>("url");
    for (const char *const url : {"file:///etc/passwd", "quillmoor:run", "", "a.example/get",
                                  "https:///get", "javascript:alert(1)", "<a href='x'>x</a>"})
        QTest::newRow(url) << text(url);
}

void tst_MainWindowUpdates::addressesThatAreNoWebPagesAreNotOpened()
{
    QFETCH(QString, url);
    MainWindowStage stage;
    stage.answers().press("Yes").press("OK");
    stage.window().onUpdateAvailable(true, text("9"), url);
    QCOMPARE(stage.answers().seen().value(1),
             text("warning [Update available] The address of the download is no web page:\n%1 (OK)")
                 .arg(url));
    QVERIFY(m_opened.isEmpty());
}

/// Once asked for, checks are never silent again.
void tst_MainWindowUpdates::anErrorIsToldOnRequest()
{
    MainWindowStage stage;
    stage.trigger("actionCheck_for_updates");
    stage.answers().press("OK");
    stage.window().onUpdateFailed(text("<b>Nobody</b> there"));
    QCOMPARE(stage.answers().seen().last(),
             text("critical [Updates check failed] Failed to check for updates: <b>Nobody</b> "
                  "there (OK)"));
}

void tst_MainWindowUpdates::theWindowClosesDuringACheck()
{
    const int before = m_server.requests().size();
    MainWindowStage stage;
    QTRY_COMPARE(m_server.requests().size(), before + 1);
    stage.close();
    QTRY_COMPARE(m_server.openConnections(), 0);
    QVERIFY(stage.answers().seen().isEmpty());
}

/// The program takes the host's name from the environment once.
int main(int argc, char **argv)
{
    prepareProcess();
    const SettingsSandbox sandbox;
    QApplication application(argc, argv);
    TestHttpServer server;
    qputenv("QUILLMOOR_UPDATE_HOST", server.host().toUtf8());
    tst_MainWindowUpdates test(server);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_MainWindowUpdates.moc"

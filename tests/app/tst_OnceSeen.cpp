#include "app/OnceSeen.h"

#include <QWidget>
#include <QtTest>

#include <memory>

namespace {

class Canvas : public QWidget {
public:
    QStringList *log = nullptr;

protected:
    void paintEvent(QPaintEvent *) override { log->append(QStringLiteral("painted")); }
};

} // namespace

class tst_OnceSeen : public QObject {
    Q_OBJECT

private slots:
    void theWindowIsPaintedFirst();
    void itComesOnce();
    void itComesOnceThoughItLastsAndTheWindowIsSeenAgain();
    void anUnseenWindowIsNotWaitedForForEver();
    void nothingComesWithoutTheWindow();
};

void tst_OnceSeen::theWindowIsPaintedFirst()
{
    QStringList log;
    Canvas window;
    window.log = &log;
    window.show();
    onceSeen(window, [&] { log.append(QStringLiteral("called")); });
    QVERIFY(log.isEmpty());
    QTRY_VERIFY(log.contains(QStringLiteral("called")));
    QCOMPARE(log.first(), QStringLiteral("painted"));
}

void tst_OnceSeen::itComesOnce()
{
    int calls = 0;
    QWidget window;
    window.show();
    onceSeen(window, [&] { ++calls; });
    QTRY_COMPARE(calls, 1);
    window.hide();
    window.show();
    window.resize(300, 300);
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCoreApplication::processEvents();
    QCOMPARE(calls, 1);
}

/// As with a message box over the window, whose closing uncovers it.
void tst_OnceSeen::itComesOnceThoughItLastsAndTheWindowIsSeenAgain()
{
    int calls = 0;
    int exposures = 0;
    QWidget window;
    window.show();
    onceSeen(window, [&] {
        ++calls;
        window.hide();
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        ++exposures;
        QTest::qWait(20);
    });
    QTRY_COMPARE(exposures, 1);
    QTest::qWait(20);
    QCOMPARE(calls, 1);
}

void tst_OnceSeen::anUnseenWindowIsNotWaitedForForEver()
{
    int calls = 0;
    QWidget window;
    window.winId(); // which makes it, unseen
    onceSeen(window, [&] { ++calls; });
    QCOMPARE(calls, 0);
    QTRY_COMPARE(calls, 1);
}

void tst_OnceSeen::nothingComesWithoutTheWindow()
{
    int calls = 0;
    auto window = std::make_unique<QWidget>();
    window->show();
    onceSeen(*window, [&] { ++calls; });
    window.reset();
    QCoreApplication::processEvents();
    QCOMPARE(calls, 0);
}

QTEST_MAIN(tst_OnceSeen)
#include "tst_OnceSeen.moc"

#include "app/Application.h"
#include "support/DialogAnswers.h"

#include <QDialog>
#include <QMenu>
#include <QThread>
#include <QtTest>

#include <functional>
#include <memory>
#include <stdexcept>

namespace {

const QString Known =
    QStringLiteral("critical [Quillmoor Composer] A fatal error occured:\n%1 (OK)");
const QString Unknown =
    QStringLiteral("critical [Quillmoor Composer] An unknown fatal error ocurred (OK)");

/// An application of its own for each test: one has only one failure to show.
struct Run {
    int argc = 1;
    char name[5] = "test";
    char *argv[2] = {name, nullptr};
    Application application{argc, argv};
    DialogAnswers answers;

    Run() { QCoreApplication::setApplicationName(QStringLiteral("Quillmoor Composer")); }

    /// Runs the event loop, in which `slot` is called first.
    int exec(const std::function<void()> &slot)
    {
        QTimer::singleShot(0, &application, slot);
        return QApplication::exec();
    }
};

/// Fails as often as it is painted.
class Unpaintable : public QWidget {
public:
    int count = 0;

protected:
    void paintEvent(QPaintEvent *) override
    {
        ++count;
        update();
        throw QStringLiteral("no paint");
    }
};

} // namespace

class tst_Application : public QObject {
    Q_OBJECT

private slots:
    void aThrownTextIsShown();
    void anythingElseIsUnknown_data();
    void anythingElseIsUnknown();
    void anEventHandlerMayThrow();
    void paintingThatAlwaysFailsIsShownOnce();
    void onlyTheFirstFailureIsShown();
    void aFailureWhileTheBoxIsOpenAddsNone();
    void theLoopsOfDialogsEnd();
    void anOpenMenuIsClosed();
    void aWorkersFailureIsShownOnTheUserInterfaceThread();
    void aFailureWithoutEventLoopIsShownAtTheEnd();
    void withoutFailureTheStatusStays();
};

void tst_Application::aThrownTextIsShown()
{
    Run run;
    run.answers.press("OK");
    QCOMPARE(run.exec([] { throw QStringLiteral("<b>Broken</b>"); }), 1);
    QCOMPARE(run.answers.seen(), QStringList(Known.arg(QStringLiteral("<b>Broken</b>"))));
    QVERIFY(run.application.hasFailed());
    QCOMPARE(run.application.finish(0), 1);
    QCOMPARE(run.answers.seen().size(), 1);
}

void tst_Application::anythingElseIsUnknown_data()
{
    QTest::addColumn<bool>("isStandard");
    QTest::newRow("a standard exception") << true;
    QTest::newRow("a number") << false;
}

void tst_Application::anythingElseIsUnknown()
{
    QFETCH(bool, isStandard);
    Run run;
    run.answers.press("OK");
    if (isStandard)
        QTest::ignoreMessage(QtCriticalMsg, "out of ideas");
    QCOMPARE(run.exec([isStandard] {
        if (isStandard)
            throw std::runtime_error("out of ideas");
        throw 42;
    }),
             1);
    QCOMPARE(run.answers.seen(), QStringList(Unknown));
}

void tst_Application::anEventHandlerMayThrow()
{
    class Target : public QWidget {
        void mousePressEvent(QMouseEvent *) override { throw QStringLiteral("pressed"); }
    };
    Run run;
    run.answers.press("OK");
    Target target;
    target.show();
    QCOMPARE(run.exec([&] { QTest::mousePress(&target, Qt::LeftButton); }), 1);
    QCOMPARE(run.answers.seen(), QStringList(Known.arg(QStringLiteral("pressed"))));
}

void tst_Application::paintingThatAlwaysFailsIsShownOnce()
{
    Run run;
    run.answers.press("OK");
    Unpaintable window;
    QCOMPARE(run.exec([&] { window.show(); }), 1);
    QVERIFY(window.count > 1);
    QCOMPARE(run.answers.seen(), QStringList(Known.arg(QStringLiteral("no paint"))));
}

void tst_Application::onlyTheFirstFailureIsShown()
{
    Run run;
    run.answers.press("OK");
    QTimer::singleShot(0, [] { throw QStringLiteral("first"); });
    QTimer::singleShot(0, [] { throw QStringLiteral("second"); });
    QCOMPARE(run.exec([] { throw 3; }), 1);
    QCOMPARE(run.answers.seen(), QStringList(Known.arg(QStringLiteral("first"))));
}

void tst_Application::aFailureWhileTheBoxIsOpenAddsNone()
{
    Run run;
    int failures = 0;
    QTimer failing;
    connect(&failing, &QTimer::timeout, [&] {
        // The box is answered when it has seen some more.
        if (++failures == 5)
            run.answers.press("OK");
        throw QStringLiteral("again");
    });
    failing.start(1);
    QCOMPARE(QApplication::exec(), 1);
    QVERIFY(failures >= 5);
    QCOMPARE(run.answers.seen(), QStringList(Known.arg(QStringLiteral("again"))));
}

void tst_Application::theLoopsOfDialogsEnd()
{
    Run run;
    run.answers.press("OK");
    QDialog outer;
    QDialog inner;
    QVector<int> results;
    QCOMPARE(run.exec([&] {
        QTimer::singleShot(0, &outer, [&] {
            QTimer::singleShot(0, &inner, [] { throw QStringLiteral("deep inside"); });
            results.append(inner.exec());
        });
        results.append(outer.exec());
    }),
             1);
    QCOMPARE(results, QVector<int>({QDialog::Rejected, QDialog::Rejected}));
    QCOMPARE(run.answers.seen(), QStringList(Known.arg(QStringLiteral("deep inside"))));
}

void tst_Application::anOpenMenuIsClosed()
{
    Run run;
    run.answers.press("OK");
    QWidget window;
    window.show();
    QMenu menu(&window);
    menu.addAction(QStringLiteral("Entry"));
    QCOMPARE(run.exec([&] {
        menu.popup(QPoint(0, 0));
        throw QStringLiteral("in a menu");
    }),
             1);
    QVERIFY(!menu.isVisible());
    QCOMPARE(run.answers.seen(), QStringList(Known.arg(QStringLiteral("in a menu"))));
}

void tst_Application::aWorkersFailureIsShownOnTheUserInterfaceThread()
{
    Run run;
    QThread thread;
    QObject worker;
    worker.moveToThread(&thread);
    thread.start();
    bool goesOn = false;
    QMetaObject::invokeMethod(&worker, [] { throw QStringLiteral("on another thread"); });
    QMetaObject::invokeMethod(
        &worker, [&] { goesOn = true; }, Qt::BlockingQueuedConnection);
    run.answers.press("OK");
    QCOMPARE(QApplication::exec(), 1);
    thread.quit();
    QVERIFY(thread.wait());
    QVERIFY(goesOn);
    QCOMPARE(run.answers.seen(), QStringList(Known.arg(QStringLiteral("on another thread"))));
}

void tst_Application::aFailureWithoutEventLoopIsShownAtTheEnd()
{
    Run run;
    run.answers.press("OK");
    try {
        throw QStringLiteral("too early");
    } catch (...) {
        run.application.fail();
    }
    QCOMPARE(run.application.finish(0), 1);
    QCOMPARE(run.answers.seen(), QStringList(Known.arg(QStringLiteral("too early"))));
}

void tst_Application::withoutFailureTheStatusStays()
{
    Run run;
    QCOMPARE(run.application.finish(run.exec([] { QCoreApplication::exit(7); })), 7);
    QVERIFY(!run.application.hasFailed());
    QVERIFY(run.answers.seen().isEmpty());
}

QTEST_APPLESS_MAIN(tst_Application)
#include "tst_Application.moc"

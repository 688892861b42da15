#include "support/DialogAnswers.h"
#include "support/WidgetDriver.h"
#include "ui/dialogs/MessageBoxes.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QtTest>

using namespace WidgetDriver;

namespace {

const QString title = QStringLiteral("The title");
const QString text = QStringLiteral("First line\nSecond line");

/// What the user sees of a box.
struct Seen {
    QString title;
    QString text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QStringList buttons;
    QString defaultButton;
    QWidget *parent = nullptr;
    bool isModal = false;
};

QMessageBox &messageBox(QWidget &window)
{
    return *qobject_cast<QMessageBox *>(&window);
}

Seen look(const QMessageBox &box)
{
    Seen seen;
    seen.title = box.windowTitle();
    seen.text = box.text();
    seen.icon = box.icon();
    for (const QAbstractButton *button : box.buttons()) {
        seen.buttons << shown(button->text());
        if (qobject_cast<const QPushButton *>(button)->isDefault())
            seen.defaultButton = shown(button->text());
    }
    seen.parent = box.parentWidget();
    seen.isModal = box.isModal();
    return seen;
}

void pressEscape(QMessageBox &)
{
    press(Qt::Key_Escape);
}

} // namespace

using Statement = void (*)(QWidget *, const QString &, const QString &);
using Question = bool (*)(QWidget *, const QString &, const QString &);
using Answer = void (*)(QMessageBox &);
Q_DECLARE_METATYPE(Statement)
Q_DECLARE_METATYPE(Question)
Q_DECLARE_METATYPE(Answer)
Q_DECLARE_METATYPE(QMessageBox::Icon)
Q_DECLARE_METATYPE(MessageBoxes::Answer)

class TestMessageBoxes : public QObject {
    Q_OBJECT

private:
    static void addQuestions()
    {
        QTest::addColumn<Question>("ask");
        QTest::addColumn<QMessageBox::Icon>("icon");
        QTest::addColumn<QString>("onEnter");
        QTest::newRow("question") << &MessageBoxes::question << QMessageBox::Question << "Yes";
        QTest::newRow("warning question")
            << &MessageBoxes::warningQuestion << QMessageBox::Warning << "Yes";
        QTest::newRow("loss question")
            << &MessageBoxes::lossQuestion << QMessageBox::Warning << "No";
    }

    static QString shownText(const QString &given)
    {
        QString seen;
        DialogAnswers answers;
        answers.visit([&](QWidget &box) {
            seen = messageBox(box).text();
            press(Qt::Key_Escape);
        });
        MessageBoxes::critical(nullptr, title, given);
        return seen;
    }

private slots:
    void aStatementHasTitleTextAndOk_data()
    {
        QTest::addColumn<Statement>("state");
        QTest::addColumn<QMessageBox::Icon>("icon");
        QTest::newRow("information") << &MessageBoxes::information << QMessageBox::Information;
        QTest::newRow("warning") << &MessageBoxes::warning << QMessageBox::Warning;
        QTest::newRow("critical") << &MessageBoxes::critical << QMessageBox::Critical;
    }
    void aStatementHasTitleTextAndOk()
    {
        QFETCH(const Statement, state);
        QWidget window;
        QVERIFY(show(window));
        Seen seen;
        DialogAnswers answers;
        answers.visit([&](QWidget &box) {
            seen = look(messageBox(box));
            press(Qt::Key_Return);
        });
        state(&window, title, text);
        QVERIFY(answers.isDone());
        QCOMPARE(seen.title, title);
        QCOMPARE(seen.text, text);
        QTEST(seen.icon, "icon");
        QCOMPARE(seen.buttons, texts({"OK"}));
        QCOMPARE(seen.defaultButton, QStringLiteral("OK"));
        QCOMPARE(seen.parent, &window);
        QVERIFY(seen.isModal);
    }

    void aStatementIsClosedByEscapeAndMouse_data()
    {
        QTest::addColumn<Answer>("answer");
        QTest::newRow("Escape") << Answer(pressEscape);
        QTest::newRow("click") << Answer(
            [](QMessageBox &box) { click(box.button(QMessageBox::Ok)); });
        QTest::newRow("window closed") << Answer([](QMessageBox &box) { box.close(); });
    }
    void aStatementIsClosedByEscapeAndMouse()
    {
        QFETCH(const Answer, answer);
        DialogAnswers answers;
        answers.visit([&](QWidget &box) { answer(messageBox(box)); });
        MessageBoxes::warning(nullptr, title, text);
        QVERIFY(answers.isDone());
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    }

    void aQuestionHasTitleTextYesAndNo_data() { addQuestions(); }
    void aQuestionHasTitleTextYesAndNo()
    {
        QFETCH(const Question, ask);
        QWidget window;
        QVERIFY(show(window));
        Seen seen;
        DialogAnswers answers;
        answers.visit([&](QWidget &box) {
            seen = look(messageBox(box));
            press(Qt::Key_Escape);
        });
        QVERIFY(!ask(&window, title, text));
        QVERIFY(answers.isDone());
        QCOMPARE(seen.title, title);
        QCOMPARE(seen.text, text);
        QTEST(seen.icon, "icon");
        seen.buttons.sort();
        QCOMPARE(seen.buttons, texts({"No", "Yes"}));
        QTEST(seen.defaultButton, "onEnter");
        QCOMPARE(seen.parent, &window);
        QVERIFY(seen.isModal);
    }

    void onlyYesIsYes_data()
    {
        QTest::addColumn<Answer>("answer");
        QTest::addColumn<bool>("isYes");
        QTest::newRow("click on Yes")
            << Answer([](QMessageBox &box) { click(box.button(QMessageBox::Yes)); }) << true;
        QTest::newRow("click on No")
            << Answer([](QMessageBox &box) { click(box.button(QMessageBox::No)); }) << false;
        QTest::newRow("Alt+Y") << Answer([](QMessageBox &) { press(Qt::Key_Y, Qt::AltModifier); })
                               << true;
        QTest::newRow("Alt+N") << Answer([](QMessageBox &) { press(Qt::Key_N, Qt::AltModifier); })
                               << false;
        QTest::newRow("Enter") << Answer([](QMessageBox &) { press(Qt::Key_Return); }) << true;
        QTest::newRow("Tab and Enter") << Answer([](QMessageBox &) {
            press(Qt::Key_Tab);
            press(Qt::Key_Return);
        }) << false;
        QTest::newRow("Escape") << Answer(pressEscape) << false;
        QTest::newRow("window closed") << Answer([](QMessageBox &box) { box.close(); }) << false;
    }
    void onlyYesIsYes()
    {
        QFETCH(const Answer, answer);
        QFETCH(const bool, isYes);
        for (const Question ask : {&MessageBoxes::question, &MessageBoxes::warningQuestion}) {
            DialogAnswers answers;
            answers.visit([&](QWidget &box) { answer(messageBox(box)); });
            QCOMPARE(ask(nullptr, title, text), isYes);
            QVERIFY(answers.isDone());
        }
    }

    void enterLosesNothing()
    {
        DialogAnswers answers;
        answers.visit([](QWidget &) { press(Qt::Key_Return); });
        answers.press("Yes");
        QVERIFY(!MessageBoxes::lossQuestion(nullptr, title, text));
        QVERIFY(MessageBoxes::lossQuestion(nullptr, title, text));
    }

    void aQuestionMayBeCancelled()
    {
        QWidget window;
        QVERIFY(show(window));
        Seen seen;
        DialogAnswers answers;
        answers.visit([&](QWidget &box) {
            seen = look(messageBox(box));
            press(Qt::Key_Escape);
        });
        QCOMPARE(MessageBoxes::questionOrCancel(&window, title, text),
                 MessageBoxes::Answer::Cancel);
        QVERIFY(answers.isDone());
        QCOMPARE(seen.title, title);
        QCOMPARE(seen.text, text);
        QCOMPARE(seen.icon, QMessageBox::Question);
        seen.buttons.sort();
        QCOMPARE(seen.buttons, texts({"Cancel", "No", "Yes"}));
        QCOMPARE(seen.defaultButton, QStringLiteral("Yes"));
        QCOMPARE(seen.parent, &window);
        QVERIFY(seen.isModal);
    }

    void eachOfThreeAnswersIsGiven_data()
    {
        using MessageBoxes::Answer;
        QTest::addColumn<::Answer>("answer");
        QTest::addColumn<Answer>("expected");
        QTest::newRow("click on Yes")
            << ::Answer([](QMessageBox &box) { click(box.button(QMessageBox::Yes)); })
            << Answer::Yes;
        QTest::newRow("click on No")
            << ::Answer([](QMessageBox &box) { click(box.button(QMessageBox::No)); }) << Answer::No;
        QTest::newRow("click on Cancel")
            << ::Answer([](QMessageBox &box) { click(box.button(QMessageBox::Cancel)); })
            << Answer::Cancel;
        QTest::newRow("Alt+Y") << ::Answer([](QMessageBox &) { press(Qt::Key_Y, Qt::AltModifier); })
                               << Answer::Yes;
        QTest::newRow("Alt+N") << ::Answer([](QMessageBox &) { press(Qt::Key_N, Qt::AltModifier); })
                               << Answer::No;
        QTest::newRow("Enter") << ::Answer([](QMessageBox &) { press(Qt::Key_Return); })
                               << Answer::Yes;
        QTest::newRow("Escape") << ::Answer(pressEscape) << Answer::Cancel;
        QTest::newRow("window closed")
            << ::Answer([](QMessageBox &box) { box.close(); }) << Answer::Cancel;
    }
    void eachOfThreeAnswersIsGiven()
    {
        QFETCH(const ::Answer, answer);
        DialogAnswers answers;
        answers.visit([&](QWidget &box) { answer(messageBox(box)); });
        QTEST(MessageBoxes::questionOrCancel(nullptr, title, text), "expected");
        QVERIFY(answers.isDone());
    }

    void markupIsShownAsItIs_data()
    {
        QTest::addColumn<QString>("markup");
        QTest::newRow("bold") << "<b>bold</b>";
        QTest::newRow("a link") << "<a href=\"https://example.org\">click</a>";
        QTest::newRow("a document") << "<html><body>hidden<p>text</body></html>";
        QTest::newRow("an entity") << "a &amp; b";
        QTest::newRow("a mnemonic") << "Drums & Bass";
    }
    void markupIsShownAsItIs()
    {
        QFETCH(const QString, markup);
        QString labelText;
        Qt::TextFormat format = Qt::AutoText;
        DialogAnswers answers;
        answers.visit([&](QWidget &box) {
            const auto *label = box.findChild<QLabel *>(QStringLiteral("qt_msgbox_label"));
            labelText = label->text();
            format = label->textFormat();
            press(Qt::Key_Escape);
        });
        MessageBoxes::critical(nullptr, title, markup);
        QVERIFY(answers.isDone());
        QCOMPARE(labelText, markup);
        QCOMPARE(format, Qt::PlainText);
    }

    void someLinesAreShownWhole_data()
    {
        QTest::addColumn<QString>("given");
        QTest::newRow("a long path") << QStringLiteral("/folder").repeated(60);
        QTest::newRow("twelve lines") << QStringLiteral("a line\n").repeated(12);
    }
    void someLinesAreShownWhole()
    {
        QFETCH(const QString, given);
        QTEST(shownText(given), "given");
    }

    void aLongTextIsCut_data()
    {
        QTest::addColumn<QString>("given");
        QTest::newRow("a megabyte") << QString(1000000, QLatin1Char('x'));
        QTest::newRow("many lines") << QStringLiteral("a\n").repeated(500000);
        // Each is two units, of which one half means nothing.
        const QString clef = QString::fromUtf8("\xF0\x9D\x84\x9E");
        QTest::newRow("characters of two units") << clef.repeated(100000);
        QTest::newRow("the same by one further") << QLatin1Char('x') + clef.repeated(100000);
    }
    void aLongTextIsCut()
    {
        QFETCH(const QString, given);
        QString seen = shownText(given);
        QVERIFY(seen.size() > 20 && seen.size() < 2000);
        QVERIFY(seen.endsWith(QChar(0x2026)));
        seen.chop(1);
        QVERIFY(given.startsWith(seen));
        QVERIFY(!seen.at(seen.size() - 1).isHighSurrogate());
    }

    void aBoxFitsTheScreen_data()
    {
        QTest::addColumn<QString>("given");
        QTest::newRow("one word") << QString(1000000, QLatin1Char('W'));
        QTest::newRow("words") << QStringLiteral("word ").repeated(200000);
        QTest::newRow("line breaks") << QString(1000000, QLatin1Char('\n'));
        QTest::newRow("separators") << QString(1000000, QChar::LineSeparator);
        QTest::newRow("tabs") << QString(1000000, QLatin1Char('\t'));
        QTest::newRow("wide characters") << QString(1000000, QChar(0x4E00));
    }
    void aBoxFitsTheScreen()
    {
        QFETCH(const QString, given);
        QSize size;
        DialogAnswers answers;
        answers.visit([&](QWidget &box) {
            size = box.size();
            press(Qt::Key_Escape);
        });
        MessageBoxes::critical(nullptr, title, given);
        QVERIFY(answers.isDone());
        const QSize room = QGuiApplication::primaryScreen()->availableSize();
        QVERIFY2(size.width() <= room.width() && size.height() <= room.height(),
                 qPrintable(QStringLiteral("%1x%2").arg(size.width()).arg(size.height())));
    }
};

QTEST_MAIN(TestMessageBoxes)
#include "tst_MessageBoxes.moc"

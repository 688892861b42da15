#include "support/DialogAnswers.h"

#include "support/WidgetDriver.h"

#include <QApplication>
#include <QColorDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

namespace {

constexpr int PollMs = 5;
constexpr int PatienceMs = 30000;

template <typename Dialog> Dialog *activeDialog()
{
    auto *const dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
    return dialog != nullptr && dialog->isVisible() ? dialog : nullptr;
}

QString iconName(const QMessageBox &box)
{
    switch (box.icon()) {
    case QMessageBox::Information:
        return QStringLiteral("information");
    case QMessageBox::Warning:
        return QStringLiteral("warning");
    case QMessageBox::Critical:
        return QStringLiteral("critical");
    default:
        return QStringLiteral("question");
    }
}

QString description(const QMessageBox &box)
{
    QStringList buttons;
    for (const QAbstractButton *const button : box.buttons())
        buttons.append(WidgetDriver::shown(button->text()));
    return QStringLiteral("%1 [%2] %3 (%4)")
        .arg(iconName(box), box.windowTitle(), box.text(), buttons.join(QLatin1Char(',')));
}

QString description(const QFileDialog &dialog)
{
    return QStringLiteral("chooser [%1] %2; in %3")
        .arg(dialog.windowTitle(), dialog.selectedNameFilter(), dialog.directory().path());
}

QString description(const QColorDialog &dialog)
{
    return QStringLiteral("colors [%1] %2").arg(dialog.windowTitle(), dialog.currentColor().name());
}

template <typename Dialog> QString cancelled()
{
    auto *const dialog = activeDialog<Dialog>();
    if (dialog == nullptr)
        return {};
    QString seen = description(*dialog);
    QTest::keyClick(dialog, Qt::Key_Escape);
    return seen;
}

} // namespace

QString Dialogs::press(const QString &button)
{
    auto *const box = activeDialog<QMessageBox>();
    if (box == nullptr)
        return {};
    QString seen = description(*box);
    for (QAbstractButton *const each : box->buttons()) {
        if (WidgetDriver::shown(each->text()) == button)
            QTest::mouseClick(each, Qt::LeftButton);
    }
    return seen;
}

QString Dialogs::choose(const QString &path)
{
    auto *const dialog = activeDialog<QFileDialog>();
    if (dialog == nullptr)
        return {};
    QString seen = description(*dialog);
    auto *const edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    edit->setText(path);
    // Later, since the dialog may ask about an existing file, which is the next one to answer.
    QTimer::singleShot(0, edit, [edit] { QTest::keyClick(edit, Qt::Key_Return); });
    return seen;
}

QString Dialogs::pick(const QString &color)
{
    auto *const dialog = activeDialog<QColorDialog>();
    if (dialog == nullptr)
        return {};
    QString seen = description(*dialog);
    auto *const edit = dialog->findChild<QLineEdit *>();
    edit->selectAll();
    QTest::keyClicks(edit, color);
    QTest::keyClick(edit, Qt::Key_Return);
    return seen;
}

QString Dialogs::cancel()
{
    const QString seen = cancelled<QFileDialog>();
    return seen.isEmpty() ? cancelled<QColorDialog>() : seen;
}

DialogAnswers::DialogAnswers()
{
    connect(&m_timer, &QTimer::timeout, this, &DialogAnswers::onTimeout);
    m_timer.start(PollMs);
    m_unanswered.start();
}

DialogAnswers &DialogAnswers::press(const char *button)
{
    return add([text = QString::fromUtf8(button)] { return Dialogs::press(text); });
}

DialogAnswers &DialogAnswers::choose(const QString &path)
{
    return add([path] { return Dialogs::choose(path); });
}

DialogAnswers &DialogAnswers::pick(const char *color)
{
    return add([name = QString::fromUtf8(color)] { return Dialogs::pick(name); });
}

DialogAnswers &DialogAnswers::cancel()
{
    return add([] { return Dialogs::cancel(); });
}

DialogAnswers &DialogAnswers::visit(const std::function<void(QWidget &)> &action)
{
    return add([action]() -> QString {
        QWidget *const window = QApplication::activeModalWidget();
        if (window == nullptr || window != QApplication::activeWindow())
            return {};
        action(*window);
        return QStringLiteral("visited");
    });
}

DialogAnswers &DialogAnswers::add(const Answer &answer)
{
    m_answers.enqueue(answer);
    return *this;
}

/// A dialog that nobody answers would keep the test waiting for ever.
void DialogAnswers::watch()
{
    if (QApplication::activeModalWidget() == nullptr)
        m_unanswered.start();
    else if (m_unanswered.hasExpired(PatienceMs))
        qFatal("A dialog was not expected.");
}

void DialogAnswers::onTimeout()
{
    watch();
    if (m_answers.isEmpty())
        return;
    const QString seen = m_answers.head()();
    if (seen.isEmpty())
        return;
    m_unanswered.start();
    m_answers.dequeue();
    m_seen.append(seen);
}

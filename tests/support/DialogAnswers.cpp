#include "support/DialogAnswers.h"

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

namespace {

constexpr int PollMs = 5;

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

QString withoutMnemonic(QString text)
{
    return text.remove(QLatin1Char('&'));
}

QString description(const QMessageBox &box)
{
    QStringList buttons;
    for (const QAbstractButton *const button : box.buttons())
        buttons.append(withoutMnemonic(button->text()));
    return QStringLiteral("%1 [%2] %3 (%4)")
        .arg(iconName(box), box.windowTitle(), box.text(), buttons.join(QLatin1Char(',')));
}

QString description(const QFileDialog &dialog)
{
    return QStringLiteral("chooser [%1] %2; in %3")
        .arg(dialog.windowTitle(), dialog.selectedNameFilter(), dialog.directory().path());
}

} // namespace

QString Dialogs::press(const QString &button)
{
    auto *const box = activeDialog<QMessageBox>();
    if (box == nullptr)
        return {};
    const QString seen = description(*box);
    for (QAbstractButton *const each : box->buttons()) {
        if (withoutMnemonic(each->text()) == button)
            QTest::mouseClick(each, Qt::LeftButton);
    }
    return seen;
}

QString Dialogs::choose(const QString &path)
{
    auto *const dialog = activeDialog<QFileDialog>();
    if (dialog == nullptr)
        return {};
    const QString seen = description(*dialog);
    auto *const edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    edit->setText(path);
    QTest::keyClick(edit, Qt::Key_Return);
    return seen;
}

QString Dialogs::cancel()
{
    auto *const dialog = activeDialog<QFileDialog>();
    if (dialog == nullptr)
        return {};
    const QString seen = description(*dialog);
    dialog->reject();
    return seen;
}

DialogAnswers::DialogAnswers()
{
    connect(&m_timer, &QTimer::timeout, this, &DialogAnswers::onTimeout);
    m_timer.start(PollMs);
}

DialogAnswers &DialogAnswers::press(const char *button)
{
    return add([text = QString::fromUtf8(button)] { return Dialogs::press(text); });
}

DialogAnswers &DialogAnswers::choose(const QString &path)
{
    return add([path] { return Dialogs::choose(path); });
}

DialogAnswers &DialogAnswers::cancel()
{
    return add([] { return Dialogs::cancel(); });
}

DialogAnswers &DialogAnswers::add(const Answer &answer)
{
    m_answers.enqueue(answer);
    return *this;
}

void DialogAnswers::onTimeout()
{
    if (m_answers.isEmpty())
        return;
    const QString seen = m_answers.head()();
    if (seen.isEmpty())
        return;
    m_answers.dequeue();
    m_seen.append(seen);
}

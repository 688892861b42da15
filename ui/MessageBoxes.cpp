#include "ui/MessageBoxes.h"

#include <QMessageBox>

namespace {

int show(QMessageBox::Icon icon, QWidget *parent, const QString &title, const QString &text,
         QMessageBox::StandardButtons buttons)
{
    QMessageBox box(icon, title, text, buttons, parent);
    box.setTextFormat(Qt::PlainText);
    return box.exec();
}

bool ask(QMessageBox::Icon icon, QWidget *parent, const QString &title, const QString &text)
{
    return show(icon, parent, title, text, QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

} // namespace

void MessageBoxes::information(QWidget *parent, const QString &title, const QString &text)
{
    show(QMessageBox::Information, parent, title, text, QMessageBox::Ok);
}

void MessageBoxes::warning(QWidget *parent, const QString &title, const QString &text)
{
    show(QMessageBox::Warning, parent, title, text, QMessageBox::Ok);
}

void MessageBoxes::critical(QWidget *parent, const QString &title, const QString &text)
{
    show(QMessageBox::Critical, parent, title, text, QMessageBox::Ok);
}

bool MessageBoxes::question(QWidget *parent, const QString &title, const QString &text)
{
    return ask(QMessageBox::Question, parent, title, text);
}

bool MessageBoxes::warningQuestion(QWidget *parent, const QString &title, const QString &text)
{
    return ask(QMessageBox::Warning, parent, title, text);
}

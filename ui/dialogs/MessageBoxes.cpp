#include "ui/dialogs/MessageBoxes.h"

#include <QMessageBox>

namespace {

/// A box grows with its text, beyond the screen at last. These are lines of the narrowest box.
constexpr int LongestLines = 20;
constexpr int LineWidth = 300;

/// How much of a line a character takes: all of it where it may end the line or skip a part of it.
int cost(QChar character, const QFontMetrics &metrics)
{
    if (character.isSpace() && character != QLatin1Char(' '))
        return LineWidth;
    return qMax(metrics.averageCharWidth(), metrics.horizontalAdvance(character));
}

int fittingLength(const QString &text, const QFontMetrics &metrics)
{
    int left = LongestLines * LineWidth;
    for (int i = 0; i < text.size(); ++i) {
        left -= cost(text.at(i), metrics);
        if (left < 0)
            return i;
    }
    return text.size();
}

QString shortened(const QString &text, const QFontMetrics &metrics)
{
    const int length = fittingLength(text, metrics);
    if (length == text.size())
        return text;
    const bool splitsCharacter = length > 0 && text.at(length - 1).isHighSurrogate();
    return text.left(length - int(splitsCharacter)) + QChar(0x2026);
}

int show(QMessageBox::Icon icon, QWidget *parent, const QString &title, const QString &text,
         QMessageBox::StandardButtons buttons,
         QMessageBox::StandardButton onEnter = QMessageBox::NoButton)
{
    QMessageBox box(icon, title, QString(), buttons, parent);
    box.setDefaultButton(onEnter);
    box.setTextFormat(Qt::PlainText);
    box.setText(shortened(text, box.fontMetrics()));
    return box.exec();
}

bool ask(QMessageBox::Icon icon, QWidget *parent, const QString &title, const QString &text,
         QMessageBox::StandardButton onEnter = QMessageBox::Yes)
{
    return show(icon, parent, title, text, QMessageBox::Yes | QMessageBox::No, onEnter)
        == QMessageBox::Yes;
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

bool MessageBoxes::lossQuestion(QWidget *parent, const QString &title, const QString &text)
{
    return ask(QMessageBox::Warning, parent, title, text, QMessageBox::No);
}

MessageBoxes::Answer MessageBoxes::questionOrCancel(QWidget *parent, const QString &title,
                                                    const QString &text)
{
    switch (show(QMessageBox::Question, parent, title, text,
                 QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel)) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    default:
        return Answer::Cancel;
    }
}

void MessageBoxes::about(QWidget *parent, const QString &title, const QString &html)
{
    QMessageBox::about(parent, title, html);
}

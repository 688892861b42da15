#pragma once

#include <QString>

class QWidget;

/// Modal message boxes that show their text as it is: a file name or a message that holds "<b>"
/// or a link is never taken for markup. A text of more than some twenty lines is cut and ends in
/// "…", so that the box fits the screen. Each returns when the user has closed it.
namespace MessageBoxes {

void information(QWidget *parent, const QString &title, const QString &text);
void warning(QWidget *parent, const QString &title, const QString &text);
void critical(QWidget *parent, const QString &title, const QString &text);

/// With the buttons Yes and No; true for Yes. Enter is Yes, Escape is No.
bool question(QWidget *parent, const QString &title, const QString &text);
/// The same with the picture of a warning.
bool warningQuestion(QWidget *parent, const QString &title, const QString &text);
/// A warning before something is lost by Yes: Enter is No, too.
bool lossQuestion(QWidget *parent, const QString &title, const QString &text);

enum class Answer { Yes, No, Cancel };
/// With the buttons Yes, No and Cancel. Escape is Cancel.
Answer questionOrCancel(QWidget *parent, const QString &title, const QString &text);

/// The one that shows markup: `html` is the program's own.
void about(QWidget *parent, const QString &title, const QString &html);

} // namespace MessageBoxes

#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QQueue>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>

class QWidget;

/// What a user does with the modal dialog that is in front. Each answers what was seen before it
/// was done, or an empty text when no such dialog is there (yet).
namespace Dialogs {

/// Seen as "critical [title] text (OK)", with the texts of all buttons.
QString press(const QString &button);
/// Types the path into a file dialog: seen as "chooser [title] filter; in directory". Several
/// paths stand in quotation marks with blanks between.
QString choose(const QString &path);
/// Types the name of a colour ("#rrggbb") into a colour dialog: seen as "colors [title] #rrggbb"
/// with the colour that was chosen in it before.
QString pick(const QString &color);
/// Of a file or colour dialog.
QString cancel();

} // namespace Dialogs

/// Gives prepared answers to the dialogs that come up one after the other while a test goes on. A
/// dialog that has no answer for half a minute ends the test program.
class DialogAnswers : public QObject {
public:
    DialogAnswers();

    /// Answers of the functions above, in the order in which the dialogs will come.
    DialogAnswers &press(const char *button);
    DialogAnswers &choose(const QString &path);
    DialogAnswers &pick(const char *color);
    DialogAnswers &cancel();

    /// Any other thing to do with a modal window, once keys go to it: seen as "visited".
    DialogAnswers &visit(const std::function<void(QWidget &)> &action);

    /// What was seen so far; all that was expected once isDone().
    const QStringList &seen() const { return m_seen; }
    bool isDone() const { return m_answers.isEmpty(); }

private:
    using Answer = std::function<QString()>;

    DialogAnswers &add(const Answer &answer);
    void watch();
    void onTimeout();

    QTimer m_timer;
    QElapsedTimer m_unanswered;
    QQueue<Answer> m_answers;
    QStringList m_seen;
};

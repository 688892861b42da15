#pragma once

#include <QPoint>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <initializer_list>

class QWidget;

/// Windows used as a person does it. Keys go to the active window, which passes them on to what
/// has the focus or answers to the shortcut; clicks go to the window, at the place of the widget.
namespace WidgetDriver {

/// Shows the window and waits until keys go to it.
bool show(QWidget &window);

void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
void type(const QString &text);

/// At the widget's centre, or at a place within it.
void click(QWidget *widget);
void click(QWidget *widget, const QPoint &place);

/// The object names of what the Tab key leads to, from what has the focus now until that has it
/// again. Buttons of a button box go by their text.
QStringList tabOrder();

/// The name of what has the focus, as in tabOrder().
QString focus();

/// The object names of labels, buttons, boxes and the like that have less room than their text.
QStringList cutTexts(const QWidget &window);

/// What a screen reader calls the widget: its label, else its own name.
QString readOut(QWidget *widget);

/// A text as it is shown, without the mark of its mnemonic.
QString shown(QString text);

QStringList texts(std::initializer_list<const char *> list);

} // namespace WidgetDriver

/// Does something with the next modal window, once that is active.
class ModalVisitor {
public:
    explicit ModalVisitor(std::function<void(QWidget &)> visit);
    Q_DISABLE_COPY(ModalVisitor)

    bool hasVisited() const { return m_hasVisited; }

private:
    void look();

    std::function<void(QWidget &)> m_visit;
    QWidget *m_before;
    QTimer m_timer;
    bool m_hasVisited = false;
};

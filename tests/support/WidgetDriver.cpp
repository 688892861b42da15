#include "support/WidgetDriver.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QWindow>
#include <QtTest>

namespace {

QString nameOf(const QWidget *widget)
{
    if (widget == nullptr)
        return QStringLiteral("(nothing)");
    const auto *button = qobject_cast<const QAbstractButton *>(widget);
    const bool hasName = !widget->objectName().isEmpty();
    return hasName || button == nullptr ? widget->objectName()
                                        : WidgetDriver::shown(button->text());
}

int neededHeight(const QWidget &widget)
{
    return widget.hasHeightForWidth() ? widget.heightForWidth(widget.width())
                                      : widget.sizeHint().height();
}

int neededWidth(const QWidget &widget)
{
    const auto *label = qobject_cast<const QLabel *>(&widget);
    const bool canWrap = label != nullptr && label->wordWrap();
    return canWrap ? widget.minimumSizeHint().width() : widget.sizeHint().width();
}

// A window calls itself active already when the one behind it is.
bool becomesActive(const QWidget *window)
{
    return QTest::qWaitFor([window] { return QApplication::activeWindow() == window; });
}

bool holdsText(const QWidget *widget)
{
    return qobject_cast<const QLabel *>(widget) != nullptr
        || qobject_cast<const QAbstractButton *>(widget) != nullptr
        || qobject_cast<const QComboBox *>(widget) != nullptr
        || qobject_cast<const QAbstractSpinBox *>(widget) != nullptr
        || qobject_cast<const QGroupBox *>(widget) != nullptr;
}

} // namespace

bool WidgetDriver::show(QWidget &window)
{
    window.show();
    window.activateWindow();
    return becomesActive(&window);
}

void WidgetDriver::press(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(QApplication::activeWindow()->windowHandle(), key, modifiers);
}

void WidgetDriver::type(const QString &text)
{
    for (const QChar character : text)
        QTest::keyClick(QApplication::activeWindow()->windowHandle(), character.toLatin1());
}

void WidgetDriver::click(QWidget *widget)
{
    click(widget, widget->rect().center());
}

void WidgetDriver::click(QWidget *widget, const QPoint &place)
{
    QWidget *window = widget->window();
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      widget->mapTo(window, place));
}

QStringList WidgetDriver::tabOrder()
{
    constexpr int more = 100;
    const QWidget *first = QApplication::focusWidget();
    QStringList names;
    do {
        names << focus();
        press(Qt::Key_Tab);
    } while (QApplication::focusWidget() != first && names.size() < more);
    return names;
}

QString WidgetDriver::focus()
{
    return nameOf(QApplication::focusWidget());
}

QStringList WidgetDriver::cutTexts(const QWidget &window)
{
    QStringList names;
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        const bool isCut =
            widget->width() < neededWidth(*widget) || widget->height() < neededHeight(*widget);
        if (widget->isVisible() && holdsText(widget) && isCut)
            names << nameOf(widget);
    }
    return names;
}

QString WidgetDriver::readOut(QWidget *widget)
{
    const QAccessibleInterface *own = QAccessible::queryAccessibleInterface(widget);
    const auto labels = own->relations(QAccessible::Label);
    return (labels.isEmpty() ? own : labels.first().first)->text(QAccessible::Name);
}

QString WidgetDriver::shown(QString text)
{
    return text.remove(QLatin1Char('&'));
}

QStringList WidgetDriver::texts(std::initializer_list<const char *> list)
{
    QStringList texts;
    for (const char *text : list)
        texts << QString::fromUtf8(text);
    return texts;
}

ModalVisitor::ModalVisitor(std::function<void(QWidget &)> visit)
    : m_visit(std::move(visit))
    , m_before(QApplication::activeModalWidget())
{
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { look(); });
    m_timer.start(0);
}

void ModalVisitor::look()
{
    QWidget *modal = QApplication::activeModalWidget();
    if (modal == nullptr || modal == m_before)
        return;
    m_timer.stop();
    m_hasVisited = becomesActive(modal);
    m_visit(*modal);
}

#pragma once

#include "support/DialogAnswers.h"
#include "support/SettingsSandbox.h"
#include "ui/MainWindow.h"
#include "ui/tracks/TrackWidget.h"

#include <QAction>
#include <QApplication>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

QString text(const char *text);

/// The main window over a small game, with answers to its dialogs. The first row has the id "T1".
///
/// The game has the instruments "Drum", "Flute" and "Lute". All map the notes 48 to 72 to samples
/// of their own, "flute.wav" and so on, but for the drum, which maps only note 60.
class MainWindowStage {
public:
    MainWindowStage();
    ~MainWindowStage();

    MainWindow &window() { return *m_window; }
    DialogAnswers &answers() { return m_answers; }
    QString dir() const { return m_dir.path(); }
    QString path(const char *name) const { return m_dir.filePath(text(name)); }

    /// A new window over the same game.
    void reopen();
    void close() { m_window.reset(); }

    /// Makes a file in dir() and answers its path.
    QString made(const QByteArray &name, const QByteArray &contents) const;
    /// An ABC file of four quarters, "TITLE.abc".
    QString tune(const char *title) const;
    /// A MIDI file of one note.
    QString midi(const char *name) const;

    /// Adds a row of ABC text through the clipboard.
    void paste(const QByteArray &abc);
    /// Adds so many rows of four quarters.
    void pasteTunes(int count);

    QAction *action(const char *name) const;
    void trigger(const char *name) const { action(name)->trigger(); }
    bool isEnabled(const char *name) const { return action(name)->isEnabled(); }

    /// From the top.
    QList<TrackWidget *> rows() const;
    QStringList ids() const;
    QStringList titles() const;
    TrackWidget *row(const char *id) const;
    /// The ids that are selected or muted, from the top, with blanks between.
    QString selected() const;
    QString muted() const;

    /// A control of a row by its name in the form.
    template <typename Control> Control *control(const char *id, const char *name) const;
    /// Clicks the control, a button or a box.
    void click(const char *id, const char *name) const;
    void select(const QStringList &ids) const;
    QString instrument(const char *id) const;
    /// Chooses from the button's context menu.
    void choose(const char *id, const char *button, const char *entry) const;

    void drop(const QStringList &paths);
    void drop(QDropEvent &event);

private:
    /// Qt passes a drop on only after a drag that was accepted; the tests do without.
    class Window : public MainWindow {
    public:
        using MainWindow::dropEvent;
        using MainWindow::MainWindow;
    };

    void makeGame() const;
    void makeInstrument(const char *name, int lowest, int highest) const;

    QTemporaryDir m_dir;
    std::unique_ptr<Window> m_window;
    DialogAnswers m_answers;
};

/// The header of a tune and what follows it.
QByteArray abc(const char *title, const char *rest);

/// Runs the tests of `Class` in a home of their own, with windows and without a network.
#define MAIN_WINDOW_TEST_MAIN(Class)                                                               \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        prepareProcess();                                                                          \
        const SettingsSandbox sandbox;                                                             \
        QApplication application(argc, argv);                                                      \
        Class test;                                                                                \
        return QTest::qExec(&test, argc, argv);                                                    \
    }

void prepareProcess();

template <typename Control>
Control *MainWindowStage::control(const char *id, const char *name) const
{
    auto *const found = row(id)->findChild<Control *>(text(name));
    if (found == nullptr)
        qFatal("Row %s has no %s.", id, name);
    return found;
}

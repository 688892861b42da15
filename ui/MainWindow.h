#pragma once

#include <QDir>
#include <QMainWindow>

/// The program's one top-level window.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// `game` is the game's directory. Throws what the instrument set throws.
    explicit MainWindow(const QDir &game, QWidget *parent = nullptr);

    /// Opens ABC and MIDI files, each with a box for what cannot be read.
    void openFiles(const QStringList &paths);
};

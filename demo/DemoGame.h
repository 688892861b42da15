#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

/// The demo game: a game directory whose instruments, samples and icons are all made here, for
/// those who do not have the game at hand.
class DemoGame {
public:
    /// Makes everything in memory, which takes some seconds of both cores. The same program makes
    /// the same bytes each time.
    DemoGame();

    /// Creates `dir` where needed, with assets/packed.pak, win32/quillmoor.exe (a text) and two
    /// mods in mods/. It may be written again over itself; a file that is not from it stays
    /// untouched. Throws a QString, before anything is written, if such a file stands in the way,
    /// or when a file cannot be written. Each file appears whole or not at all.
    void write(const QString &dir) const;

private:
    QMap<QString, QByteArray> m_files; // by path in the directory
};

/// Writes the demo songs: a folder for each, with its parts as ABC files in playing order, and
/// one of them as a MIDI file beside the folders.
///
/// May be run again; a song file that the user wrote or changed stays as it is. Throws a QString
/// when a file cannot be written.
void writeDemoSongs(const QString &dir);

#pragma once

#include "Quillmoor/Instrument.h"

#include <QDir>
#include <QHash>
#include <QIcon>
#include <QString>
#include <QStringList>

/// The catalogue of the game's instruments by display name, read once from the game's directory:
/// from its packages, loose directories and mods. The first of several instruments of one display
/// name stays.
///
/// What is damaged is logged and left out. A file has to be a regular one, and an icon of more than
/// 4096 pixels a side counts as missing. Lives on the user-interface thread, and needs a
/// QGuiApplication for the icons.
class QuillmoorInstrumentSet {
public:
    /// Reads the packages of "assets", then the directory "user" (inside "assets" where that
    /// exists, else beside it), then with `loadMods` the directories and `.modpak` files of
    /// "mods". A catalogue that would be empty holds the one instrument "None", which has no
    /// notes.
    ///
    /// Throws a QString for a loose tuning file that cannot be read or mapped.
    QuillmoorInstrumentSet(const QDir &root, bool loadMods);

    bool contains(const QString &displayName) const;
    /// Both throw "Instrument '%1' not found." for an unknown name.
    Instrument instrument(const QString &displayName) const;
    QIcon icon(const QString &displayName) const;
    /// Ascending by UTF-16 code units.
    const QStringList &names() const { return m_names; }

    /// Meant for names that are not there yet.
    void add(const QString &displayName, const Instrument &instrument, const QIcon &icon);
    /// Loads the loose instruments of a directory, unless `packagesOnly`, and then its `.pak`
    /// files. Answers true. Throws as the constructor does.
    bool loadDirectory(const QDir &directory, bool packagesOnly);
    /// Answers false, with a warning in the log, when something in the package is damaged; the
    /// instruments found before that stay.
    bool loadPakFile(const QString &path);

private:
    struct Entry {
        Instrument instrument;
        QIcon icon;
    };

    void loadMods(const QDir &root);
    void loadPackages(const QDir &directory);
    void loadLooseInstruments(const QDir &directory);
    void loadLooseInstrument(const QDir &directory, const QDir &items, const QDir &sounds,
                             const QString &fileName);

    QHash<QString, Entry> m_instruments;
    QStringList m_names;
};

#pragma once

#include <QHash>
#include <QObject>
#include <QSettings>
#include <QString>
#include <QVariant>

#include <memory>
#include <mutex>

/// The program's only store of the user's choices, kept in a JSON file of flat keys.
///
/// Usable from any thread; each operation holds one lock from its start to its end.
class Settings : public QObject {
    Q_OBJECT

public:
    enum Setting {
        RootPath,
        LoadMods,
        DrawMeasureLines,
        DrawOctaveLines,
        NoteColor,
        MergeChannels,
        AutoRealign,
        PitchBend,
        DefaultInstrument,
        FindString,
        ReplaceString,
        MatchWholeWords,
        MatchWholeCase,
        WrapAround,
        SearchMode,
        Direction,
        RealignRegular,
        RealignTriplets,
        RealignQuintuplets,
        RealignSeptuplets,
        RealignNonuplets,
        PianoRollVisible,
        PianoRollHScale,
        PianoRollVScale,
        DirAbcOpen,
        DirAbcSave,
        DirMidiOpen,
        DirWavSave,
    };

    /// Registers the format "cfg" with QSettings and makes it the default one, below the
    /// platform's configuration directory. Call once, after the application's names are set and
    /// before instance().
    static void registerFormat();

    /// The one store of the program, made by the first call and deleted when the program exits.
    static Settings &instance();

    /// What the setting is when the file has no value for it. Needs no instance.
    static QVariant defaultValue(Setting setting);

    /// The stored value, or the default (or `fallback`) when there is none.
    QVariant value(Setting setting) const;
    QVariant value(Setting setting, const QVariant &fallback) const;

    /// Whether the file has a value.
    bool contains(Setting setting) const;

    /// Emits settingChanged() and then stores the value, under the lock.
    void setValue(Setting setting, const QVariant &value);

    /// Writes what has changed to the file.
    void sync();

signals:
    /// Comes while the store is locked and still has the old value: a receiver that is connected
    /// directly takes the new value from here and must not call back into the store, which would
    /// wait for itself for ever.
    void settingChanged(Settings::Setting setting, const QVariant &value);

private:
    Settings();

    mutable std::mutex m_mutex;
    std::unique_ptr<QSettings> m_store;
    QHash<Setting, QString> m_keys;
    QHash<Setting, QVariant> m_defaults;
};

Q_DECLARE_METATYPE(Settings::Setting)

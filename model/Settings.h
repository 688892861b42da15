#pragma once

#include <QHash>
#include <QObject>
#include <QSettings>
#include <QString>
#include <QVariant>

#include <memory>
#include <mutex>

/// The program's only store of the user's choices, kept in a JSON file of flat keys:
/// <configuration>/<organisation>/<application>.cfg.
///
/// Usable from any thread; each operation holds one lock from its start to its end.
///
/// Changes are in force at once. They reach the file by sync(), from the main thread's event loop
/// soon after, or when the program exits. Several processes may use the file: each writes just
/// the settings that it has changed, and sees the others' changes after its next sync(). A file
/// that is not a JSON object counts as empty, and the next sync() replaces it and keeps a copy.
/// What cannot be written stays in force for this run, is logged once and tried again.
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
    /// platform's configuration directory. Call it after the application's names are set and
    /// before instance(), which does it otherwise.
    static void registerFormat();

    /// The one store of the program, made by the first call and deleted when the program exits:
    /// after main() or in exit(). No other thread may use it any more by then.
    static Settings &instance();

    /// What the setting is when the file has no value for it. Needs no instance.
    static QVariant defaultValue(Setting setting);

    /// The stored value in the default's type, or the default (or `fallback`) when there is none.
    ///
    /// The file may hold a value of another type. It is converted where nothing is lost by that:
    /// "6", 6.0 and true are integers, 1 and "true" are booleans, 12 is a text, and whatever QColor
    /// takes for a name is a colour. For anything else (6.5 or "six" for an integer, null, a list,
    /// an object) the answer is as if nothing were stored, though contains() says that it is.
    QVariant value(Setting setting) const;
    QVariant value(Setting setting, const QVariant &fallback) const;

    /// Whether the file has a value.
    bool contains(Setting setting) const;

    /// Emits settingChanged() and then stores the value, under the lock.
    void setValue(Setting setting, const QVariant &value);

    /// Writes what has changed to the file, and reads what other processes have changed. Takes two
    /// seconds at most when another process does not let go of the file.
    void sync();

signals:
    /// Comes while the store is locked and still has the old value: a receiver that is connected
    /// directly takes the new value from here and must not call back into the store, which would
    /// wait for itself for ever.
    void settingChanged(Settings::Setting setting, const QVariant &value);

protected:
    bool event(QEvent *event) override;

private:
    Settings();
    ~Settings() override;

    std::unique_lock<std::mutex> locked() const;

    // All under the lock.
    void announce(Setting setting, const QVariant &value);
    void requestWrite();
    void exchange();

    void writeRequested();

    mutable std::mutex m_mutex;
    std::unique_ptr<QSettings> m_store;
    QHash<Setting, QString> m_keys;
    QHash<Setting, QVariant> m_defaults;
    bool m_hasChanges = false;
    bool m_isWriteRequested = false;
    bool m_isFailing = false;
};

Q_DECLARE_METATYPE(Settings::Setting)

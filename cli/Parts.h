#pragma once

#include "Quillmoor/Instrument.h"
#include "cli/Arguments.h"
#include "model/Track.h"

#include <QString>
#include <QVector>

#include <optional>

class Console;
class JsonWriter;

/// One track of the music, and how it is played.
struct Part {
    QString file;
    int number; ///< of the track in its file, from 1
    Track track;
    Instrument instrument;
    QString instrumentName;
    float volume = 1.0F; ///< 0 to 1
    float pan = 0.0F;    ///< -1 to 1
};

/// What the commands play that play several files together.
class Parts {
public:
    /// The options that say how; those of all MIDI files are among them.
    static QVector<Option> options();

    /// All tracks of the files, each with the instrument that its options name, else the one that
    /// its tune names, else the first of the game.
    ///
    /// Throws what the game's instruments throw and, after a message for each file that cannot be
    /// read and each track with notes that its instrument does not map, "Nothing was rendered."
    /// for `participle` "rendered". With "--skip-unmapped" such notes are left out instead.
    Parts(const QVector<Operand> &files, const OptionValues &options, const QString &participle,
          Console &console);

    const QVector<Part> &list() const { return m_list; }

    /// The member "skipped", the number of notes left out, where leaving out was asked for.
    void addSkipped(JsonWriter &json) const;

private:
    void leaveOutUnmapped();

    QVector<Part> m_list;
    std::optional<int> m_skipped;
};

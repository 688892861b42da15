#pragma once

#include <QByteArray>
#include <QMap>
#include <QMetaType>
#include <QString>
#include <QStringList>

class QJsonObject;

/// What sounds for one note of an instrument.
class InstrumentSample {
public:
    InstrumentSample() = default;
    InstrumentSample(const QStringList &files, double pitch, double frequency);

    /// The alternatives to choose from: plain or `pak://` paths, ready to be opened.
    const QStringList &files() const { return m_files; }
    /// Factor on the sample's own playback rate.
    double pitch() const { return m_pitch; }
    /// The note's frequency as the tuning file gives it.
    double frequency() const { return m_frequency; }

    /// One of files(), chosen by the process's standard pseudo-random generator; empty if there
    /// is none.
    QString randomFile() const;

    bool operator==(const InstrumentSample &other) const;
    bool operator!=(const InstrumentSample &other) const { return !(*this == other); }

private:
    QStringList m_files;
    double m_pitch = 1.0;
    double m_frequency = 440.0;
};

/// An instrument of the game: which sample sounds for which note, and how long a note fades.
/// A value, copied freely and across threads.
class Instrument {
public:
    using Mapping = QMap<uint, InstrumentSample>;

    /// No name, no notes, fadeout 0.
    Instrument() = default;

    /// Reads a tuning file. `name` is the instrument's kind and replaces "$instrument$" in the
    /// sample paths; `prefix` is put before each of them. Throws a QString when the file cannot
    /// be read as JSON, its root is no object, or a note has no sample to borrow.
    ///
    /// A base frequency of 0 or a ratio that is no positive number in single precision gives the
    /// pitch 1, a negative or non-finite fadeout gives 0; each with a warning.
    static Instrument fromFile(const QString &name, const QString &path,
                               const QString &prefix = QString());
    /// The same from the file's contents.
    static Instrument fromBytes(const QString &name, const QByteArray &bytes,
                                const QString &prefix = QString());

    const QString &name() const { return m_name; }
    /// Seconds that a released note takes to fall silent, 0 or more.
    double fadeout() const { return m_fadeout; }
    const Mapping &mapping() const { return m_mapping; }

    /// Throws "Invalid note index" for a note that is not mapped.
    InstrumentSample sample(uint note) const;

    bool operator==(const Instrument &other) const;
    bool operator!=(const Instrument &other) const { return !(*this == other); }

private:
    static Instrument fromObject(const QString &name, const QJsonObject &tuning,
                                 const QString &prefix);

    QString m_name;
    double m_fadeout = 0.0;
    Mapping m_mapping;
};

Q_DECLARE_METATYPE(Instrument)

#pragma once

#include "model/Ticks.h"
#include "model/TrackEvent.h"

#include <QMetaType>
#include <QMultiMap>
#include <QString>
#include <QStringList>
#include <QVector>

/// One voice of music: the content of one ABC tune, or one part of an imported MIDI file.
///
/// A plain value, implicitly shared inside, copied freely and across threads. Readers fill it,
/// the generator turns it into ABC text, player and renderer sound it. All times are ticks.
class Track {
public:
    /// An empty track at 1/4=120 in 4/4.
    Track() = default;

    /// The initial tempo.
    quint64 ticksPerMinute() const { return m_ticksPerMinute; }
    void setTicksPerMinute(quint64 ticksPerMinute) { m_ticksPerMinute = ticksPerMinute; }

    /// Length of one measure in ticks, and its number of beats (the meter's numerator).
    quint32 measureLength() const { return m_measureLength; }
    quint32 beatsPerMeasure() const { return m_beatsPerMeasure; }
    void setMeasure(quint32 length, quint32 beats);

    /// End of the last event in ticks, as of the last sortEvents().
    quint64 length() const { return m_length; }
    /// `length()` in seconds at the initial tempo; 0 when that tempo is 0.
    double duration() const;

    int noteCount() const { return m_noteCount; }
    int eventCount() const { return m_events.size(); }
    const QVector<TrackEvent> &events() const { return m_events; }
    const TrackEvent &event(int index) const { return m_events.at(index); }
    TrackEvent &event(int index) { return m_events[index]; }

    /// Appends without sorting: call sortEvents() after the last one.
    void addEvent(const TrackEvent &event);

    /// Sorts the events by time and then by note duration, where a control event counts as 0, so
    /// that at one time it precedes the notes. The sort is stable. Then recomputes `length()` and
    /// drops control events without effect: a tempo that is already in force, and an event
    /// followed at the same time by another of its type.
    void sortEvents();

    bool hasHeader(const QString &key) const;
    /// The value added last, or `fallback`.
    QString header(const QString &key, const QString &fallback = QString()) const;
    /// All values, the one added last first.
    QStringList headers(const QString &key) const;
    const QMultiMap<QString, QString> &allHeaders() const { return m_headers; }
    void setAllHeaders(const QMultiMap<QString, QString> &headers) { m_headers = headers; }
    void addHeader(const QString &key, const QString &value);
    /// Replaces all values of `key`.
    void setHeader(const QString &key, const QString &value);

    /// The track's ABC text. A track that has none generates it now and keeps it, which may add
    /// the header fields that every tune needs; if that fails the answer is empty.
    ///
    /// Defined beside the generator, so that the model need not know of it: who calls this links
    /// the library `ABC`.
    QString abc();
    void setAbc(const QString &text) { m_abc = text; }

    /// The file that the track was read from or saved to; empty for none.
    QString fileName() const { return m_fileName; }
    void setFileName(const QString &path) { m_fileName = path; }

    bool operator==(const Track &other) const;
    bool operator!=(const Track &other) const { return !(*this == other); }

private:
    QMultiMap<QString, QString> m_headers;
    quint64 m_ticksPerMinute = Ticks::DefaultPerMinute;
    quint32 m_measureLength = Ticks::PerWholeNote;
    quint32 m_beatsPerMeasure = 4;
    quint64 m_length = 0;
    int m_noteCount = 0;
    QVector<TrackEvent> m_events;
    QString m_abc;
    QString m_fileName;
};

Q_DECLARE_METATYPE(Track)

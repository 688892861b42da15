#pragma once

#include "Player/TrackInfo.h"
#include "Player/TrackPlayer.h"
#include "cli/Parts.h"

#include <QEventLoop>
#include <QString>
#include <QTimer>
#include <QVector>
#include <QtGlobal>

#include <chrono>

class Console;

/// Plays parts together once, to the end, and shows on a terminal how far that has come.
class Playback {
public:
    /// Both must outlive it.
    Playback(const QVector<Part> &parts, Console &console);

    /// Returns when the last note has faded out. Why no sound comes out is told in a message, and
    /// the music goes on in silence. Throws where time does not go on either.
    ///
    /// A signal to end (see SignalWatch) is obeyed within 200 ms.
    void run();

    /// How long the music is, up to the end of the last track without the fade of its notes.
    double seconds() const { return m_length; }
    /// How many notes were played so far.
    int notes() const { return m_notes; }

private:
    void measure();
    void prepare();
    void listen(TrackPlayer &player);
    void start(TrackPlayer &player);
    void onTrackStarted(const TrackPlayer &player);
    void onTrackStopped();
    void onPositionChanged(const QString &trackId, quint64 ticks);
    void tellProblem(const TrackPlayer &player);
    void showPosition(double seconds);
    void endWithin(std::chrono::milliseconds time);

    const QVector<Part> &m_parts;
    Console &m_console;
    QEventLoop m_loop;
    QTimer m_startLimit;
    QTimer m_end;
    int m_longest = 0;      // the part whose position is shown
    TrackInfo m_shown;      // that part, as far as it has come
    double m_length = 0.0;  // seconds
    double m_fadeEnd = 0.0; // seconds, with the fade of all notes
    int m_playing;          // tracks that have not stopped
    int m_notes = 0;
    bool m_isStarted = false;
    bool m_isSilent = false;
};

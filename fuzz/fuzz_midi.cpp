// Any bytes as a MIDI file. What is imported must be in order and become text that is read again
// without a message; what is not must say why. The first byte chooses the options.

#include "ABC/ABCParser.h"
#include "MIDI/MidiClock.h"
#include "MIDI/MidiParser.h"

#include <QByteArray>
#include <QDataStream>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

void ignore(QtMsgType, const QMessageLogContext &, const QString &) { }

void require(bool isTrue)
{
    if (!isTrue)
        std::abort();
}

/// Notes begin and last no longer than there is time, but for what realignment moves them.
bool isInTime(const TrackEvent &event)
{
    constexpr quint64 latest = MidiClock::LatestTime + Ticks::PerWholeNote;
    return event.time() <= latest && event.duration() <= latest;
}

bool comesBefore(const TrackEvent &a, const TrackEvent &b)
{
    return a.time() != b.time() ? a.time() < b.time() : a.duration() < b.duration();
}

void check(Track track)
{
    const QVector<TrackEvent> &events = track.events();
    require(track.noteCount() > 0 && track.ticksPerMinute() > 0 && track.measureLength() > 0);
    require(track.hasHeader(QStringLiteral("Q")) && track.hasHeader(QStringLiteral("T")));
    require(std::is_sorted(events.begin(), events.end(), comesBefore));
    require(std::all_of(events.begin(), events.end(), isInTime));
    const int count = ABCParser().parse(track.abc()).noteCount();
    require(count <= track.noteCount());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, size_t size)
{
    static const QtMessageHandler previous = qInstallMessageHandler(ignore);
    Q_UNUSED(previous)
    if (size == 0)
        return 0;
    const MidiOptions options = {(data[0] & 1) != 0, (data[0] & 2) != 0, (data[0] & 4) != 0};
    const QByteArray bytes(reinterpret_cast<const char *>(data + 1), static_cast<int>(size - 1));
    QDataStream stream(bytes);
    QList<Track> tracks;
    try {
        tracks = MidiParser(options).parse(stream);
    } catch (const QString &message) {
        require(!message.isEmpty());
    }
    for (const Track &track : qAsConst(tracks))
        check(track);
    return 0;
}

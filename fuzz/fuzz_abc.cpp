// Any bytes as ABC text: parse, generate, parse again. What the generator wrote must be read
// without a message, and as the same notes where generator and parser read the key alike.

#include "ABC/ABCGenerator.h"
#include "ABC/ABCParser.h"
#include "ABC/FieldValues.h"

#include <algorithm>
#include <cstdlib>

namespace {

void ignore(QtMsgType, const QMessageLogContext &, const QString &) { }

QVector<TrackEvent> notesOf(const Track &track)
{
    QVector<TrackEvent> notes;
    for (const TrackEvent &event : track.events()) {
        if (event.isNote())
            notes << event;
    }
    return notes;
}

/// Notes of up to a whole note have room in one token wherever a unit is no longer than that.
bool hasPlainUnits(const Track &track)
{
    const auto isPlain = [](const TrackEvent &event) {
        return FieldValues::unitTicks(event.num(), event.den()) <= Ticks::PerWholeNote;
    };
    const quint32 first = FieldValues::unitLength(track.header(QStringLiteral("L"))).ticks;
    return first <= Ticks::PerWholeNote
        && std::all_of(track.events().begin(), track.events().end(), [&](const TrackEvent &event) {
               return event.type() != TrackEvent::UnitLength || isPlain(event);
           });
}

/// Notes that were cut short may come in another order.
bool haveSameNotes(const Track &a, const Track &b)
{
    const QVector<TrackEvent> notesA = notesOf(a);
    const QVector<TrackEvent> notesB = notesOf(b);
    const auto isLong = [](const TrackEvent &note) {
        return note.duration() > Ticks::PerWholeNote;
    };
    if (notesA.size() != notesB.size() || a.noteCount() != b.noteCount())
        return false;
    if (std::any_of(notesA.begin(), notesA.end(), isLong))
        return std::equal(
            notesA.begin(), notesA.end(), notesB.begin(),
            [](const TrackEvent &x, const TrackEvent &y) { return x.time() == y.time(); });
    return notesA == notesB;
}

bool hasPlainKey(const Track &track)
{
    const QString key = track.header(QStringLiteral("K"));
    return FieldValues::key(key).row == FieldValues::keyForGenerator(key).row;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    qInstallMessageHandler(ignore);
    // Bytes above 0x7F become halves of surrogate pairs, so that those are tried as well.
    QString text;
    for (size_t i = 0; i < size; ++i)
        text += QChar(static_cast<ushort>(data[i] < 0x80 ? data[i] : 0xD800 + (data[i] << 3)));

    Track track;
    try {
        track = ABCParser().parse(text);
    } catch (const QString &) {
        return 0;
    }
    const bool isComparable = hasPlainUnits(track) && hasPlainKey(track);
    const Track again = ABCParser().parse(ABCGenerator().generate(track));
    if (isComparable && !haveSameNotes(track, again))
        std::abort();
    return 0;
}

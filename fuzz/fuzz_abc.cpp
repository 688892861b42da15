// Any bytes as ABC text: parse, generate, parse again. What the generator wrote must be read
// without a message, and as the same notes where generator and parser read the key alike.

#include "ABC/ABCGenerator.h"
#include "ABC/ABCParser.h"
#include "ABC/FieldValues.h"

#include <QLoggingCategory>

#include <cstdlib>

namespace {

void ignore(QtMsgType, const QMessageLogContext &, const QString &) { }

/// Lengths that no token has room for come back shorter, and what follows them later.
bool isWritable(const Track &track)
{
    return track.length() < quint64{1} << 32;
}

bool haveSameNotes(const Track &a, const Track &b)
{
    if (a.noteCount() != b.noteCount())
        return false;
    QVector<TrackEvent> notesA;
    QVector<TrackEvent> notesB;
    for (const TrackEvent &event : a.events()) {
        if (event.isNote())
            notesA << event;
    }
    for (const TrackEvent &event : b.events()) {
        if (event.isNote())
            notesB << event;
    }
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
    const bool isComparable = isWritable(track) && hasPlainKey(track);
    const Track again = ABCParser().parse(ABCGenerator().generate(track));
    if (isComparable && !haveSameNotes(track, again))
        std::abort();
    return 0;
}

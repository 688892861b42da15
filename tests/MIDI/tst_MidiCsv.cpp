#include "MIDI/MidiFile.h"

#include "MidiCorpus.h"

#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>
#include <vector>

// The import beside a reader by somebody else: what the program midicsv prints of a file is paired
// to notes here, and compared with the tracks.

namespace {

/// Start, duration and pitch, in ticks.
using Note = std::tuple<quint64, quint64, quint32>;
using Notes = std::vector<Note>;
/// Beats per minute from a time on, without those that change nothing.
using Tempos = std::vector<std::pair<quint64, quint32>>;

struct Music {
    std::vector<Notes> tracks;
    Tempos tempos;

    bool operator==(const Music &other) const
    {
        return tracks == other.tracks && tempos == other.tempos;
    }
    size_t noteCount() const
    {
        size_t count = 0;
        for (const Notes &notes : tracks)
            count += notes.size();
        return count;
    }
};

/// Of several at one time the last holds.
Tempos changes(const std::map<quint64, quint32> &tempos)
{
    Tempos result;
    for (const auto &[time, bpm] : tempos) {
        if (result.empty() || result.back().second != bpm)
            result.emplace_back(time, bpm);
    }
    return result;
}

/// One line of midicsv: "chunk, tick, kind, value, ...".
struct Line {
    explicit Line(const QByteArray &text)
        : fields(text.split(','))
    {
    }

    quint64 number(int index) const { return fields.value(index).trimmed().toULongLong(); }
    QByteArray kind() const { return fields.value(2).trimmed(); }

    QList<QByteArray> fields;
};

/// Pairs the notes of midicsv's lines by our rules: a pitch struck again while it sounds starts
/// anew, chunks share what sounds, and at a chunk's end only MIDI channel 16 is silenced.
class CsvMusic {
public:
    explicit CsvMusic(bool isMerged)
        : m_isMerged(isMerged)
    {
    }

    void read(const Line &line)
    {
        const QByteArray kind = line.kind();
        if (kind == "Header")
            m_scale = 120960.0 / (4.0 * static_cast<double>(line.number(5)));
        else if (kind == "Tempo" && line.number(3) != 0)
            m_tempos.emplace_back(line.number(1), 60000000 / line.number(3));
        else if (kind == "Note_on_c" && line.number(5) != 0)
            m_sounding[{line.number(3), line.number(4)}] = line.number(1);
        else if (kind == "Note_on_c" || kind == "Note_off_c")
            end(line);
        else if (kind == "End_track")
            endLastChannel(line);
    }

    Music music() const
    {
        Music music;
        for (const auto &voice : m_voices) {
            music.tracks.push_back(voice.second);
            std::sort(music.tracks.back().begin(), music.tracks.back().end());
        }
        music.tempos = changes(tempos());
        return music;
    }

private:
    using Key = std::pair<quint64, quint64>; // channel and pitch

    quint64 ticks(quint64 midiTicks) const
    {
        return static_cast<quint64>(std::floor(static_cast<double>(midiTicks) * m_scale + 0.5));
    }

    void end(const Line &line)
    {
        const Key key{line.number(3), line.number(4)};
        const auto start = m_sounding.find(key);
        if (start == m_sounding.end())
            return;
        if (key.second >= 21 && key.second <= 108)
            addNote(line, key, start->second);
        m_sounding.erase(start);
    }

    void endLastChannel(const Line &line)
    {
        const auto first = m_sounding.lower_bound({15, 0});
        for (auto note = first; note != m_sounding.end(); ++note)
            addNote(line, note->first, note->second);
        m_sounding.erase(first, m_sounding.end());
    }

    void addNote(const Line &line, const Key &key, quint64 start)
    {
        const quint64 chunk = m_isMerged ? 0 : line.number(0);
        const quint64 end = std::max(start, line.number(1));
        m_voices[{chunk, key.first}].emplace_back(ticks(start), ticks(end - start),
                                                  static_cast<quint32>(key.second));
    }

    std::map<quint64, quint32> tempos() const
    {
        std::map<quint64, quint32> byTime{{0, 120}};
        for (const auto &[tick, bpm] : m_tempos)
            byTime[ticks(tick)] = static_cast<quint32>(bpm);
        return byTime;
    }

    bool m_isMerged;
    double m_scale = 0;
    std::map<Key, quint64> m_sounding;
    std::map<Key, Notes> m_voices; // by chunk and channel
    std::vector<std::pair<quint64, quint64>> m_tempos;
};

/// Nothing for a file that midicsv refuses.
std::optional<Music> readByMidicsv(const QString &path, bool isMerged)
{
    QProcess midicsv;
    midicsv.start(QStringLiteral("midicsv"), {path});
    if (!midicsv.waitForFinished() || midicsv.exitCode() != 0)
        return std::nullopt;
    CsvMusic music(isMerged);
    const QList<QByteArray> lines = midicsv.readAllStandardOutput().split('\n');
    for (const QByteArray &line : lines)
        music.read(Line(line));
    return music.music();
}

Notes notesOf(const Track &track)
{
    Notes notes;
    for (const TrackEvent &event : track.events()) {
        if (event.isNote())
            notes.emplace_back(event.time(), event.duration(), event.note());
    }
    std::sort(notes.begin(), notes.end());
    return notes;
}

Tempos temposOf(const Track &track)
{
    const QString first = track.header(QStringLiteral("Q")).mid(QStringLiteral("1/4=").size());
    Tempos tempos{{0, first.toUInt()}};
    for (const TrackEvent &event : track.events()) {
        if (event.type() == TrackEvent::Tempo)
            tempos.emplace_back(event.time(), event.bpm());
    }
    return tempos;
}

Music musicOf(const QList<Track> &tracks)
{
    Music music;
    for (const Track &track : tracks)
        music.tracks.push_back(notesOf(track));
    return music;
}

/// Files that midicsv reads and we refuse.
bool isRefusedByUs(const QString &file)
{
    static const QStringList files{
        QStringLiteral("smf_tests/test-2-tracks-type-2.mid"),     // format 2: no common time
        QStringLiteral("smf_tests/test-illegal-message-all.mid"), // status 0xF1, unknown in a file
        QStringLiteral("smf_tests/test-illegal-message-f8.mid"),  // status 0xF8, likewise
    };
    return files.contains(file);
}

/// Files that go on with notes without a status behind another event. midicsv remembers the note's
/// status; to us the last status holds, whichever it was.
bool isReadInAnotherWay(const QString &file)
{
    static const QStringList files{
        QStringLiteral("smf_tests/test-running-status-metaevent.mid"),
        QStringLiteral("smf_tests/test-running-status-sysex.mid"),
    };
    return files.contains(file);
}

} // namespace

class TestMidiCsv : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(!QStandardPaths::findExecutable(QStringLiteral("midicsv")).isEmpty(),
                 "midicsv is missing: run scripts/setup.sh");
    }

    void readsNotesAndTempoAsMidicsvDoes_data()
    {
        QTest::addColumn<bool>("isMerged");
        QTest::newRow("a track per channel") << true;
        QTest::newRow("a track per channel and chunk") << false;
    }
    void readsNotesAndTempoAsMidicsvDoes()
    {
        QFETCH(bool, isMerged);
        int files = 0;
        size_t notes = 0;
        size_t tempos = 0;
        const QStringList all = MidiCorpus::files();
        for (const QString &file : all) {
            const auto theirs = readByMidicsv(MidiCorpus::fullPath(file), isMerged);
            const auto ours = MidiCorpus::import(file, {isMerged, false, false});
            QVERIFY2(ours.has_value() == (theirs.has_value() && !isRefusedByUs(file)),
                     qPrintable(file));
            if (!ours)
                continue;
            const bool isEqual = musicOf(*ours).tracks == theirs->tracks;
            QVERIFY2(isEqual != isReadInAnotherWay(file), qPrintable(file));
            for (const Track &track : *ours)
                QVERIFY2(temposOf(track) == theirs->tempos, qPrintable(file));
            if (!isEqual)
                continue;
            ++files;
            notes += theirs->noteCount();
            tempos += theirs->tempos.size() - 1;
        }
        qInfo("%d of %d files, %zu notes, %zu tempo changes", files, all.size(), notes, tempos);
        QVERIFY(files > 0);
        QVERIFY(notes > 0);
        QVERIFY(tempos > 0);
    }
};

QTEST_GUILESS_MAIN(TestMidiCsv)
#include "tst_MidiCsv.moc"

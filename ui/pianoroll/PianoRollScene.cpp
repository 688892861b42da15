#include "ui/pianoroll/PianoRollScene.h"

#include "model/Settings.h"
#include "ui/pianoroll/NoteItem.h"
#include "ui/pianoroll/PianoRollGrid.h"

#include <algorithm>

namespace {

constexpr int NotesPerSlice = 10000;
constexpr int PauseMilliseconds = 1;

QRectF rectOfLength(quint64 length)
{
    return {0, PianoRollGrid::LowestRow, static_cast<qreal>(length), PianoRollGrid::RowCount};
}

QColor toColor(const QVariant &value)
{
    const QColor color = value.value<QColor>();
    return color.isValid() ? color : Settings::defaultValue(Settings::NoteColor).value<QColor>();
}

QColor noteColor()
{
    return toColor(Settings::instance().value(Settings::NoteColor));
}

/// The sum of the parts of the track that its notes sound for.
double coverage(const Track &track)
{
    double ticks = 0;
    for (const TrackEvent &event : track.events())
        ticks += static_cast<double>(event.duration());
    return ticks / std::max(1.0, static_cast<double>(track.length()));
}

/// The levels of the scene's tree, which splits time and pitch in turn. Each time column should
/// hold some dozen notes, and a note should lie in few columns: it is listed in all of them, and
/// a great chord of long notes would fill the memory.
int treeDepth(const Track &track)
{
    constexpr int mostLevels = 8;
    constexpr int notesPerColumn = 64;
    constexpr int columnsPerNote = 4;
    const double covered = coverage(track);
    int levels = 1;
    while (levels < mostLevels && track.noteCount() >> levels >= notesPerColumn
           && covered * (2 << levels) <= static_cast<double>(track.noteCount()) * columnsPerNote)
        ++levels;
    return 2 * levels;
}

} // namespace

PianoRollScene::PianoRollScene(QObject *parent)
    : QGraphicsScene(rectOfLength(Ticks::PerWholeNote), parent)
    , m_painter(noteColor())
{
    setItemIndexMethod(BspTreeIndex);
    m_refreshTimer.setSingleShot(true);
    connect(&m_refreshTimer, &QTimer::timeout, this, &PianoRollScene::populate);
    followSettings();
}

void PianoRollScene::setTrack(const Track &track)
{
    forgetTrack();
    m_track = track;
    m_items.fill(nullptr, m_track.eventCount());
    setUpIndex();
    populate();
}

void PianoRollScene::pressNote(uint eventIndex)
{
    if (item(eventIndex) == nullptr)
        return;
    setPressed(eventIndex, true);
    m_pressed.insert(eventIndex);
}

void PianoRollScene::releaseNote(uint eventIndex)
{
    if (m_pressed.remove(eventIndex))
        setPressed(eventIndex, false);
}

void PianoRollScene::releaseAll()
{
    for (const uint eventIndex : qAsConst(m_pressed))
        setPressed(eventIndex, false);
    m_pressed.clear();
}

// The whole scene counts as changed before anything is added, so that the notes need not be looked
// at one by one for what has changed.
void PianoRollScene::populate()
{
    setNoteColor(noteColor());
    int added = 0;
    while (m_nextIndex < m_items.size() && added <= NotesPerSlice)
        added += addNote(m_nextIndex++) ? 1 : 0;
    if (m_nextIndex < m_items.size())
        m_refreshTimer.start(PauseMilliseconds);
}

void PianoRollScene::forgetTrack()
{
    m_refreshTimer.stop();
    update();
    clear();
    m_items.clear();
    m_pressed.clear();
    m_nextIndex = 0;
}

// A depth that is set spares the tree from being built anew as the scene fills.
void PianoRollScene::setUpIndex()
{
    setBspTreeDepth(treeDepth(m_track));
    setSceneRect(rectOfLength(m_track.length()));
}

bool PianoRollScene::addNote(int eventIndex)
{
    const TrackEvent &event = m_track.events().at(eventIndex);
    if (!event.isNote())
        return false;
    m_items[eventIndex] = new NoteItem(event, &m_painter);
    addItem(m_items[eventIndex]);
    return true;
}

NoteItem *PianoRollScene::item(uint eventIndex) const
{
    return eventIndex < static_cast<uint>(m_items.size()) ? m_items[static_cast<int>(eventIndex)]
                                                          : nullptr;
}

void PianoRollScene::setPressed(uint eventIndex, bool isPressed)
{
    item(eventIndex)->setPressed(isPressed);
    update(item(eventIndex)->boundingRect());
}

void PianoRollScene::setNoteColor(const QColor &color)
{
    m_painter = NotePainter(color);
    update();
}

// Queued, because the store is locked while it sends the signal, by whichever thread.
void PianoRollScene::followSettings()
{
    const auto follow = [this](Settings::Setting setting, const QVariant &value) {
        if (setting == Settings::NoteColor)
            setNoteColor(toColor(value));
    };
    connect(&Settings::instance(), &Settings::settingChanged, this, follow, Qt::QueuedConnection);
}

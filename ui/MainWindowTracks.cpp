// The rows: what makes, combines, selects and removes them.
#include "ui/MainWindow.h"

#include "Player/TrackPlayer.h"
#include "Quillmoor/InstrumentChoice.h"
#include "model/TrackMerge.h"
#include "ui/dialogs/MessageBoxes.h"
#include "ui/tracks/TrackWidget.h"

#include <QApplication>
#include <QScopeGuard>

#include <algorithm>

namespace {

/// Of the row that was added last; the ids of removed rows do not come again before all are
/// removed.
unsigned trackCounter = 0;

QString nextTrackId()
{
    return QStringLiteral("T%1").arg(++trackCounter);
}

/// Whether a row is to be the only one that sounds; else it is already, and all shall sound.
bool isSoloing(const QList<TrackWidget *> &rows, const TrackWidget *soloist)
{
    return std::any_of(rows.begin(), rows.end(), [soloist](const TrackWidget *row) {
        return row->isMuted() == (row == soloist);
    });
}

} // namespace

QList<TrackWidget *> MainWindow::rows(Scope scope) const
{
    QList<TrackWidget *> rows;
    for (TrackWidget *const row : m_tracks) {
        if (scope == Scope::All || row->isSelected())
            rows.append(row);
    }
    return rows;
}

QList<Track> MainWindow::selectedTracks() const
{
    QList<Track> tracks;
    for (TrackWidget *const row : rows(Scope::Selected))
        tracks.append(row->track());
    return tracks;
}

TrackWidget *MainWindow::senderRow() const
{
    return qobject_cast<TrackWidget *>(sender());
}

void MainWindow::addTrack(const Track &track)
{
    if (!m_column.exists())
        return;
    const QString id = nextTrackId();
    auto *const row = new TrackWidget(id, track, m_instrumentModel.get(), this);
    row->setInstrumentIndex(chosenInstrument(track));
    m_column.append(row);
    m_tracks.insert(id, row);
    connectRow(row);
    m_column.updateMoveButtons();
    updateHint();
}

/// Drawn once, when all are there.
void MainWindow::addTracks(const QList<Track> &tracks)
{
    setUpdatesEnabled(false);
    const auto draw = qScopeGuard([this] { setUpdatesEnabled(true); });
    for (const Track &track : tracks)
        addTrack(track);
}

int MainWindow::chosenInstrument(const Track &track) const
{
    return chooseInstrument(track.headers(QStringLiteral("I")), m_instruments->names(),
                            defaultInstrument());
}

void MainWindow::connectRow(TrackWidget *row)
{
    connect(row, &TrackWidget::trackRemoved, this, &MainWindow::onTrackRemoved);
    connect(row, &TrackWidget::trackChanged, this, &MainWindow::onTrackChanged);
    connect(row, &TrackWidget::trackSelected, this, &MainWindow::onTrackSelectionChanged);
    connect(row, &TrackWidget::trackMuteChanged, this, &MainWindow::onTrackMuteChanged);
    connect(row, &TrackWidget::trackSolo, this, &MainWindow::onTrackSolo);
    connect(row, &TrackWidget::trackInstrumentChanged, this, &MainWindow::onTrackInstrumentChanged);
    connect(row, &TrackWidget::trackVolumeChanged, this, &MainWindow::onTrackVolumeChanged);
    connect(row, &TrackWidget::trackPanChanged, this, &MainWindow::onTrackPanChanged);
    connect(row, &TrackWidget::trackMoveUp, this, &MainWindow::onMoveTrackUp);
    connect(row, &TrackWidget::trackMoveDown, this, &MainWindow::onMoveTrackDown);
    connect(row, &TrackWidget::trackSeek, this, &MainWindow::onTrackSeek);
    connect(row, &TrackWidget::trackPlay, this, &MainWindow::onPlay);
    connect(row, &TrackWidget::trackStop, this, &MainWindow::onStopAll);
}

void MainWindow::discard(TrackWidget *row)
{
    row->disconnect(this);
    delete row;
}

/// The dialog may be that of a row or of its editor, which would be gone when it returns. So who
/// asks for the removal of rows then, such as a screen reader or a menu that the desktop shows in a
/// bar of its own, is refused as the mouse and the keys are. A click right behind the one that
/// closes the dialog may come before it returns, and has to wait for that.
bool MainWindow::isRemovalBarred(const char *removal)
{
    if (QApplication::activeModalWidget() != nullptr)
        return true;
    if (eventLoops() <= 1) // the program's own
        return false;
    QTimer::singleShot(RetryAfter, this, removal);
    return true;
}

/// One time axis for all rows.
void MainWindow::updateTrackLengths()
{
    quint64 longest = 0;
    for (TrackWidget *const row : qAsConst(m_tracks))
        longest = qMax(longest, row->track().length());
    for (TrackWidget *const row : qAsConst(m_tracks))
        row->setMaxLength(longest);
}

void MainWindow::onNewTrack()
{
    addTrack(Track());
    updateTrackLengths();
    scrollToBottom();
}

void MainWindow::onMergeTracks()
{
    const QList<Track> tracks = selectedTracks();
    if (tracks.isEmpty())
        return;
    try {
        addTrack(mergeTracks(tracks));
        updateTrackLengths();
        scrollToBottom();
    } catch (const QString &message) {
        MessageBoxes::critical(this, tr("Merge Tracks"),
                               tr("Could not merge tracks: %1").arg(message));
    }
}

void MainWindow::onDuplicateTracks()
{
    addTracks(selectedTracks());
    updateTrackLengths();
    scrollToBottom();
}

/// The time axis stays as it is, so that the rows which are left do not jump.
void MainWindow::onRemoveSelectedTracks()
{
    if (isRemovalBarred(SLOT(onRemoveSelectedTracks())))
        return;
    for (TrackWidget *const row : rows(Scope::Selected)) {
        if (isPlaying(row))
            m_player->stopTrack(row->trackId());
        m_tracks.remove(row->trackId());
        discard(row);
    }
    updateActions();
    m_column.updateMoveButtons();
    updateHint();
}

/// The row deletes itself.
void MainWindow::onTrackRemoved()
{
    TrackWidget *const row = senderRow();
    if (row == nullptr)
        return;
    m_tracks.remove(row->trackId());
    if (isPlaying(row))
        m_player->stopTrack(row->trackId());
    m_column.remove(row);
    updateTrackLengths();
    updateActions();
    m_column.updateMoveButtons();
    updateHint();
}

void MainWindow::onClearTracks()
{
    if (isRemovalBarred(SLOT(onClearTracks())))
        return;
    for (TrackWidget *const row : rows(Scope::All))
        discard(row);
    m_player->stopAll();
    m_tracks.clear();
    trackCounter = 0;
    updateActions();
    updateHint();
}

void MainWindow::onSelectAll()
{
    for (TrackWidget *const row : qAsConst(m_tracks))
        row->setSelected(true);
    updateActions();
}

void MainWindow::onDeselectAll()
{
    for (TrackWidget *const row : qAsConst(m_tracks))
        row->setSelected(false);
    updateActions();
}

void MainWindow::onInvertSelection()
{
    for (TrackWidget *const row : qAsConst(m_tracks))
        row->setSelected(!row->isSelected());
    updateActions();
}

void MainWindow::onTrackSelectionChanged()
{
    updateActions();
}

void MainWindow::onMuteSelected()
{
    const QList<TrackWidget *> selected = rows(Scope::Selected);
    const bool mute = std::any_of(selected.begin(), selected.end(),
                                  [](const TrackWidget *row) { return !row->isMuted(); });
    for (TrackWidget *const row : selected)
        row->setMuted(mute, true);
}

void MainWindow::onTrackSolo()
{
    const TrackWidget *const soloist = senderRow();
    if (soloist == nullptr)
        return;
    const QList<TrackWidget *> all = rows(Scope::All);
    const bool soloing = isSoloing(all, soloist);
    for (TrackWidget *const row : all) {
        row->setMuted(soloing && row != soloist, true);
        if (isPlaying(row))
            m_player->muteTrack(row->trackId(), row->isMuted());
    }
}

void MainWindow::onApplyInstrument()
{
    const QList<TrackWidget *> selected = rows(Scope::Selected);
    for (TrackWidget *const row : selected.isEmpty() ? rows(Scope::All) : selected)
        row->setInstrumentIndex(defaultInstrument());
}

void MainWindow::onMoveTrackUp()
{
    if (const TrackWidget *const row = senderRow())
        m_column.moveUp(row);
}

void MainWindow::onMoveTrackDown()
{
    if (const TrackWidget *const row = senderRow())
        m_column.moveDown(row);
}

// What goes to the player, and what comes back from it.
#include "ui/MainWindow.h"

#include "Player/TrackPlayer.h"
#include "ui/tracks/TrackWidget.h"

bool MainWindow::isPlaying(const TrackWidget *row) const
{
    return row != nullptr && m_player->isPlaying(row->trackId());
}

void MainWindow::play(TrackWidget *row)
{
    // In one group, all rows start at the same instant.
    m_player->playTrack(row->trackId(), QStringLiteral("Main"), row->instrument(), row->track(),
                        row->isMuted(), row->volume(), row->pan());
}

void MainWindow::onPlay()
{
    m_player->stopAll();
    for (TrackWidget *const row : qAsConst(m_tracks))
        play(row);
}

void MainWindow::onStopAll()
{
    m_player->stopAll();
}

void MainWindow::onTrackMuteChanged()
{
    const TrackWidget *const row = senderRow();
    if (isPlaying(row))
        m_player->muteTrack(row->trackId(), row->isMuted());
}

void MainWindow::onTrackInstrumentChanged()
{
    const TrackWidget *const row = senderRow();
    if (isPlaying(row))
        m_player->changeInstrument(row->trackId(), row->instrument());
}

void MainWindow::onTrackVolumeChanged()
{
    const TrackWidget *const row = senderRow();
    if (isPlaying(row))
        m_player->setVolume(row->trackId(), row->volume());
}

void MainWindow::onTrackPanChanged()
{
    const TrackWidget *const row = senderRow();
    if (isPlaying(row))
        m_player->setPan(row->trackId(), row->pan());
}

void MainWindow::onTrackChanged()
{
    TrackWidget *const row = senderRow();
    if (row == nullptr)
        return;
    if (isPlaying(row))
        play(row);
    updateTrackLengths();
}

void MainWindow::onTrackSeek(quint64 pos)
{
    if (senderRow() != nullptr)
        m_player->seekAll(pos);
}

void MainWindow::onTrackStarted(const QString &trackId)
{
    showPlaying(m_tracks.value(trackId), true);
}

void MainWindow::onTrackStopped(const QString &trackId)
{
    showPlaying(m_tracks.value(trackId), false);
}

void MainWindow::onAllTracksStopped()
{
    for (TrackWidget *const row : qAsConst(m_tracks))
        showPlaying(row, false);
}

void MainWindow::showPlaying(TrackWidget *row, bool playing)
{
    if (row == nullptr)
        return;
    row->setPlaying(playing);
    row->setPosition(0);
}

void MainWindow::onTrackPositionChanged(const QString &trackId, quint64 position)
{
    if (TrackWidget *const row = m_tracks.value(trackId))
        row->setPosition(position);
}

void MainWindow::onNotePressed(const QString &trackId, uint eventIndex)
{
    if (TrackWidget *const row = m_tracks.value(trackId))
        row->setNoteState(eventIndex, true);
}

void MainWindow::onNoteReleased(const QString &trackId, uint eventIndex)
{
    if (TrackWidget *const row = m_tracks.value(trackId))
        row->setNoteState(eventIndex, false);
}

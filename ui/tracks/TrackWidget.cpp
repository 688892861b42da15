#include "ui/tracks/TrackWidget.h"

TrackWidget::TrackWidget(const QString &trackId, const Track &track, InstrumentSetModel *,
                         QWidget *parent)
    : QFrame(parent)
    , m_trackId(trackId)
    , m_track(track)
{
}

TrackWidget::~TrackWidget() = default;

Instrument TrackWidget::instrument() const { return {}; }
void TrackWidget::setInstrumentIndex(int) { }
bool TrackWidget::isSelected() const { return false; }
void TrackWidget::setSelected(bool) { }
bool TrackWidget::isMuted() const { return false; }
void TrackWidget::setMuted(bool, bool) { }
float TrackWidget::volume() const { return 1; }
void TrackWidget::setVolume(float) { }
float TrackWidget::pan() const { return 0; }
void TrackWidget::setPan(float) { }
void TrackWidget::setMaxLength(quint64) { }
void TrackWidget::setPlaying(bool) { }
void TrackWidget::setPosition(quint64) { }
void TrackWidget::setNoteState(uint, bool) { }
void TrackWidget::setMoveEnabled(bool, bool) { }
void TrackWidget::onSave() { }
void TrackWidget::onSaveAs() { }
void TrackWidget::onSelectChanged() { }
void TrackWidget::onMuteClicked() { }
void TrackWidget::onRemoveClicked() { }
void TrackWidget::onEditABCClicked() { }
void TrackWidget::onTrackChanged() { }
void TrackWidget::onTransposeUp() { }
void TrackWidget::onTransposeDown() { }

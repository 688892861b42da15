#include "ui/tracks/TrackVisualizationWidget.h"

TrackVisualizationWidget::TrackVisualizationWidget(QWidget *parent)
    : QWidget(parent)
{
}

void TrackVisualizationWidget::setTrack(const Track &) { }
void TrackVisualizationWidget::setMaxLength(quint64) { }
void TrackVisualizationWidget::setMuted(bool) { }
void TrackVisualizationWidget::setPlaying(bool) { }
bool TrackVisualizationWidget::isPlaying() const { return false; }
void TrackVisualizationWidget::setPosition(quint64) { }
quint64 TrackVisualizationWidget::position() const { return 0; }
void TrackVisualizationWidget::onSettingChanged(Settings::Setting) { }

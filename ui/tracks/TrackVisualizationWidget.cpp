#include "ui/tracks/TrackVisualizationWidget.h"

#include "ui/tracks/StripPainter.h"
#include "ui/tracks/StripScale.h"

#include <QImage>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QtMath>

namespace {

bool isOn(Settings::Setting setting)
{
    return Settings::instance().value(setting).toBool();
}

} // namespace

TrackVisualizationWidget::TrackVisualizationWidget(QWidget *parent)
    : QWidget(parent)
    , m_marker(new QWidget(this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_marker->setStyleSheet(QStringLiteral("background: #FFFFFF"));
    m_marker->hide();
    placeMarker();
    connect(&Settings::instance(), &Settings::settingChanged, this,
            &TrackVisualizationWidget::onSettingChanged);
}

void TrackVisualizationWidget::setTrack(const Track &track)
{
    m_track = track;
    m_blocks = NoteBlocks(track.events());
    update();
}

void TrackVisualizationWidget::setMaxLength(quint64 ticks)
{
    m_maxLength = ticks;
    placeMarker();
    update();
}

void TrackVisualizationWidget::setMuted(bool muted)
{
    m_muted = muted;
    update();
}

void TrackVisualizationWidget::setPlaying(bool playing)
{
    m_playing = playing;
    m_marker->setVisible(playing);
}

void TrackVisualizationWidget::setPosition(quint64 ticks)
{
    m_position = ticks;
    placeMarker();
}

void TrackVisualizationWidget::onSettingChanged(Settings::Setting)
{
    update();
}

void TrackVisualizationWidget::paintEvent(QPaintEvent *event)
{
    // Smooth edges come out a little different where they are clipped. So the part is drawn without
    // a clip elsewhere, that parts drawn one after the other are those of one picture. On a scaled
    // screen a part may begin and end within a pixel: one more all around belongs to it.
    QImage image(pixelSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(devicePixelRatioF());
    QPainter painter(&image);
    drawPart(painter, event->rect().adjusted(-1, -1, 1, 1));
    QPainter(this).drawImage(0, 0, image);
}

QSize TrackVisualizationWidget::pixelSize() const
{
    return {qCeil(width() * devicePixelRatioF()), qCeil(height() * devicePixelRatioF())};
}

void TrackVisualizationWidget::drawPart(QPainter &painter, const QRect &part) const
{
    StripPainter strip(painter, part, scale());
    strip.drawGround();
    if (isOn(Settings::DrawMeasureLines))
        strip.drawMeasureLines(m_track.measureLength());
    if (isOn(Settings::DrawOctaveLines))
        strip.drawOctaveLines();
    strip.drawNotes(m_track, m_blocks, noteColor());
}

void TrackVisualizationWidget::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        emit seek(scale().ticksAt(event->x()));
    else
        QWidget::mousePressEvent(event);
}

void TrackVisualizationWidget::resizeEvent(QResizeEvent *)
{
    placeMarker();
}

StripScale TrackVisualizationWidget::scale() const
{
    return {size(), m_maxLength};
}

QColor TrackVisualizationWidget::noteColor() const
{
    return m_muted ? QColor(64, 64, 64)
                   : Settings::instance().value(Settings::NoteColor).value<QColor>();
}

void TrackVisualizationWidget::placeMarker()
{
    m_marker->setGeometry(scale().column(m_position), 0, 1, height());
}

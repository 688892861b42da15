#include "ui/pianoroll/PianoRollView.h"

#include "model/Settings.h"
#include "model/Track.h"
#include "ui/pianoroll/PianoRollGrid.h"
#include "ui/pianoroll/PianoRollKeyboard.h"
#include "ui/pianoroll/PianoRollMeasureBar.h"
#include "ui/pianoroll/PianoRollScene.h"
#include "ui/pianoroll/PianoRollZoom.h"
#include "ui/pianoroll/WheelZoom.h"
#include "ui/pianoroll/ZoomButtons.h"

#include <QPainter>
#include <QScrollBar>
#include <QToolButton>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int KeyboardWidth = 40;
constexpr int RulerHeight = PianoRollMeasureBar::Height;

/// What is left of the line, in parts of the width, when the view has turned to it.
constexpr int ShownBeforeLine = 8;

int storedIndex(Settings::Setting setting, const PianoRollZoom::Axis &axis)
{
    bool isNumber = false;
    const int index = Settings::instance().value(setting).toInt(&isNumber);
    return isNumber ? axis.bounded(index) : axis.standard;
}

/// For a scroll bar.
int wholePixels(qreal pixels)
{
    constexpr qreal most = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(pixels, -most, most));
}

/// Half way between the lowest and the highest note.
qreal middlePitch(const Track &track)
{
    quint32 lowest = Ticks::HighestPitch;
    quint32 highest = Ticks::LowestPitch;
    for (const TrackEvent &event : track.events()) {
        if (event.isNote()) {
            lowest = std::min(lowest, event.note());
            highest = std::max(highest, event.note());
        }
    }
    return (static_cast<qreal>(lowest) + highest + 1) / 2;
}

} // namespace

PianoRollView::PianoRollView(PianoRollScene *scene, QWidget *parent)
    : QGraphicsView(scene, parent)
    , m_keyboard(new PianoRollKeyboard(this, KeyboardWidth))
    , m_measureBar(new PianoRollMeasureBar(this))
    , m_hZoom(storedIndex(Settings::PianoRollHScale, PianoRollZoom::Horizontal))
    , m_vZoom(storedIndex(Settings::PianoRollVScale, PianoRollZoom::Vertical))
    , m_hButtons(new ZoomButtons(this, Qt::Horizontal))
    , m_vButtons(new ZoomButtons(this, Qt::Vertical))
    , m_corner(new QWidget(this))
{
    setUpView();
    setUpCorner();
    connectZoom();
    placeSides();
    applyZoom();
    trackChanged();
}

void PianoRollView::setPlaying(bool playing)
{
    m_playing = playing;
    viewport()->update(lineArea());
}

// Only the columns of the line are painted again, as it moves many times a second.
void PianoRollView::setPosition(quint64 position)
{
    const QRect before = lineArea();
    m_position = position;
    if (m_playing && lineArea() != before) {
        viewport()->update(before);
        viewport()->update(lineArea());
    }
}

void PianoRollView::showPosition()
{
    const qreal column = lineColumn();
    if (column >= 0 && column < viewport()->width())
        return;
    const int before = viewport()->width() / ShownBeforeLine;
    QScrollBar *bar = horizontalScrollBar();
    bar->setValue(wholePixels(bar->value() + column - before));
}

void PianoRollView::trackChanged()
{
    const Track track = shownTrack();
    m_measureBar->setMeasureLength(track.measureLength());
    m_beatsPerMeasure = track.beatsPerMeasure();
    m_ticksPerBeat = m_beatsPerMeasure == 0 ? 0 : track.measureLength() / m_beatsPerMeasure;
    resetCachedContent();
    centreNotes();
}

void PianoRollView::onVZoomIn()
{
    setVZoom(PianoRollZoom::Vertical.in(m_vZoom));
}

void PianoRollView::onVZoomDefault()
{
    setVZoom(PianoRollZoom::Vertical.standard);
}

void PianoRollView::onVZoomOut()
{
    setVZoom(PianoRollZoom::Vertical.out(m_vZoom));
}

void PianoRollView::onHZoomIn()
{
    setHZoom(PianoRollZoom::Horizontal.in(m_hZoom));
}

void PianoRollView::onHZoomDefault()
{
    setHZoom(PianoRollZoom::Horizontal.standard);
}

void PianoRollView::onHZoomOut()
{
    setHZoom(PianoRollZoom::Horizontal.out(m_hZoom));
}

void PianoRollView::drawBackground(QPainter *painter, const QRectF &rect)
{
    painter->setRenderHint(QPainter::Antialiasing, false);
    PianoRollGrid::drawRows(painter, rect);
    PianoRollGrid::drawBeats(painter, rect, {m_ticksPerBeat, m_beatsPerMeasure});
}

void PianoRollView::drawForeground(QPainter *painter, const QRectF &rect)
{
    m_hasShownNotes = m_hasShownNotes || shownTrack().noteCount() > 0;
    const auto x = static_cast<qreal>(m_position);
    if (!m_playing || x < rect.left() || x > rect.right())
        return;
    painter->setRenderHint(QPainter::Antialiasing, false);
    PianoRollGrid::drawLine(painter, rect, x, {192, 192, 192});
}

void PianoRollView::resizeEvent(QResizeEvent *event)
{
    QGraphicsView::resizeEvent(event);
    placeSides();
    centreNotes();
}

// Without the graphics view's, which would move it to a place of earlier.
void PianoRollView::showEvent(QShowEvent *)
{
    centreNotes();
}

void PianoRollView::setUpView()
{
    setLayoutDirection(Qt::LeftToRight); // time runs so everywhere
    setViewportMargins(KeyboardWidth, RulerHeight, 0, 0);
    setAlignment(Qt::AlignTop | Qt::AlignLeft);
    setCacheMode(CacheBackground);
    setOptimizationFlags(DontAdjustForAntialiasing | DontSavePainterState);
    setViewportUpdateMode(SmartViewportUpdate);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setDragMode(ScrollHandDrag);
}

void PianoRollView::setUpCorner()
{
    m_corner->setAttribute(Qt::WA_StyledBackground);
    m_corner->setStyleSheet(
        QStringLiteral("border-bottom: 1px solid #000000; border-right: 1px solid #000000; "
                       "background-color: #404040;"));
}

void PianoRollView::connectZoom()
{
    connect(m_hButtons->in(), &QToolButton::clicked, this, &PianoRollView::onHZoomIn);
    connect(m_hButtons->standard(), &QToolButton::clicked, this, &PianoRollView::onHZoomDefault);
    connect(m_hButtons->out(), &QToolButton::clicked, this, &PianoRollView::onHZoomOut);
    connect(m_vButtons->in(), &QToolButton::clicked, this, &PianoRollView::onVZoomIn);
    connect(m_vButtons->standard(), &QToolButton::clicked, this, &PianoRollView::onVZoomDefault);
    connect(m_vButtons->out(), &QToolButton::clicked, this, &PianoRollView::onVZoomOut);

    auto *wheel = new WheelZoom(this);
    for (const QGraphicsView *view :
         std::initializer_list<QGraphicsView *>{this, m_keyboard, m_measureBar})
        wheel->watch(view->viewport());
    connect(wheel, &WheelZoom::turned, this, &PianoRollView::onWheelTurned);
}

void PianoRollView::placeSides()
{
    const QRect grid = viewport()->geometry();
    const int left = grid.left() - KeyboardWidth;
    const int top = grid.top() - RulerHeight;
    m_corner->setGeometry(left, top, KeyboardWidth, RulerHeight);
    m_measureBar->setGeometry(grid.left(), top, grid.width(), RulerHeight);
    m_keyboard->setGeometry(left, grid.top(), KeyboardWidth, grid.height());
}

void PianoRollView::setHZoom(int index)
{
    m_hZoom = index;
    applyZoom();
}

void PianoRollView::setVZoom(int index)
{
    m_vZoom = index;
    applyZoom();
}

void PianoRollView::applyZoom()
{
    scaleViews();
    m_hButtons->showIndex(PianoRollZoom::Horizontal, m_hZoom);
    m_vButtons->showIndex(PianoRollZoom::Vertical, m_vZoom);
    storeZoom();
}

// Each in one step: with a reset in between, the scroll positions would be lost.
void PianoRollView::scaleViews()
{
    const double perTick = PianoRollZoom::pixelsPerTick(m_hZoom);
    const double perSemitone = PianoRollZoom::pixelsPerSemitone(m_vZoom);
    setTransform(QTransform::fromScale(perTick, perSemitone));
    m_measureBar->setTransform(QTransform::fromScale(perTick, 1.0));
    m_keyboard->setTransform(QTransform::fromScale(m_keyboard->width(), perSemitone));
}

void PianoRollView::storeZoom() const
{
    Settings::instance().setValue(Settings::PianoRollHScale, m_hZoom);
    Settings::instance().setValue(Settings::PianoRollVScale, m_vZoom);
}

void PianoRollView::onWheelTurned(Qt::Orientation orientation, int notches, const QPoint &place)
{
    const QPoint inView = viewport()->mapFromGlobal(place);
    const QPointF kept = mapToScene(inView);
    if (orientation == Qt::Horizontal)
        setHZoom(PianoRollZoom::Horizontal.bounded(m_hZoom + notches));
    else
        setVZoom(PianoRollZoom::Vertical.bounded(m_vZoom + notches));
    moveTo(kept, inView);
}

/// Scrolls until a place of the scene is seen at one of the viewport.
void PianoRollView::moveTo(const QPointF &scenePlace, const QPoint &place)
{
    const QPointF way = viewportTransform().map(scenePlace) - place;
    horizontalScrollBar()->setValue(wholePixels(horizontalScrollBar()->value() + way.x()));
    verticalScrollBar()->setValue(wholePixels(verticalScrollBar()->value() + way.y()));
}

Track PianoRollView::shownTrack() const
{
    const auto *roll = qobject_cast<const PianoRollScene *>(scene());
    return roll != nullptr ? roll->track() : Track();
}

/// Until the first notes have been seen. Later the user has chosen the place.
void PianoRollView::centreNotes()
{
    if (m_hasShownNotes)
        return;
    const qreal left = mapToScene(0, 0).x();
    moveTo({left, middlePitch(shownTrack())}, {0, viewport()->height() / 2});
}

qreal PianoRollView::lineColumn() const
{
    return viewportTransform().map(QPointF(static_cast<qreal>(m_position), 0)).x();
}

QRect PianoRollView::lineArea() const
{
    const qreal farLeft = -2;
    const qreal farRight = viewport()->width() + 2;
    const auto column = static_cast<int>(std::floor(std::clamp(lineColumn(), farLeft, farRight)));
    return {column - 1, 0, 3, viewport()->height()};
}

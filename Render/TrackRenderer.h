#pragma once

#include "Quillmoor/Instrument.h"
#include "Render/RenderResult.h"
#include "model/Track.h"

#include <QObject>
#include <QPointer>
#include <QString>

class QThread;
class RenderWorker;

/// Renders tracks into a wave file on a thread of its own and reports how it goes.
///
/// One object renders one file, once. It lives on the thread that made it, whose event loop brings
/// the signals. Between renderStarted() and either renderFinished() or renderFailed() it is busy.
/// Destroying it while it is busy cancels the render and waits for the step in hand, after which
/// the unfinished file is gone.
class TrackRenderer : public QObject {
    Q_OBJECT

public:
    explicit TrackRenderer(const QString &fileName);
    ~TrackRenderer() override;

    /// `volume` is 0 to 1, `pan` -1 to 1. Does nothing once started.
    void addTrack(const Track &track, const Instrument &instrument, float volume, float pan);
    /// Does nothing the second time.
    void start();
    /// Makes a running render end soon by renderFailed("The rendering was cancelled."), unless it
    /// is just about to finish.
    void cancel();

    bool isRunning() const { return m_running; }
    /// The figures of the file, from renderFinished() on.
    const RenderResult &result() const { return m_result; }

signals:
    void renderStarted();
    /// Per step and track with events left: the tick scheduled up to, and the length of the longest
    /// track. The first may lie beyond the second.
    void renderProgress(quint64 currentTick, quint64 totalTicks);
    /// The file is complete. Does not follow a failure.
    void renderFinished();
    /// There is no file; the message is ready to be shown.
    void renderFailed(const QString &message);

private slots:
    void onMeasured(const RenderResult &result);
    void onRenderFinished();
    void onRenderFailed(const QString &message);
    void onNoThread();

private:
    RenderWorker *worker();
    void connectWorker();

    QString m_fileName;
    QThread *m_thread = nullptr;     // a child, from start() on
    QPointer<RenderWorker> m_worker; // deletes itself on the thread when it has rendered
    RenderResult m_result;
    bool m_running = false;
};

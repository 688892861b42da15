#include "Render/TrackRenderer.h"

#include "Render/RenderWorker.h"

#include <QThread>

TrackRenderer::TrackRenderer(const QString &fileName)
    : m_fileName(fileName)
{
    qRegisterMetaType<RenderResult>(); // crosses the threads
}

TrackRenderer::~TrackRenderer()
{
    cancel();
    if (m_thread)
        m_thread->wait();
    delete m_worker;
}

void TrackRenderer::addTrack(const Track &track, const Instrument &instrument, float volume,
                             float pan)
{
    if (!m_thread)
        worker()->addTrack(track, instrument, volume, pan);
}

void TrackRenderer::start()
{
    if (m_thread)
        return;
    m_thread = new QThread(this);
    worker()->moveToThread(m_thread);
    connectWorker();
    m_running = true;
    m_thread->start();
    if (m_thread->isRunning())
        QMetaObject::invokeMethod(m_worker, "render");
    else
        QMetaObject::invokeMethod(this, "onNoThread", Qt::QueuedConnection);
    emit renderStarted();
}

void TrackRenderer::cancel()
{
    if (m_thread)
        m_thread->requestInterruption();
}

void TrackRenderer::onMeasured(const RenderResult &result)
{
    m_result = result;
}

void TrackRenderer::onRenderFinished()
{
    m_running = false;
    emit renderFinished();
}

void TrackRenderer::onRenderFailed(const QString &message)
{
    m_running = false;
    emit renderFailed(message);
}

void TrackRenderer::onNoThread()
{
    onRenderFailed(QStringLiteral("Could not start a thread for the rendering."));
}

RenderWorker *TrackRenderer::worker()
{
    if (!m_worker)
        m_worker = new RenderWorker(m_fileName);
    return m_worker;
}

void TrackRenderer::connectWorker()
{
    RenderWorker *const from = m_worker;
    // Queued, quit() would wait for the event loop of this thread, which the destructor blocks.
    connect(from, &RenderWorker::finished, m_thread, &QThread::quit, Qt::DirectConnection);
    connect(from, &RenderWorker::finished, from, &RenderWorker::deleteLater);
    connect(from, &RenderWorker::progress, this, &TrackRenderer::renderProgress);
    connect(from, &RenderWorker::finished, this, &TrackRenderer::onRenderFinished);

    connect(from, &RenderWorker::renderFailed, m_thread, &QThread::quit, Qt::DirectConnection);
    connect(from, &RenderWorker::renderFailed, from, &RenderWorker::deleteLater);
    connect(from, &RenderWorker::measured, this, &TrackRenderer::onMeasured);
    connect(from, &RenderWorker::renderFailed, this, &TrackRenderer::onRenderFailed);
}

// What brings tracks in from files and other programs, and what takes them out again.
#include "ui/MainWindow.h"

#include "ABC/ABCFile.h"
#include "ABC/ABCParser.h"
#include "MIDI/MidiFile.h"
#include "Render/TrackRenderer.h"
#include "model/Settings.h"
#include "ui/DroppedFiles.h"
#include "ui/RenderProgressDialog.h"
#include "ui/RenderSteps.h"
#include "ui/dialogs/FileDialogs.h"
#include "ui/dialogs/MessageBoxes.h"
#include "ui/tracks/TrackWidget.h"

#include <QApplication>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QScopeGuard>
#include <QStatusBar>
#include <QThread>

#include <utility>

namespace {

/// The window would wait for what comes out of a pipe or a device, perhaps for ever.
void refuseEndless(const QString &path)
{
    const QFileInfo info(path);
    if (info.exists() && !info.isFile())
        throw QStringLiteral("Could not open file.");
}

} // namespace

int MainWindow::eventLoops()
{
    return QThread::currentThread()->loopLevel();
}

void MainWindow::openFiles(const QStringList &paths)
{
    for (const QString &path : paths) {
        if (isMidiFile(path))
            loadMidiFile(path);
        else
            loadABCFile(path);
    }
    updateTrackLengths();
}

void MainWindow::onLoadABC()
{
    const QStringList paths = FileDialogs::openFiles(this, tr("Choose ABC file(s) to open"),
                                                     tr("ABC files (*.abc)"), Settings::DirAbcOpen);
    if (paths.isEmpty())
        return;
    for (const QString &path : paths)
        loadABCFile(path);
    updateTrackLengths();
}

void MainWindow::onImportMidi()
{
    const QString path = FileDialogs::openFile(this, tr("Choose MIDI file to import..."),
                                               tr("MIDI files (*.mid)"), Settings::DirMidiOpen);
    if (path.isEmpty())
        return;
    offerToClear(tr("Import MIDI"));
    loadMidiFile(path);
    updateTrackLengths();
}

void MainWindow::onImportClipboard()
{
    const QString title = tr("Import from clipboard");
    const QMimeData *const contents = QApplication::clipboard()->mimeData();
    if (contents != nullptr && contents->hasUrls()) {
        // Taken now: the clipboard may have others by the time the question is answered.
        const QList<QUrl> urls = contents->urls();
        offerToClear(title);
        openUrls(urls);
    } else if (contents != nullptr && contents->hasText()) {
        loadABCText(contents->text());
        updateTrackLengths();
    } else {
        MessageBoxes::information(this, title,
                                  tr("The clipboard does not contain anything to import."));
    }
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (DroppedFiles::areSuitable(event->mimeData()->urls()))
        event->acceptProposedAction();
}

/// The program that the files come from waits for the end of this, so the question that may be
/// asked comes later. Copying it is: after a move that program might delete them.
void MainWindow::dropEvent(QDropEvent *event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (m_dropped.isEmpty())
        m_loopsAtDrop = qMin(eventLoops(), 1);
    m_dropped += urls;
    m_openTimer.start(0);
}

/// Files that were dropped on a busy window may come to a dialog or a menu that was asked for right
/// behind them. Those can belong to rows that the answer removes, so their end is waited for: that
/// of their event loops, which comes a little later than that of what is seen.
void MainWindow::openDropped()
{
    if (eventLoops() > m_loopsAtDrop) {
        m_openTimer.start(RetryAfter);
        return;
    }
    const QList<QUrl> urls = std::exchange(m_dropped, {});
    offerToClear(tr("Import Files"));
    openUrls(urls);
}

void MainWindow::openUrls(const QList<QUrl> &urls)
{
    for (const QUrl &url : urls) {
        const DroppedFiles::Kind kind = DroppedFiles::kind(url);
        if (kind == DroppedFiles::Abc)
            loadABCFile(DroppedFiles::path(url));
        else if (kind == DroppedFiles::Midi)
            loadMidiFile(DroppedFiles::path(url));
    }
    updateTrackLengths();
}

void MainWindow::offerToClear(const QString &title)
{
    if (m_tracks.isEmpty())
        return;
    if (MessageBoxes::question(this, title,
                               tr("Would you like to remove the existing tracks first?")))
        onClearTracks();
}

void MainWindow::loadABCFile(const QString &path)
{
    try {
        refuseEndless(path);
        addTrack(::loadABCFile(path));
    } catch (const QString &message) {
        MessageBoxes::critical(this, tr("Error while reading ABC file"), message);
    }
}

void MainWindow::loadABCText(const QString &text)
{
    try {
        addTrack(ABCParser().parse(text));
    } catch (const QString &message) {
        MessageBoxes::critical(this, tr("Error while reading ABC file"), message);
    }
}

void MainWindow::loadMidiFile(const QString &path)
{
    try {
        refuseEndless(path);
        addTracks(readMidiFile(path));
    } catch (const QString &message) {
        MessageBoxes::critical(this, tr("Error while reading MIDI file"), message);
    }
}

QList<Track> MainWindow::readMidiFile(const QString &path)
{
    // Painted at once, as reading keeps the event loop waiting.
    statusBar()->showMessage(tr("Loading MIDI file..."));
    statusBar()->repaint();
    const auto clear = qScopeGuard([this] { statusBar()->clearMessage(); });
    return ::loadMidiFile(path, MidiOptions::stored());
}

void MainWindow::onSaveSelected()
{
    for (TrackWidget *const row : rows(Scope::Selected))
        row->onSave();
}

void MainWindow::onSaveAll()
{
    for (TrackWidget *const row : rows(Scope::All))
        row->onSave();
}

void MainWindow::onExportWav()
{
    if (m_renderer && m_renderer->isRunning()) {
        MessageBoxes::warning(
            this, tr("Renderer in use"),
            tr("You are already rendering to wav, please wait for it to finish and try again."));
        return;
    }
    m_renderer.reset();
    const QString fileName =
        FileDialogs::saveFile(this, tr("Export tracks as wav..."), tr("Wave file (*.wav)"),
                              QString(), Settings::DirWavSave, Settings::DirWavSave);
    if (!fileName.isEmpty())
        startRender(fileName);
}

void MainWindow::startRender(const QString &fileName)
{
    m_renderer = std::make_unique<TrackRenderer>(fileName);
    for (TrackWidget *const row : rows(Scope::All)) {
        if (!row->isMuted())
            m_renderer->addTrack(row->track(), row->instrument(), row->volume(), row->pan());
    }
    TrackRenderer *const renderer = m_renderer.get();
    connect(renderer, &TrackRenderer::renderStarted, this, &MainWindow::onRenderStarted);
    connect(renderer, &TrackRenderer::renderProgress, this, &MainWindow::onRenderProgress);
    connect(renderer, &TrackRenderer::renderFinished, this, &MainWindow::onRenderFinished);
    connect(renderer, &TrackRenderer::renderFailed, this, &MainWindow::onRenderFailed);
    renderer->start();
}

void MainWindow::onRenderStarted()
{
    m_progressDialog = new RenderProgressDialog(tr("Rendering to wav..."), this);
    m_progressDialog->show();
}

void MainWindow::onRenderProgress(quint64 progress, quint64 total)
{
    if (m_progressDialog == nullptr)
        return;
    const RenderSteps steps = RenderSteps::of(progress, total);
    m_progressDialog->setMaximum(steps.maximum);
    m_progressDialog->setValue(steps.value);
}

void MainWindow::onRenderFinished()
{
    endRender();
}

/// The box comes last: the next export may start from then on.
void MainWindow::onRenderFailed(const QString &message)
{
    endRender();
    MessageBoxes::critical(this, tr("Export to wave"), message);
}

/// Deleted later, since both may be on the way of the signal that this is called by. Later is not
/// before a box is answered that the caller shows, so the dialog is hidden now.
void MainWindow::endRender()
{
    if (m_renderer)
        m_renderer.release()->deleteLater();
    if (m_progressDialog != nullptr) {
        m_progressDialog->hide();
        m_progressDialog->deleteLater();
    }
    m_progressDialog = nullptr;
}

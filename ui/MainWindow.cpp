#include "ui/MainWindow.h"

#include "ABC/ABCFile.h"
#include "MIDI/MidiFile.h"
#include "model/Settings.h"
#include "ui/DroppedFiles.h"
#include "ui/dialogs/FileDialogs.h"
#include "ui/dialogs/MessageBoxes.h"
#include "ui/TrackListModel.h"
#include "ui/ui_MainWindow.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QMimeData>
#include <QScopeGuard>

namespace {

/// The window would wait for what comes out of a pipe or a device, perhaps for ever.
void refuseEndless(const QString &path)
{
    const QFileInfo info(path);
    if (info.exists() && !info.isFile())
        throw QStringLiteral("Could not open file.");
}

} // namespace

MainWindow::MainWindow(const QDir &game, QWidget *parent)
    : QMainWindow(parent)
    , m_ui(std::make_unique<Ui::MainWindow>())
    , m_instruments(std::make_unique<QuillmoorInstrumentSet>(
          game, Settings::instance().value(Settings::LoadMods).toBool()))
    , m_tracks(new TrackListModel(this))
{
    m_ui->setupUi(this);
    setAttribute(Qt::WA_QuitOnClose);
    m_ui->trackList->setModel(m_tracks);
    m_ui->trackList->header()->setSectionResizeMode(TrackListModel::Title, QHeaderView::Stretch);
    showTracksOrHint();
}

MainWindow::~MainWindow() = default;

void MainWindow::openFiles(const QStringList &paths)
{
    for (const QString &path : paths) {
        if (isMidiFile(path))
            loadMidiFile(path);
        else
            loadABCFile(path);
    }
}

void MainWindow::onLoadABC()
{
    const QStringList paths = FileDialogs::openFiles(this, tr("Choose ABC file(s) to open"),
                                                     tr("ABC files (*.abc)"), Settings::DirAbcOpen);
    for (const QString &path : paths)
        loadABCFile(path);
}

void MainWindow::onImportMidi()
{
    const QString path = FileDialogs::openFile(this, tr("Choose MIDI file to import..."),
                                               tr("MIDI files (*.mid)"), Settings::DirMidiOpen);
    if (path.isEmpty())
        return;
    offerToClear(tr("Import MIDI"));
    loadMidiFile(path);
}

void MainWindow::onClearTracks()
{
    m_tracks->clear();
    showTracksOrHint();
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
    QMetaObject::invokeMethod(this, "openDroppedFiles", Qt::QueuedConnection,
                              Q_ARG(QList<QUrl>, urls));
}

void MainWindow::openDroppedFiles(const QList<QUrl> &urls)
{
    offerToClear(tr("Import Files"));
    for (const QUrl &url : urls) {
        const DroppedFiles::Kind kind = DroppedFiles::kind(url);
        if (kind == DroppedFiles::Abc)
            loadABCFile(DroppedFiles::path(url));
        else if (kind == DroppedFiles::Midi)
            loadMidiFile(DroppedFiles::path(url));
    }
}

void MainWindow::offerToClear(const QString &title)
{
    if (m_tracks->rowCount() == 0)
        return;
    if (MessageBoxes::question(this, title,
                               tr("Would you like to remove the existing tracks first?")))
        onClearTracks();
}

void MainWindow::addTrack(const Track &track)
{
    m_tracks->append(track);
    showTracksOrHint();
}

void MainWindow::addTracks(const QList<Track> &tracks)
{
    for (const Track &track : tracks)
        addTrack(track);
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
    m_ui->statusBar->showMessage(tr("Loading MIDI file..."));
    m_ui->statusBar->repaint();
    const auto clear = qScopeGuard([this] { m_ui->statusBar->clearMessage(); });
    return ::loadMidiFile(path, MidiOptions::stored());
}

void MainWindow::showTracksOrHint()
{
    QWidget *const page = m_tracks->rowCount() > 0 ? m_ui->pageTracks : m_ui->pageHint;
    m_ui->pages->setCurrentWidget(page);
}

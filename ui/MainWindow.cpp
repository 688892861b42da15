#include "ui/MainWindow.h"

#include "Player/TrackPlayer.h"
#include "Render/TrackRenderer.h"
#include "model/Settings.h"
#include "ui/AboutText.h"
#include "ui/EmptyHint.h"
#include "ui/ProblemLabel.h"
#include "ui/WebAddresses.h"
#include "ui/dialogs/MessageBoxes.h"
#include "ui/dialogs/PreferencesDialog.h"
#include "ui/tracks/TrackWidget.h"
#include "ui/ui_MainWindow.h"
#include "update/UpdateChecker.h"

#include <QDesktopServices>
#include <QProgressDialog>
#include <QScrollBar>
#include <QSignalBlocker>

MainWindow::MainWindow(const QDir &game, QWidget *parent)
    : QMainWindow(parent)
    , m_ui(std::make_unique<Ui::MainWindow>())
    , m_player(std::make_unique<TrackPlayer>())
    , m_updateChecker(std::make_unique<UpdateChecker>())
    , m_column(nullptr)
{
    setUpForm();
    setUpInstruments(game);
    setAcceptDrops(true);
    connectTimer();
    connectServices();
    updateActions();
    m_updateChecker->checkForUpdates();
}

MainWindow::~MainWindow()
{
    for (TrackWidget *const row : qAsConst(m_tracks))
        row->disconnect(this);
    m_renderer.reset(); // waits for the end of what it does
    m_updateChecker.reset();
    m_player.reset();
    m_instruments.reset();
    m_instrumentModel.reset();
    delete m_progressDialog;
    m_ui.reset();
}

void MainWindow::setUpForm()
{
    m_ui->setupUi(this);
    setAttribute(Qt::WA_QuitOnClose);
    m_ui->tbInstrument->insertWidget(m_ui->actionApplyInstrument, m_ui->instrumentList);
    m_column = TrackColumn(qobject_cast<QBoxLayout *>(m_ui->scrollAreaWidgetContents->layout()));
    m_hint = new EmptyHint(m_ui->scrTrackArea->viewport());
    m_soundProblem = new ProblemLabel(this);
    m_soundProblem->setObjectName(QStringLiteral("lblSoundProblem"));
    m_ui->statusBar->addPermanentWidget(m_soundProblem);
}

/// What the start chooses is no choice of the user's, so it is not stored.
void MainWindow::setUpInstruments(const QDir &game)
{
    const Settings &settings = Settings::instance();
    m_instruments =
        std::make_unique<QuillmoorInstrumentSet>(game, settings.value(Settings::LoadMods).toBool());
    m_instrumentModel = std::make_unique<InstrumentSetModel>(m_instruments.get(), nullptr);

    const QSignalBlocker blocker(m_ui->instrumentList);
    m_ui->instrumentList->setModel(m_instrumentModel.get());
    const QString name = settings.value(Settings::DefaultInstrument).toString();
    const int index = m_instruments->names().indexOf(name);
    if (!name.isEmpty() && index >= 0)
        m_ui->instrumentList->setCurrentIndex(index);
}

void MainWindow::connectTimer()
{
    m_openTimer.setSingleShot(true);
    connect(&m_openTimer, &QTimer::timeout, this, &MainWindow::openDropped);
}

void MainWindow::connectServices()
{
    TrackPlayer *const player = m_player.get();
    connect(player, &TrackPlayer::trackStarted, this, &MainWindow::onTrackStarted);
    connect(player, &TrackPlayer::trackStopped, this, &MainWindow::onTrackStopped);
    connect(player, &TrackPlayer::allTracksStopped, this, &MainWindow::onAllTracksStopped);
    connect(player, &TrackPlayer::trackPositionChanged, this, &MainWindow::onTrackPositionChanged);
    connect(player, &TrackPlayer::notePressed, this, &MainWindow::onNotePressed);
    connect(player, &TrackPlayer::noteReleased, this, &MainWindow::onNoteReleased);
    connect(player, &TrackPlayer::soundProblemChanged, this, &MainWindow::showSoundProblem);
    showSoundProblem(player->soundProblem());

    UpdateChecker *const checker = m_updateChecker.get();
    connect(checker, &UpdateChecker::updateAvailable, this, &MainWindow::onUpdateAvailable);
    connect(checker, &UpdateChecker::updateCheckFailed, this, &MainWindow::onUpdateFailed);
}

int MainWindow::defaultInstrument() const
{
    return m_ui->instrumentList->currentIndex();
}

void MainWindow::updateActions()
{
    const int selected = rows(Scope::Selected).size();
    m_ui->actionMerge_Selected->setEnabled(selected > 1);
    for (QAction *const action : {m_ui->actionDuplicate_Selected, m_ui->actionRemove_Selected,
                                  m_ui->actionSave_Selected, m_ui->actionMute_Selected})
        action->setEnabled(selected > 0);
}

void MainWindow::updateHint()
{
    m_hint->setVisible(m_tracks.isEmpty());
}

/// New rows are at the bottom. By itself the area would know of them only after some rounds of the
/// event loop.
void MainWindow::scrollToBottom()
{
    QEvent request(QEvent::LayoutRequest);
    QCoreApplication::sendEvent(m_ui->scrTrackArea, &request);
    QScrollBar *const bar = m_ui->scrTrackArea->verticalScrollBar();
    bar->setValue(bar->maximum());
}

void MainWindow::onPreferences()
{
    PreferencesDialog dialog(nullptr);
    if (dialog.exec() == QDialog::Accepted)
        dialog.commit();
}

void MainWindow::onDefaultInstrumentChanged(const QString &name)
{
    Settings::instance().setValue(Settings::DefaultInstrument, name);
}

void MainWindow::onGoToForum()
{
    QDesktopServices::openUrl(WebAddresses::forum());
}

void MainWindow::onGoToTracker()
{
    QDesktopServices::openUrl(WebAddresses::bugTracker());
}

void MainWindow::onDonate()
{
    QDesktopServices::openUrl(WebAddresses::donation());
}

void MainWindow::onAbout()
{
    MessageBoxes::about(this, tr("Quillmoor Composer"),
                        aboutText(QCoreApplication::applicationVersion()));
}

/// From now on the user wants to know what comes of it.
void MainWindow::onCheckUpdates()
{
    m_silentUpdateCheck = false;
    m_updateChecker->checkForUpdates();
}

void MainWindow::onUpdateAvailable(bool available, const QString &newVer, const QString &url)
{
    if (available)
        offerUpdate(newVer, url);
    else if (!m_silentUpdateCheck)
        MessageBoxes::information(this, tr("No updates"),
                                  tr("You are running the latest version of Quillmoor Composer."));
}

/// The address comes from the network, where anybody may have put in theirs.
void MainWindow::offerUpdate(const QString &version, const QString &url)
{
    const QString title = tr("Update available");
    const QString text = tr("Quillmoor Composer v%1 is available.\n"
                            "Would you like to download it now?")
                             .arg(version);
    if (!MessageBoxes::question(this, title, text))
        return;
    const QUrl page(url);
    if (WebAddresses::isWebPage(page))
        QDesktopServices::openUrl(page);
    else
        MessageBoxes::warning(this, title,
                              tr("The address of the download is no web page:\n%1").arg(url));
}

void MainWindow::onUpdateFailed(const QString &error)
{
    if (!m_silentUpdateCheck)
        MessageBoxes::critical(this, tr("Updates check failed"),
                               tr("Failed to check for updates: %1").arg(error));
}

void MainWindow::showSoundProblem(const QString &problem)
{
    m_soundProblem->setProblem(problem);
}

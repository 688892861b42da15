#include "ui/editor/ABCEditor.h"

#include "ABC/ABCFile.h"
#include "ABC/ABCParser.h"
#include "MIDI/Realignment.h"
#include "MIDI/Transforms.h"
#include "model/Settings.h"
#include "ui/dialogs/FileDialogs.h"
#include "ui/dialogs/KeyDialog.h"
#include "ui/dialogs/MessageBoxes.h"
#include "ui/dialogs/RealignNotesDialog.h"
#include "ui/dialogs/TransposeDialog.h"
#include "ui/dialogs/UnitLengthDialog.h"
#include "ui/editor/FindReplaceDialog.h"
#include "ui/editor/LineEnds.h"
#include "ui/editor/PositionText.h"
#include "ui/editor/ui_ABCEditor.h"
#include "ui/pianoroll/PianoRollKeyboard.h"
#include "ui/pianoroll/PianoRollScene.h"
#include "ui/pianoroll/PianoRollView.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QLabel>
#include <QScreen>
#include <QScrollBar>
#include <QStyle>
#include <QTextBlock>

namespace {

constexpr int PianoRollHeight = 260;

QString boxTitle()
{
    return ABCEditor::tr("ABC Editor");
}

QFont textFont()
{
    QFont font(QStringLiteral("Courier"), 10);
    font.setStyleHint(QFont::Monospace, QFont::PreferBitmap);
    font.setFixedPitch(true);
    return font;
}

QString shortFileName(const Track &track)
{
    const QString name = QFileInfo(track.fileName()).fileName();
    return name.isEmpty() ? QStringLiteral("untitled.abc") : name;
}

QTextCursor startOfLine(const QTextDocument &document, int line)
{
    const QTextBlock block = document.findBlockByNumber(line);
    return QTextCursor(block.isValid() ? block : document.lastBlock());
}

/// What a dialog makes of a track, if the user accepts it.
template <typename Dialog, typename Change>
std::optional<Track> changedBy(Dialog &dialog, const Change &change)
{
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return change();
}

} // namespace

ABCEditor::ABCEditor(Track *track, QWidget *parent)
    : QMainWindow(parent)
    , m_ui(std::make_unique<Ui::ABCEditor>())
    , m_positionLabel(new QLabel(this))
    , m_cursorLabel(new QLabel(this))
    , m_lengthLabel(new QLabel(this))
    , m_track(track)
    , m_scene(new PianoRollScene(this))
    , m_pianoRoll(new PianoRollView(m_scene, this))
{
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    fitOnScreen();
    setUpStatusBar();
    setUpText();
    updateTitle();
    setUpPianoRoll();
    connectActions();
}

// The dock is hidden as it goes, when there is no editor any more that could take note of it.
ABCEditor::~ABCEditor()
{
    m_ui->dockPianoRoll->disconnect(this);
}

// Nothing that the frame takes is known before the window is shown, but its title is about as high.
void ABCEditor::fitOnScreen()
{
    const QSize title(0, style()->pixelMetric(QStyle::PM_TitleBarHeight));
    resize(size().boundedTo(screen()->availableSize() - title));
}

void ABCEditor::setUpText()
{
    m_ui->txtABC->setFont(textFont());
    m_ui->txtABC->setFocus();
    connect(m_ui->txtABC, &QPlainTextEdit::cursorPositionChanged, this,
            &ABCEditor::onCursorChanged);
    connect(m_ui->txtABC, &QPlainTextEdit::textChanged, this, &ABCEditor::onContentChanged);
    showTrackText();
    onCursorChanged();
    onContentChanged();
}

void ABCEditor::setUpStatusBar()
{
    m_positionLabel->setText(positionText(0, *m_track));
    m_ui->statusBar->addWidget(new QLabel(this), 6);
    m_ui->statusBar->addWidget(m_positionLabel, 1);
    m_ui->statusBar->addWidget(m_cursorLabel, 2);
    m_ui->statusBar->addWidget(m_lengthLabel, 2);
}

void ABCEditor::setUpPianoRoll()
{
    QDockWidget *const dock = m_ui->dockPianoRoll;
    dock->setWidget(m_pianoRoll);
    dock->toggleViewAction()->setIcon(dock->windowIcon());
    m_ui->menuPianoRoll->insertAction(m_ui->actionAutoScroll, dock->toggleViewAction());
    dock->setVisible(Settings::instance().value(Settings::PianoRollVisible).toBool());
    resizeDocks({dock}, {PianoRollHeight}, Qt::Vertical);
    connect(dock, &QDockWidget::visibilityChanged, this, [this, dock](bool visible) {
        // Minimised or hidden with its window, the dock stays what the user wants to see.
        if (visible || dock->isHidden())
            onPianoRollVisible(visible);
    });
}

void ABCEditor::connectActions()
{
    // In no menu; a key needs something that is seen, and a tool bar may be hidden.
    addActions({m_ui->actionPlay, m_ui->actionStop});

    const auto run = [this](QAction *action, auto slot) {
        connect(action, &QAction::triggered, this, slot);
    };
    run(m_ui->actionSave, &ABCEditor::onSave);
    run(m_ui->actionSaveAs, &ABCEditor::onSaveAs);
    run(m_ui->actionApply, &ABCEditor::onApply);
    run(m_ui->actionTranspose, &ABCEditor::onTranspose);
    run(m_ui->actionChangeKey, &ABCEditor::onChangeKey);
    run(m_ui->actionChangeUnitLength, &ABCEditor::onChangeUnitLength);
    run(m_ui->actionRealignNotes, &ABCEditor::onRealignNotes);
    run(m_ui->actionQuickRealign, &ABCEditor::onQuickRealign);
    run(m_ui->actionPlay, &ABCEditor::onPlayPressed);
    run(m_ui->actionStop, &ABCEditor::trackStop);
    run(m_ui->actionFindReplace, &ABCEditor::onFindReplace);
}

void ABCEditor::reloadTrack()
{
    showTrackText();
    updateTitle();
    refreshPianoRoll();
}

// A window's title would swallow the "[*]" of a file name, which is its mark for changes.
void ABCEditor::updateTitle()
{
    const QString title = tr("ABC Editor (%1) - Quillmoor Composer").arg(shortFileName(*m_track));
    setWindowTitle(QString(title).replace(QLatin1String("[*]"), QLatin1String("[*][*]")));
}

void ABCEditor::onSave()
{
    if (m_track->fileName().isEmpty())
        onSaveAs();
    else if (writeFile())
        onApply();
}

// The chosen directory goes to a setting other than the one that the dialog starts with: what the
// editor saves is not to move the place where the rows save.
void ABCEditor::onSaveAs()
{
    const QString path =
        FileDialogs::saveFile(this, tr("Save ABC as.."), tr("ABC Files (*.abc)"),
                              shortFileName(*m_track), Settings::DirAbcSave, Settings::DirWavSave);
    if (path.isEmpty())
        return;
    m_track->setFileName(path);
    updateTitle();
    onSave();
}

bool ABCEditor::writeFile()
{
    try {
        saveABCFile(m_track->fileName(), m_ui->txtABC->toPlainText());
        return true;
    } catch (const QString &message) {
        MessageBoxes::warning(this, boxTitle(), message);
        return false;
    }
}

bool ABCEditor::onApply()
{
    if (!hasUnappliedChanges())
        return true;
    const std::optional<Track> track = parsedText();
    if (!track)
        return false;
    *m_track = *track;
    m_ui->txtABC->document()->setModified(false);
    emit trackChanged();
    refreshPianoRoll();
    return true;
}

std::optional<Track> ABCEditor::parsedText()
{
    try {
        Track track = ABCParser().parse(m_ui->txtABC->toPlainText());
        track.setFileName(m_track->fileName());
        return track;
    } catch (const QString &message) {
        MessageBoxes::critical(this, boxTitle(), tr("Could not parse ABC: %1").arg(message));
    } catch (...) {
        MessageBoxes::critical(this, boxTitle(), tr("An unknown error occured while parsing"));
    }
    return std::nullopt;
}

bool ABCEditor::hasUnappliedChanges() const
{
    return m_ui->txtABC->document()->isModified();
}

/// False when what was to follow shall not.
bool ABCEditor::offerToApply(const QString &question)
{
    if (!hasUnappliedChanges())
        return true;
    switch (MessageBoxes::questionOrCancel(this, boxTitle(), question)) {
    case MessageBoxes::Answer::Yes:
        return onApply();
    case MessageBoxes::Answer::No:
        return true;
    default:
        return false;
    }
}

void ABCEditor::transform(const Change &change)
{
    if (!offerToApply(tr("There are unapplied changes. Would you like to apply these first?")))
        return;
    std::optional<Track> changed = change();
    if (!changed)
        return;
    showText(changed->abc());
    onApply();
}

void ABCEditor::onTranspose()
{
    transform([this] {
        TransposeDialog dialog(this);
        return changedBy(dialog,
                         [&] { return Transforms::transposeTrack(*m_track, dialog.value()); });
    });
}

void ABCEditor::onChangeKey()
{
    transform([this] {
        KeyDialog dialog(this);
        dialog.setKey(m_track->header(QStringLiteral("K")));
        return changedBy(dialog, [&] { return Transforms::withKey(*m_track, dialog.key()); });
    });
}

void ABCEditor::onChangeUnitLength()
{
    transform([this] {
        UnitLengthDialog dialog(this);
        dialog.setUnitLength(m_track->header(QStringLiteral("L")));
        return changedBy(dialog,
                         [&] { return Transforms::withUnitLength(*m_track, dialog.unitLength()); });
    });
}

void ABCEditor::onRealignNotes()
{
    transform([this] {
        RealignNotesDialog dialog(this);
        return changedBy(dialog, [&] { return realignTrack(*m_track, dialog.divisions()); });
    });
}

void ABCEditor::onQuickRealign()
{
    transform([this] { return quickRealignTrack(*m_track); });
}

void ABCEditor::onCursorChanged()
{
    const QTextCursor cursor = m_ui->txtABC->textCursor();
    m_cursorLabel->setText(
        tr("Ln: %1 Col: %2").arg(cursor.blockNumber() + 1).arg(cursor.positionInBlock() + 1));
}

void ABCEditor::onContentChanged()
{
    const QTextDocument *const document = m_ui->txtABC->document();
    m_lengthLabel->setText(
        tr("Len: %1 Lines: %2").arg(document->characterCount()).arg(document->blockCount()));
}

void ABCEditor::onPianoRollVisible(bool visible)
{
    if (visible && !m_isPianoRollLoaded) {
        m_isPianoRollLoaded = true;
        refreshPianoRoll();
    }
    Settings::instance().setValue(Settings::PianoRollVisible, visible);
}

void ABCEditor::onPlayPressed()
{
    emit trackPlay();
}

void ABCEditor::onFindReplace()
{
    if (!m_findReplace)
        m_findReplace = new FindReplaceDialog(m_ui->txtABC, this);
    m_findReplace->show();
    m_findReplace->raise();
    m_findReplace->activateWindow();
}

void ABCEditor::onTrackPlaying(bool playing)
{
    m_pianoRoll->setPlaying(playing);
    if (playing)
        return;
    m_positionLabel->setText(positionText(0, *m_track));
    m_pianoRoll->setPosition(0);
    m_pianoRoll->keyboard()->releaseAll();
    m_scene->releaseAll();
}

void ABCEditor::onTrackPositionChanged(quint64 pos)
{
    m_positionLabel->setText(positionText(pos, *m_track));
    m_pianoRoll->setPosition(pos);
    if (m_ui->actionAutoScroll->isChecked())
        m_pianoRoll->showPosition();
}

void ABCEditor::onNotePressed(int eventIndex)
{
    if (!isEvent(eventIndex))
        return;
    m_scene->pressNote(static_cast<uint>(eventIndex));
    m_pianoRoll->keyboard()->pressKey(static_cast<int>(m_track->event(eventIndex).note()));
}

void ABCEditor::onNoteReleased(int eventIndex)
{
    if (!isEvent(eventIndex))
        return;
    m_scene->releaseNote(static_cast<uint>(eventIndex));
    m_pianoRoll->keyboard()->releaseKey(static_cast<int>(m_track->event(eventIndex).note()));
}

void ABCEditor::closeEvent(QCloseEvent *event)
{
    if (!offerToApply(tr("Would you like to apply your changes?")))
        return event->ignore();
    m_ui->dockPianoRoll->disconnect(this);
    event->accept();
}

/// As one step that can be undone, with the cursor on the line that it was on.
void ABCEditor::showText(const QString &text)
{
    const int line = m_ui->txtABC->textCursor().blockNumber();
    const int scrolled = m_ui->txtABC->verticalScrollBar()->value();
    m_ui->txtABC->selectAll();
    m_ui->txtABC->insertPlainText(withSimpleLineEnds(text));
    m_ui->txtABC->setTextCursor(startOfLine(*m_ui->txtABC->document(), line));
    m_ui->txtABC->verticalScrollBar()->setValue(scrolled);
}

void ABCEditor::showTrackText()
{
    showText(m_track->abc());
    m_ui->txtABC->document()->setModified(false);
}

void ABCEditor::refreshPianoRoll()
{
    if (!m_isPianoRollLoaded)
        return;
    m_pianoRoll->keyboard()->releaseAll();
    m_scene->setTrack(*m_track);
    m_pianoRoll->trackChanged();
}

/// A player that has not heard of the last change yet may report events that are gone.
bool ABCEditor::isEvent(int eventIndex) const
{
    return eventIndex >= 0 && eventIndex < m_track->eventCount();
}

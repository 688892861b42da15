#include "ui/tracks/TrackWidget.h"

#include "ABC/ABCFile.h"
#include "MIDI/Transforms.h"
#include "Quillmoor/InstrumentSetModel.h"
#include "ui/dialogs/FileDialogs.h"
#include "ui/dialogs/MessageBoxes.h"
#include "ui/editor/ABCEditor.h"
#include "ui/tracks/ui_TrackWidget.h"

#include <QAction>
#include <QApplication>
#include <QEvent>
#include <QFileInfo>
#include <QHash>
#include <QIcon>
#include <QMenu>

#include <cmath>

namespace {

const QString NotSelectedStyle = QStringLiteral(
    "TrackWidget { border: 1px solid black; border-radius: 4px; \tbackground: qlineargradient("
    "x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #DADADA, stop: 0.4 #CDCDCD, stop: 0.5 #C8C8C8, "
    "stop: 1.0 #B0B0B0); }");
const QString SelectedStyle = QStringLiteral(
    "TrackWidget { border: 1px solid black; border-radius: 4px; background: qlineargradient("
    "x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #EAEA9A, stop: 0.4 #DDDD8D, stop: 0.5 #D8D888, "
    "stop: 1.0 #C0C070); }");

constexpr float VolumeSteps = 100.0F;
constexpr float PanSteps = 10.0F;

constexpr QSize PictureSize(32, 16);

/// A window's title goes to the desktop as a whole, which does not take megabytes.
constexpr int LongestCaptionTitle = 200;

/// Of one picture for all rows: an icon decodes its files when it is made, and keeps them.
QIcon icon(const char *name)
{
    static QHash<QString, QIcon> icons;
    if (icons.isEmpty())
        qAddPostRoutine([] { icons.clear(); });
    QIcon &icon = icons[QLatin1String(name)];
    if (icon.isNull())
        icon = QIcon(QStringLiteral(":/icons/%1.png").arg(QLatin1String(name)));
    return icon;
}

QAction *addEntry(QWidget *menu, const char *iconName, const QString &text)
{
    auto *const action = new QAction(icon(iconName), text, menu);
    menu->addAction(action);
    return action;
}

/// What a plain click does is set in bold.
void makeDefault(QAction *action)
{
    QFont font = action->font();
    font.setBold(true);
    action->setFont(font);
}

void addDivider(QWidget *menu)
{
    auto *const separator = new QAction(menu);
    separator->setSeparator(true);
    menu->addAction(separator);
}

int dialStep(float value, float steps)
{
    return std::isfinite(value) ? qRound(qBound(-1.0F, value, 1.0F) * steps) : 0;
}

} // namespace

TrackWidget::TrackWidget(const QString &trackId, const Track &track, InstrumentSetModel *model,
                         QWidget *parent)
    : QFrame(parent)
    , m_ui(std::make_unique<Ui::TrackWidget>())
    , m_trackId(trackId)
    , m_track(std::make_shared<Track>(track))
{
    m_ui->setupUi(this);
    setUpLooks();
    showSelection();
    makeEditMenu();
    makeMuteMenu();
    m_ui->cboInstrument->setModel(model);
    showTrack();
    connectControls();
    m_ui->cboInstrument->installEventFilter(this);
}

TrackWidget::~TrackWidget()
{
    dismissEditor();
}

Instrument TrackWidget::instrument() const
{
    return m_ui->cboInstrument->currentData().value<Instrument>();
}

void TrackWidget::setInstrumentIndex(int index)
{
    m_ui->cboInstrument->setCurrentIndex(index);
}

bool TrackWidget::isSelected() const
{
    return m_ui->chkSelect->isChecked();
}

void TrackWidget::setSelected(bool selected)
{
    m_ui->chkSelect->setChecked(selected);
    showSelection();
}

bool TrackWidget::isMuted() const
{
    return m_ui->btnMute->isChecked();
}

void TrackWidget::setMuted(bool muted, bool notify)
{
    m_ui->btnMute->setChecked(muted);
    m_ui->wVis->setMuted(muted);
    if (notify)
        emit trackMuteChanged();
}

float TrackWidget::volume() const
{
    return static_cast<float>(m_ui->dlVolume->value()) / VolumeSteps;
}

void TrackWidget::setVolume(float volume)
{
    m_ui->dlVolume->setValue(dialStep(volume, VolumeSteps));
}

float TrackWidget::pan() const
{
    return static_cast<float>(m_ui->dlPan->value()) / PanSteps;
}

void TrackWidget::setPan(float pan)
{
    m_ui->dlPan->setValue(dialStep(pan, PanSteps));
}

void TrackWidget::setMaxLength(quint64 ticks)
{
    m_ui->wVis->setMaxLength(ticks);
}

void TrackWidget::setPlaying(bool playing)
{
    m_ui->wVis->setPlaying(playing);
    if (m_editor)
        m_editor->onTrackPlaying(playing);
}

void TrackWidget::setPosition(quint64 ticks)
{
    m_ui->wVis->setPosition(ticks);
    if (m_editor)
        m_editor->onTrackPositionChanged(ticks);
}

void TrackWidget::setNoteState(uint eventIndex, bool pressed)
{
    if (!m_editor)
        return;
    if (pressed)
        m_editor->onNotePressed(static_cast<int>(eventIndex));
    else
        m_editor->onNoteReleased(static_cast<int>(eventIndex));
}

void TrackWidget::setMoveEnabled(bool up, bool down)
{
    m_ui->btnUp->setEnabled(up);
    m_ui->btnDown->setEnabled(down);
}

void TrackWidget::onSave()
{
    if (m_track->fileName().isEmpty())
        onSaveAs();
    else
        save();
}

void TrackWidget::onSaveAs()
{
    const QString path = FileDialogs::saveFile(
        window(), tr("Save track '%1' as..").arg(title().left(LongestCaptionTitle)),
        tr("ABC Files (*.abc)"), QFileInfo(m_track->fileName()).fileName(), Settings::DirAbcSave,
        Settings::DirAbcSave);
    if (path.isEmpty())
        return;
    m_track->setFileName(path);
    if (m_editor)
        m_editor->updateTitle();
    save();
}

void TrackWidget::onSelectChanged()
{
    showSelection();
    emit trackSelected(isSelected());
}

void TrackWidget::onMuteClicked()
{
    m_ui->wVis->setMuted(isMuted());
    emit trackMuteChanged();
}

/// Behind a modal dialog, which may be the editor's, only a screen reader can still press the
/// button.
void TrackWidget::onRemoveClicked()
{
    if (QApplication::activeModalWidget() != nullptr)
        return;
    emit trackRemoved();
    deleteLater();
}

void TrackWidget::onEditABCClicked()
{
    if (!m_editor)
        openEditor();
    m_editor->setWindowState(m_editor->windowState() & ~Qt::WindowMinimized);
    m_editor->show();
    m_editor->raise();
    m_editor->activateWindow();
}

void TrackWidget::onTrackChanged()
{
    showTrack();
    emit trackChanged();
}

void TrackWidget::onTransposeUp()
{
    replaceTrack(Transforms::octaveUp(*m_track));
}

void TrackWidget::onTransposeDown()
{
    replaceTrack(Transforms::octaveDown(*m_track));
}

bool TrackWidget::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_ui->cboInstrument || event->type() != QEvent::Wheel)
        return QFrame::eventFilter(watched, event);
    const bool isWanted = m_ui->cboInstrument->focusPolicy() == Qt::WheelFocus;
    event->setAccepted(isWanted);
    return !isWanted;
}

/// What the form does not say: shared pictures, and a title that stands out on the row's own light
/// ground when the desktop is dark.
void TrackWidget::setUpLooks()
{
    m_ui->btnDelete->setIcon(icon("deletetrack"));
    m_ui->btnEdit->setIcon(icon("edittrack"));
    m_ui->btnUp->setIcon(icon("moveup"));
    m_ui->btnDown->setIcon(icon("movedown"));
    m_ui->label->setPixmap(icon("speaker-volume").pixmap(PictureSize));
    m_ui->label_2->setPixmap(icon("speaker-panning").pixmap(PictureSize));
    QPalette palette = m_ui->lblTitle->palette();
    palette.setColor(QPalette::WindowText, Qt::black);
    m_ui->lblTitle->setPalette(palette);
}

void TrackWidget::makeEditMenu()
{
    QWidget *const menu = m_ui->btnEdit;
    QAction *const open = addEntry(menu, "editdoc", tr("Open ABC Editor"));
    makeDefault(open);
    addDivider(menu);
    QAction *const save = addEntry(menu, "save", tr("Save"));
    QAction *const saveAs = addEntry(menu, "saveas", tr("Save As..."));
    addDivider(menu);
    auto *const transpose = new QMenu(tr("Quick Transpose"), menu);
    menu->addAction(transpose->menuAction());
    QAction *const up = addEntry(transpose, "transposeup", tr("Transpose one octave up"));
    QAction *const down = addEntry(transpose, "transposedown", tr("Transpose one octave down"));

    connect(open, &QAction::triggered, this, &TrackWidget::onEditABCClicked);
    connect(save, &QAction::triggered, this, &TrackWidget::onSave);
    connect(saveAs, &QAction::triggered, this, &TrackWidget::onSaveAs);
    connect(up, &QAction::triggered, this, &TrackWidget::onTransposeUp);
    connect(down, &QAction::triggered, this, &TrackWidget::onTransposeDown);
}

void TrackWidget::makeMuteMenu()
{
    QAction *const mute = addEntry(m_ui->btnMute, "mute", tr("(Un)mute"));
    makeDefault(mute);
    QAction *const solo = addEntry(m_ui->btnMute, "solo", tr("Solo"));
    connect(mute, &QAction::triggered, m_ui->btnMute, &QCheckBox::click);
    connect(solo, &QAction::triggered, this, &TrackWidget::trackSolo);
}

void TrackWidget::connectControls()
{
    connect(m_ui->btnDelete, &QToolButton::clicked, this, &TrackWidget::onRemoveClicked);
    connect(m_ui->btnEdit, &QToolButton::clicked, this, &TrackWidget::onEditABCClicked);
    connect(m_ui->btnMute, &QCheckBox::clicked, this, &TrackWidget::onMuteClicked);
    connect(m_ui->chkSelect, &QCheckBox::clicked, this, &TrackWidget::onSelectChanged);
    connect(m_ui->cboInstrument, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &TrackWidget::trackInstrumentChanged);
    connect(m_ui->wVis, &TrackVisualizationWidget::seek, this, &TrackWidget::trackSeek);
    connect(m_ui->btnUp, &QToolButton::clicked, this, &TrackWidget::trackMoveUp);
    connect(m_ui->btnDown, &QToolButton::clicked, this, &TrackWidget::trackMoveDown);
    connect(m_ui->dlVolume, &QDial::valueChanged, this, &TrackWidget::trackVolumeChanged);
    connect(m_ui->dlPan, &QDial::valueChanged, this, &TrackWidget::trackPanChanged);
}

/// A style sheet is read anew whenever it is set, and all that is in the row styled again.
void TrackWidget::showSelection()
{
    const QString &style = isSelected() ? SelectedStyle : NotSelectedStyle;
    if (styleSheet() != style)
        setStyleSheet(style);
}

void TrackWidget::showTrack()
{
    m_ui->wVis->setTrack(*m_track);
    m_ui->lblTitle->setText(title());
}

QString TrackWidget::title() const
{
    return m_track->header(QStringLiteral("T"), tr("Untitled"));
}

void TrackWidget::save()
{
    try {
        saveABCFile(m_track->fileName(), m_track->abc());
    } catch (const QString &message) {
        MessageBoxes::warning(window(), tr("Quillmoor Composer"), message);
    }
}

void TrackWidget::replaceTrack(const Track &track)
{
    const QPointer<ABCEditor> editor = m_editor;
    *m_track = track;
    onTrackChanged();
    if (editor)
        editor->reloadTrack();
}

void TrackWidget::openEditor()
{
    auto *const editor = new ABCEditor(m_track.get());
    // The program ends with the main window.
    editor->setAttribute(Qt::WA_QuitOnClose, false);
    connect(editor, &QObject::destroyed, [track = m_track] { Q_UNUSED(track) });
    connect(editor, &ABCEditor::trackChanged, this, &TrackWidget::onTrackChanged);
    connect(editor, &ABCEditor::trackPlay, this, &TrackWidget::trackPlay);
    connect(editor, &ABCEditor::trackStop, this, &TrackWidget::trackStop);
    editor->onTrackPlaying(m_ui->wVis->isPlaying());
    m_editor = editor;
}

void TrackWidget::dismissEditor()
{
    if (!m_editor)
        return;
    // In the middle of its signal the editor still needs itself, and the track.
    if (sender() == m_editor) {
        m_editor->hide();
        m_editor->deleteLater();
    } else {
        delete m_editor;
    }
}

#include "ui/dialogs/PreferencesDialog.h"

#include "Quillmoor/GameDirectory.h"
#include "ui/dialogs/ColorDialogs.h"
#include "ui/dialogs/ColorWidget.h"
#include "ui/dialogs/FileDialogs.h"
#include "ui/dialogs/MessageBoxes.h"
#include "ui/dialogs/ui_PreferencesDialog.h"

#include <QEvent>
#include <QSignalMapper>

#include <algorithm>
#include <utility>

namespace {

void map(QAbstractButton *button, QSignalMapper *mapper, Settings::Setting setting)
{
    mapper->setMapping(button, setting);
    QObject::connect(button, &QAbstractButton::clicked, mapper, qOverload<>(&QSignalMapper::map));
}

/// Colours that look the same can be noted in different ways.
bool isSameColor(const QColor &left, const QColor &right)
{
    return left.rgba() == right.rgba();
}

} // namespace

PreferencesDialog::PreferencesDialog(QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::PreferencesDialog>())
    , m_directoryButtons(new QSignalMapper(this))
    , m_checkBoxes(new QSignalMapper(this))
    , m_pickButtons(new QSignalMapper(this))
    , m_resetButtons(new QSignalMapper(this))
{
    m_ui->setupUi(this);
    fitSelector();
    m_applyButton = m_ui->buttonBox->button(QDialogButtonBox::Apply);
    registerInstruments();
    registerPreview();
    registerMidiImport();
    connectSlots();
    m_applyButton->setEnabled(false);
    m_ui->propertySelector->setCurrentRow(0);
    load();
}

PreferencesDialog::~PreferencesDialog() = default;

void PreferencesDialog::commit()
{
    // Emptied first: a receiver of the settings' signal may find its way back here.
    const auto changes = std::exchange(m_pending, {});
    m_applyButton->setEnabled(false);
    for (auto change = changes.begin(); change != changes.end(); ++change)
        Settings::instance().setValue(change.key(), change.value());
}

void PreferencesDialog::onDirectoryBrowse(int key)
{
    const auto *const directory = record<DirectoryPreference>(key);
    if (directory == nullptr)
        return;
    const QString path = FileDialogs::directory(this, directory->caption, directory->edit->text());
    if (path.isEmpty())
        return;
    if (!directory->accepts(path)) {
        MessageBoxes::critical(this, tr("Quillmoor Composer"), directory->error);
        return;
    }
    directory->edit->setText(path);
    announceRestart(key);
    setPending(key, path);
}

void PreferencesDialog::onCheckBoxChanged(int key)
{
    const auto *const checkBox = record<CheckBoxPreference>(key);
    if (checkBox == nullptr)
        return;
    announceRestart(key);
    setPending(key, checkBox->box->isChecked());
}

void PreferencesDialog::onColorPick(int key)
{
    const auto *const color = record<ColorPreference>(key);
    if (color == nullptr)
        return;
    const QColor picked = ColorDialogs::color(this, color->title, color->swatch->color());
    if (picked.isValid())
        setColor(key, picked);
}

void PreferencesDialog::onColorReset(int key)
{
    if (record<ColorPreference>(key) != nullptr)
        setColor(key, Settings::defaultValue(Settings::Setting(key)).value<QColor>());
}

void PreferencesDialog::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitSelector();
}

/// As wide as its entries, which a list by itself cuts a little.
void PreferencesDialog::fitSelector()
{
    QListWidget *const list = m_ui->propertySelector;
    list->setFixedWidth(list->sizeHintForColumn(0) + 2 * list->frameWidth());
}

void PreferencesDialog::registerInstruments()
{
    const auto root = std::make_shared<DirectoryPreference>(m_ui->txtQuillmoorPath, true);
    root->caption = tr("Please locate the Quillmoor directory.");
    root->test = [](const QString &path) { return isGameDirectory(path); };
    root->error = tr("No Quillmoor installation was found at the specified directory.");
    m_records.insert(Settings::RootPath, root);
    map(m_ui->btnBrowseQMPath, m_directoryButtons, Settings::RootPath);
    addCheckBox(Settings::LoadMods, m_ui->chkLoadMods, true);
}

void PreferencesDialog::registerPreview()
{
    addCheckBox(Settings::DrawOctaveLines, m_ui->chkPreviewDrawOctave, false);
    addCheckBox(Settings::DrawMeasureLines, m_ui->chkPreviewDrawMeasure, false);
    const auto color = std::make_shared<ColorPreference>(m_ui->clNoteColor, false);
    color->title = tr("Pick note color");
    m_records.insert(Settings::NoteColor, color);
    map(m_ui->btnPickNoteColor, m_pickButtons, Settings::NoteColor);
    map(m_ui->btnResetNoteColor, m_resetButtons, Settings::NoteColor);
}

void PreferencesDialog::registerMidiImport()
{
    addCheckBox(Settings::MergeChannels, m_ui->chkMergeChannels, false);
    addCheckBox(Settings::AutoRealign, m_ui->chkRealign, false);
    addCheckBox(Settings::PitchBend, m_ui->chkPitchBend, false);
}

void PreferencesDialog::addCheckBox(Settings::Setting setting, QCheckBox *box,
                                    bool isRestartRequired)
{
    m_records.insert(setting, std::make_shared<CheckBoxPreference>(box, isRestartRequired));
    map(box, m_checkBoxes, setting);
}

void PreferencesDialog::connectSlots()
{
    connect(m_applyButton, &QPushButton::clicked, this, &PreferencesDialog::commit);
    connect(m_directoryButtons, &QSignalMapper::mappedInt, this,
            &PreferencesDialog::onDirectoryBrowse);
    connect(m_checkBoxes, &QSignalMapper::mappedInt, this, &PreferencesDialog::onCheckBoxChanged);
    connect(m_pickButtons, &QSignalMapper::mappedInt, this, &PreferencesDialog::onColorPick);
    connect(m_resetButtons, &QSignalMapper::mappedInt, this, &PreferencesDialog::onColorReset);
}

void PreferencesDialog::load()
{
    for (auto each = m_records.begin(); each != m_records.end(); ++each)
        each.value()->load(Settings::instance().value(each.key()));
}

template <typename Record> const Record *PreferencesDialog::record(int key) const
{
    // As numbers: one that is no setting cannot be made into one.
    const auto found = std::find_if(m_records.keyBegin(), m_records.keyEnd(),
                                    [key](Settings::Setting setting) { return setting == key; });
    return found == m_records.keyEnd()
        ? nullptr
        : dynamic_cast<const Record *>(m_records.value(*found).get());
}

void PreferencesDialog::setColor(int key, const QColor &color)
{
    ColorWidget *const swatch = record<ColorPreference>(key)->swatch;
    if (isSameColor(color, swatch->color()))
        return;
    announceRestart(key);
    swatch->setColor(color);
    setPending(key, color);
}

/// Once until the next commit.
void PreferencesDialog::announceRestart(int key)
{
    const auto setting = Settings::Setting(key);
    if (!m_records.value(setting)->isRestartRequired() || m_pending.contains(setting))
        return;
    MessageBoxes::information(
        this, tr("Quillmoor Composer"),
        tr("This change will take effect next time you start Quillmoor Composer."));
}

void PreferencesDialog::setPending(int key, const QVariant &value)
{
    m_pending.insert(Settings::Setting(key), value);
    m_applyButton->setEnabled(true);
}

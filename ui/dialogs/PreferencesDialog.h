#pragma once

#include "model/Settings.h"
#include "ui/dialogs/Preference.h"

#include <QDialog>
#include <QHash>
#include <QMap>

#include <memory>

class QCheckBox;
class QPushButton;
class QSignalMapper;

namespace Ui {
class PreferencesDialog;
}

/// Edits the user's settings. What is changed waits for commit(), which is not called by accepting
/// the dialog; it is lost with the dialog otherwise.
class PreferencesDialog : public QDialog {
    Q_OBJECT

public:
    explicit PreferencesDialog(QWidget *parent = nullptr);
    ~PreferencesDialog() override;
    Q_DISABLE_COPY(PreferencesDialog)

public slots:
    /// Writes what has changed to the settings.
    void commit();

    // Each for the setting of this number; nothing happens when that is of another kind.

    /// Lets the user choose the directory.
    void onDirectoryBrowse(int key);
    /// Takes the state of the box.
    void onCheckBoxChanged(int key);
    /// Lets the user pick the colour.
    void onColorPick(int key);
    /// Takes the default colour.
    void onColorReset(int key);

protected:
    void changeEvent(QEvent *event) override;

private:
    void fitSelector();
    void registerInstruments();
    void registerPreview();
    void registerMidiImport();
    void addCheckBox(Settings::Setting setting, QCheckBox *box, bool isRestartRequired);
    void connectSlots();
    void load();

    template <typename Record> const Record *record(int key) const;
    void setColor(int key, const QColor &color);
    void announceRestart(int key);
    void setPending(int key, const QVariant &value);

    std::unique_ptr<Ui::PreferencesDialog> m_ui;
    QPushButton *m_applyButton;
    QHash<Settings::Setting, QVariant> m_pending;
    QMap<Settings::Setting, std::shared_ptr<Preference>> m_records;
    QSignalMapper *m_directoryButtons;
    QSignalMapper *m_checkBoxes;
    QSignalMapper *m_pickButtons;
    QSignalMapper *m_resetButtons;
};

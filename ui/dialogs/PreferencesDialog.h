#pragma once

#include <QDialog>

/// Edits the user's settings. What is changed waits for commit().
class PreferencesDialog : public QDialog {
    Q_OBJECT

public:
    explicit PreferencesDialog(QWidget *parent = nullptr);

public slots:
    /// Writes what has changed to the settings.
    void commit();
};

#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class TransposeDialog;
}

/// Asks by how many semitones a track shall be moved.
class TransposeDialog : public QDialog {
    Q_OBJECT

public:
    explicit TransposeDialog(QWidget *parent = nullptr);
    ~TransposeDialog() override;

    /// Semitones upwards, from -48 to 48; 0 at first.
    int value() const;

private:
    std::unique_ptr<Ui::TransposeDialog> m_ui;
};

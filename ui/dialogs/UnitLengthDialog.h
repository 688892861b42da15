#pragma once

#include <QDialog>
#include <QString>

#include <memory>

namespace Ui {
class UnitLengthDialog;
}

/// Asks for the note length that a tune's text shall count in.
class UnitLengthDialog : public QDialog {
    Q_OBJECT

public:
    explicit UnitLengthDialog(QWidget *parent = nullptr);
    ~UnitLengthDialog() override;

    /// Chooses a length of those offered, such as "1/32"; any other text changes nothing.
    void setUnitLength(const QString &unitLength);

    /// The chosen length as ABC writes it; "1/64" at first.
    QString unitLength() const;

private:
    std::unique_ptr<Ui::UnitLengthDialog> m_ui;
};

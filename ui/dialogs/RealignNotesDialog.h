#pragma once

#include "MIDI/RealignDials.h"

#include <QDialog>
#include <QVector>

#include <array>
#include <memory>

class QDial;
class QLabel;

namespace Ui {
class RealignNotesDialog;
}

/// Asks for the grids of a realignment. Starts with what the user chose the last time, which is
/// kept in the settings.
class RealignNotesDialog : public QDialog {
    Q_OBJECT

public:
    explicit RealignNotesDialog(QWidget *parent = nullptr);
    ~RealignNotesDialog() override;

    /// The chosen grids as realignTrack() takes them.
    QVector<int> divisions() const;

public slots:
    /// Keeps the choice for the next time.
    void accept() override;

private slots:
    void onRegularChanged(int position);
    void onTripletsChanged(int position);
    void onQuintupletsChanged(int position);
    void onSeptupletsChanged(int position);
    void onNonupletsChanged(int position);

private:
    struct Column {
        QLabel *caption;
        QDial *dial;
        QLabel *label;
    };

    void setUpColumn(int index);
    void spreadColumns();
    void showPosition(int index);
    RealignDials::Positions positions() const;

    std::unique_ptr<Ui::RealignNotesDialog> m_ui;
    std::array<Column, RealignDials::Count> m_columns{};
};

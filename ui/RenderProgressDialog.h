#pragma once

#include <QProgressDialog>

/// Shows how far an export is, from 0 to 1 at first, for as long as it lives: an export cannot be
/// called off, so neither Escape nor the window's frame closes the dialog and leaves the user
/// without a sign of what goes on.
class RenderProgressDialog : public QProgressDialog {
    Q_OBJECT

public:
    RenderProgressDialog(const QString &text, QWidget *parent);

public slots:
    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;
};

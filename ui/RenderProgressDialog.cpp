#include "ui/RenderProgressDialog.h"

#include <QCloseEvent>

RenderProgressDialog::RenderProgressDialog(const QString &text, QWidget *parent)
    : QProgressDialog(text, QString(), 0, 1, parent)
{
    setWindowFlag(Qt::WindowCloseButtonHint, false);
    // The last notes fade out when all are scheduled: the end is not where the bar is full.
    setAutoReset(false);
}

void RenderProgressDialog::reject() { }

void RenderProgressDialog::closeEvent(QCloseEvent *event)
{
    event->ignore();
}

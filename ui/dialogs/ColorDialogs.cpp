#include "ui/dialogs/ColorDialogs.h"

#include <QColorDialog>

QColor ColorDialogs::color(QWidget *parent, const QString &title, const QColor &start)
{
    return QColorDialog::getColor(start, parent, title);
}

#include "ui/dialogs/Preference.h"

#include "ui/dialogs/ColorWidget.h"

#include <QCheckBox>
#include <QColor>
#include <QLineEdit>

void DirectoryPreference::load(const QVariant &value)
{
    edit->setText(value.toString());
}

void CheckBoxPreference::load(const QVariant &value)
{
    box->setChecked(value.toBool());
}

void ColorPreference::load(const QVariant &value)
{
    swatch->setColor(value.value<QColor>());
}

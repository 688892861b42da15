#include "ui/dialogs/PreferencesDialog.h"

PreferencesDialog::PreferencesDialog(QWidget *parent)
    : QDialog(parent)
{
}

void PreferencesDialog::commit() { }

#include "ui/dialogs/TransposeDialog.h"

#include "ui/dialogs/ui_TransposeDialog.h"

TransposeDialog::TransposeDialog(QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::TransposeDialog>())
{
    m_ui->setupUi(this);
    m_ui->spnSemitones->selectAll(); // so that a number can be typed at once
}

TransposeDialog::~TransposeDialog() = default;

int TransposeDialog::value() const
{
    return m_ui->spnSemitones->value();
}

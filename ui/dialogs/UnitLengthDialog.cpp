#include "ui/dialogs/UnitLengthDialog.h"

#include "ui/dialogs/ui_UnitLengthDialog.h"

UnitLengthDialog::UnitLengthDialog(QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::UnitLengthDialog>())
{
    m_ui->setupUi(this);
}

UnitLengthDialog::~UnitLengthDialog() = default;

void UnitLengthDialog::setUnitLength(const QString &unitLength)
{
    const int index = m_ui->cboUnitLength->findText(unitLength);
    if (index >= 0)
        m_ui->cboUnitLength->setCurrentIndex(index);
}

QString UnitLengthDialog::unitLength() const
{
    return m_ui->cboUnitLength->currentText();
}

#include "ui/dialogs/KeyDialog.h"

#include "MIDI/KeyChoice.h"
#include "ui/dialogs/MessageBoxes.h"
#include "ui/dialogs/ui_KeyDialog.h"

KeyDialog::KeyDialog(QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::KeyDialog>())
{
    m_ui->setupUi(this);
    updateKey();
}

KeyDialog::~KeyDialog() = default;

void KeyDialog::setKey(const QString &key)
{
    const std::optional<KeyChoice> found = KeyChoice::fromText(key);
    if (!found)
        return;
    m_ui->cboMode->setCurrentIndex(int(found->mode));
    m_ui->cboSharpsFlats->setCurrentIndex(int(found->row));
}

QString KeyDialog::key() const
{
    return choice().text();
}

void KeyDialog::accept()
{
    if (choice().isSupportedByGame() || confirmUnsupportedKey())
        QDialog::accept();
}

void KeyDialog::updateKey()
{
    m_ui->lblKey->setText(key());
}

KeyChoice KeyDialog::choice() const
{
    KeyChoice choice;
    choice.mode = quint32(m_ui->cboMode->currentIndex());
    choice.row = quint32(m_ui->cboSharpsFlats->currentIndex());
    choice.hasMajorQualifier = m_ui->chkMajorQualifier->isChecked();
    return choice;
}

bool KeyDialog::confirmUnsupportedKey()
{
    return MessageBoxes::warningQuestion(
        this, tr("Change Key"),
        tr("You've chosen a key that is not supported by Quillmoor.\n"
           "Are you sure you want to continue?"));
}

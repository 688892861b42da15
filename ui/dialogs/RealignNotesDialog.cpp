#include "ui/dialogs/RealignNotesDialog.h"

#include "model/Settings.h"
#include "ui/dialogs/ui_RealignNotesDialog.h"

#include <algorithm>

namespace {

const RealignDials::Dial &rulesOf(int index)
{
    return RealignDials::dials()[size_t(index)];
}

int widestLabel(int index, const QFontMetrics &metrics)
{
    int width = 0;
    for (int position = 0; position <= rulesOf(index).maximum; ++position)
        width = std::max(width, metrics.horizontalAdvance(RealignDials::label(index, position)));
    return width;
}

} // namespace

RealignNotesDialog::RealignNotesDialog(QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::RealignNotesDialog>())
{
    m_ui->setupUi(this);
    m_columns = {{{m_ui->lblCaptionRegular, m_ui->dialRegular, m_ui->lblRegular},
                  {m_ui->lblCaptionTriplets, m_ui->dialTriplets, m_ui->lblTriplets},
                  {m_ui->lblCaptionQuintuplets, m_ui->dialQuintuplets, m_ui->lblQuintuplets},
                  {m_ui->lblCaptionSeptuplets, m_ui->dialSeptuplets, m_ui->lblSeptuplets},
                  {m_ui->lblCaptionNonuplets, m_ui->dialNonuplets, m_ui->lblNonuplets}}};
    for (int index = 0; index < RealignDials::Count; ++index)
        setUpColumn(index);
    spreadColumns();
}

RealignNotesDialog::~RealignNotesDialog() = default;

QVector<int> RealignNotesDialog::divisions() const
{
    return RealignDials::divisions(positions());
}

void RealignNotesDialog::accept()
{
    const RealignDials::Positions chosen = positions();
    for (size_t index = 0; index < chosen.size(); ++index)
        Settings::instance().setValue(RealignDials::dials()[index].setting, chosen[index]);
    QDialog::accept();
}

void RealignNotesDialog::onRegularChanged(int)
{
    showPosition(0);
}
void RealignNotesDialog::onTripletsChanged(int)
{
    showPosition(1);
}
void RealignNotesDialog::onQuintupletsChanged(int)
{
    showPosition(2);
}
void RealignNotesDialog::onSeptupletsChanged(int)
{
    showPosition(3);
}
void RealignNotesDialog::onNonupletsChanged(int)
{
    showPosition(4);
}

// With its range and its finest grid first, so that the dial itself keeps to the range.
void RealignNotesDialog::setUpColumn(int index)
{
    const Column &column = m_columns[size_t(index)];
    const RealignDials::Dial &rules = rulesOf(index);
    column.dial->setMaximum(rules.maximum);
    column.dial->setValue(rules.maximum);
    column.dial->setValue(Settings::instance().value(rules.setting).toInt());
    showPosition(index);
}

// All as wide as the widest text that any of them will show, so that nothing moves later.
void RealignNotesDialog::spreadColumns()
{
    int width = 0;
    for (int index = 0; index < RealignDials::Count; ++index) {
        const Column &column = m_columns[size_t(index)];
        width = std::max({width, column.caption->sizeHint().width(),
                          widestLabel(index, column.label->fontMetrics())});
    }
    for (const Column &column : m_columns)
        column.label->setMinimumWidth(width);
}

void RealignNotesDialog::showPosition(int index)
{
    const Column &column = m_columns[size_t(index)];
    const QString label = RealignDials::label(index, column.dial->value());
    column.label->setText(label);
    // The bare position would mean nothing to who hears it read out.
    column.dial->setAccessibleDescription(label);
}

RealignDials::Positions RealignNotesDialog::positions() const
{
    RealignDials::Positions positions;
    std::transform(m_columns.begin(), m_columns.end(), positions.begin(),
                   [](const Column &column) { return column.dial->value(); });
    return positions;
}

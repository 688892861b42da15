#include "ui/editor/FindReplaceDialog.h"

#include "model/Settings.h"
#include "ui/dialogs/MessageBoxes.h"
#include "ui/editor/ABCCodeEditor.h"
#include "ui/editor/RegularExpression.h"
#include "ui/editor/SearchProgress.h"
#include "ui/editor/ui_FindReplaceDialog.h"

namespace {

void keep(QAbstractButton *button, Settings::Setting setting, const QVariant &value)
{
    QObject::connect(button, &QAbstractButton::toggled, button, [setting, value](bool isChecked) {
        if (isChecked)
            Settings::instance().setValue(setting, value);
    });
}

void keep(QCheckBox *box, Settings::Setting setting)
{
    QObject::connect(box, &QCheckBox::toggled, box, [setting](bool isChecked) {
        Settings::instance().setValue(setting, isChecked);
    });
}

} // namespace

FindReplaceDialog::FindReplaceDialog(ABCCodeEditor *editor, QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::FindReplaceDialog>())
    , m_editor(editor)
{
    m_ui->setupUi(this);
    loadSettings();
    keepChoices();
    connect(m_ui->btnFindNext, &QPushButton::clicked, this, &FindReplaceDialog::onFindNext);
    connect(m_ui->btnReplace, &QPushButton::clicked, this, &FindReplaceDialog::onReplace);
    connect(m_ui->btnReplaceAll, &QPushButton::clicked, this, &FindReplaceDialog::onReplaceAll);
    connect(m_ui->btnClose, &QPushButton::clicked, this, &FindReplaceDialog::reject);
}

FindReplaceDialog::~FindReplaceDialog() = default;

void FindReplaceDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (event->spontaneous())
        return;
    m_ui->optDocument->setChecked(true);
    m_ui->txtFind->setFocus();
    m_ui->txtFind->selectAll();
}

void FindReplaceDialog::onFindNext()
{
    search(&FindReplaceDialog::findNext);
}

void FindReplaceDialog::onReplace()
{
    search(&FindReplaceDialog::replace);
}

void FindReplaceDialog::onReplaceAll()
{
    search(&FindReplaceDialog::replaceAll);
}

void FindReplaceDialog::loadSettings()
{
    const Settings &settings = Settings::instance();
    m_ui->chkWholeWords->setChecked(settings.value(Settings::MatchWholeWords).toBool());
    m_ui->chkMatchCase->setChecked(settings.value(Settings::MatchWholeCase).toBool());
    m_ui->chkWrapAround->setChecked(settings.value(Settings::WrapAround).toBool());
    m_ui->txtFind->setText(settings.value(Settings::FindString).toString());
    m_ui->txtReplace->setText(settings.value(Settings::ReplaceString).toString());
    m_ui->optRegularExpressions->setChecked(settings.value(Settings::SearchMode).toInt() == 1);
    m_ui->optUp->setChecked(settings.value(Settings::Direction).toInt() == 0);
}

// The direction is kept where the search mode is, and so is not remembered itself. This is
// deliberate: it is what the settings of all releases mean.
void FindReplaceDialog::keepChoices()
{
    keep(m_ui->chkWholeWords, Settings::MatchWholeWords);
    keep(m_ui->chkMatchCase, Settings::MatchWholeCase);
    keep(m_ui->chkWrapAround, Settings::WrapAround);
    keep(m_ui->optNormal, Settings::SearchMode, 0);
    keep(m_ui->optRegularExpressions, Settings::SearchMode, 1);
    keep(m_ui->optUp, Settings::SearchMode, 0);
    keep(m_ui->optDown, Settings::SearchMode, 1);
}

void FindReplaceDialog::keepTexts()
{
    Settings::instance().setValue(Settings::FindString, m_ui->txtFind->text());
    Settings::instance().setValue(Settings::ReplaceString, m_ui->txtReplace->text());
}

void FindReplaceDialog::search(Work work)
{
    keepTexts();
    try {
        const QString outcome = messageOf(work);
        if (!outcome.isEmpty())
            MessageBoxes::information(this, windowTitle(), outcome);
    } catch (const QString &message) {
        MessageBoxes::critical(this, windowTitle(), message);
    } catch (const SearchProgress::Cancelled &) {
        // The user has seen to it.
    }
}

QString FindReplaceDialog::messageOf(Work work)
{
    const std::unique_ptr<TextPattern> pattern = this->pattern();
    SearchProgress progress(this, windowTitle());
    const TextSearch search(m_editor->document(), *pattern, direction(), words(),
                            [&progress] { progress.check(); });
    return (this->*work)(search);
}

std::unique_ptr<TextPattern> FindReplaceDialog::pattern() const
{
    const QString text = TextSearch::asGivenAway(m_ui->txtFind->text());
    if (m_ui->optRegularExpressions->isChecked())
        return std::make_unique<RegularExpression>(text, caseSensitivity());
    return std::make_unique<PlainTextPattern>(text, caseSensitivity());
}

Qt::CaseSensitivity FindReplaceDialog::caseSensitivity() const
{
    return m_ui->chkMatchCase->isChecked() ? Qt::CaseSensitive : Qt::CaseInsensitive;
}

TextSearch::Direction FindReplaceDialog::direction() const
{
    return m_ui->optUp->isChecked() ? TextSearch::Direction::Up : TextSearch::Direction::Down;
}

TextSearch::Words FindReplaceDialog::words() const
{
    return m_ui->chkWholeWords->isChecked() ? TextSearch::Words::Whole : TextSearch::Words::Any;
}

TextSearch::Scope FindReplaceDialog::scope() const
{
    return m_ui->optSelection->isChecked() ? TextSearch::selection(m_editor->textCursor())
                                           : TextSearch::wholeDocument(*m_editor->document());
}

QString FindReplaceDialog::findNext(const TextSearch &search)
{
    QTextCursor found = search.next(m_editor->textCursor());
    if (found.isNull() && m_ui->chkWrapAround->isChecked())
        found = search.nextFromEdge();
    if (found.isNull())
        return tr("No matches found");
    m_editor->setTextCursor(found);
    return {};
}

QString FindReplaceDialog::replace(const TextSearch &search)
{
    QTextCursor cursor = m_editor->textCursor();
    if (search.replace(cursor, m_ui->txtReplace->text()))
        m_editor->setTextCursor(cursor);
    return findNext(search);
}

QString FindReplaceDialog::replaceAll(const TextSearch &search)
{
    QTextCursor cursor = m_editor->textCursor();
    const int count = search.replaceAll(scope(), m_ui->txtReplace->text(), cursor);
    if (count > 0)
        m_editor->setTextCursor(cursor);
    return tr("%1 occurence(s) replaced.").arg(count);
}

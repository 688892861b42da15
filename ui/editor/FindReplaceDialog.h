#pragma once

#include "ui/editor/TextSearch.h"

#include <QDialog>

#include <memory>

class ABCCodeEditor;

namespace Ui {
class FindReplaceDialog;
}

/// Finds and replaces text in an editor, with the choices of the last time, which are kept in the
/// settings.
class FindReplaceDialog : public QDialog {
    Q_OBJECT

public:
    /// The editor must outlive the dialog.
    FindReplaceDialog(ABCCodeEditor *editor, QWidget *parent);
    ~FindReplaceDialog() override;

protected:
    void showEvent(QShowEvent *event) override;

private slots:
    void onFindNext();
    void onReplace();
    void onReplaceAll();

private:
    /// Returns what the user is told in the end, if anything.
    using Work = QString (FindReplaceDialog::*)(const TextSearch &search);

    void loadSettings();
    void keepChoices();
    void keepTexts();
    void search(Work work);
    QString messageOf(Work work);
    std::unique_ptr<TextPattern> pattern() const;
    Qt::CaseSensitivity caseSensitivity() const;
    TextSearch::Direction direction() const;
    TextSearch::Words words() const;
    TextSearch::Scope scope() const;

    QString findNext(const TextSearch &search);
    QString replace(const TextSearch &search);
    QString replaceAll(const TextSearch &search);

    std::unique_ptr<Ui::FindReplaceDialog> m_ui;
    ABCCodeEditor *m_editor;
};

#include "EditorStage.h"

#include "ABC/ABCParser.h"
#include "support/WidgetDriver.h"
#include "ui/editor/ABCCodeEditor.h"

#include <QAction>
#include <QDockWidget>
#include <QLabel>
#include <QStatusBar>

EditorStage::EditorStage(const QString &abc, const QString &fileName)
    : EditorStage(trackOf(abc))
{
    track.setFileName(fileName);
    editor->updateTitle();
}

EditorStage::EditorStage(const Track &shown)
    : track(shown)
    , editor(new ABCEditor(&track))
{
}

EditorStage::~EditorStage()
{
    delete editor;
}

QString EditorStage::shortTune()
{
    return QStringLiteral("X:1\nT:One\nM:4/4\nL:1/4\nQ:1/4=120\nK:C\nC4|");
}

QString EditorStage::longTune(int count)
{
    QString text = QStringLiteral("X:1\nM:4/4\nL:1/4\nK:C\n");
    for (int i = 0; i < count / 4; ++i)
        text += QStringLiteral("CDEF|\n");
    return text;
}

Track EditorStage::trackOf(const QString &abc)
{
    return ABCParser().parse(abc);
}

bool EditorStage::show()
{
    return WidgetDriver::show(*editor) && text().hasFocus();
}

ABCCodeEditor &EditorStage::text() const
{
    return *editor->findChild<ABCCodeEditor *>();
}

QString EditorStage::shownText() const
{
    return text().toPlainText();
}

bool EditorStage::isModified() const
{
    return text().document()->isModified();
}

void EditorStage::replaceText(const QString &replacement) const
{
    text().selectAll();
    text().insertPlainText(replacement);
}

void EditorStage::trigger(const char *name) const
{
    action(name)->trigger();
}

QAction *EditorStage::action(const char *name) const
{
    return editor->findChild<QAction *>(QString::fromUtf8(name));
}

QDockWidget *EditorStage::dock() const
{
    return editor->findChild<QDockWidget *>();
}

QStringList EditorStage::labels() const
{
    QStringList texts;
    for (const QLabel *label : editor->statusBar()->findChildren<QLabel *>())
        texts << label->text();
    return texts;
}

QString EditorStage::label(const char *start) const
{
    for (const QString &text : labels()) {
        if (text.startsWith(QString::fromUtf8(start)))
            return text;
    }
    return {};
}

QString EditorStage::pitches() const
{
    QStringList pitches;
    for (const TrackEvent &event : track.events()) {
        if (event.isNote())
            pitches << QString::number(event.note());
    }
    return pitches.join(QLatin1Char(' '));
}

#pragma once

#include "model/Track.h"
#include "ui/editor/ABCEditor.h"

#include <QPointer>
#include <QString>
#include <QStringList>

class ABCCodeEditor;
class QAction;
class QDockWidget;

/// An editor with the track that it edits, as a person sees and uses it.
class EditorStage {
public:
    /// Of a track that was read from this text.
    explicit EditorStage(const QString &abc = shortTune(), const QString &fileName = {});
    explicit EditorStage(const Track &track);
    ~EditorStage();
    Q_DISABLE_COPY(EditorStage)

    /// A whole note C in 4/4.
    static QString shortTune();
    /// `count` quarter notes, four to a line.
    static QString longTune(int count);
    static Track trackOf(const QString &abc);

    /// False when keys do not go to the editor's text then.
    bool show();

    Track track;
    /// Null once it has been closed.
    QPointer<ABCEditor> editor;

    ABCCodeEditor &text() const;
    QString shownText() const;
    bool isModified() const;
    /// Puts the text in place of the one that is there, as a person who selects all and types.
    void replaceText(const QString &text) const;
    void trigger(const char *action) const;
    QAction *action(const char *name) const;
    QDockWidget *dock() const;
    /// "Pos: …", "Ln: …", "Len: …", and what else stands in the status bar.
    QStringList labels() const;
    QString label(const char *start) const;
    /// The pitches of the track's notes.
    QString pitches() const;
};

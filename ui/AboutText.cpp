#include "ui/AboutText.h"

#include <QStringList>

QString aboutText(const QString &version)
{
    // The second <i> ought to close the first; every version of the program has had it so.
    const QString title = QStringLiteral("<html><b>Quillmoor Composer (v<i>%1<i>)</b><br/>")
                              .arg(version.toHtmlEscaped());
    const QStringList lines = {
        title,
        QStringLiteral("Copyright © 2026 the Quillmoor Composer developers. All rights reserved."),
        QString(),
        QStringLiteral("Third party attribution:"),
        QStringLiteral("<a href=\"https://www.qt.io/\">Qt</a> 5.2 cross-platform application and "
                       "UI framework."),
        QStringLiteral("<a href=\"https://www.fmod.com/\">FMOD Sound System</a>, copyright © its "
                       "makers, 1994-2013."),
        QStringLiteral("Icons drawn for Quillmoor Composer by its developers."),
        QString(),
        QStringLiteral("Quillmoor is the property of its rights holder."),
        QStringLiteral("This program is not affiliated with the maker of Quillmoor."),
    };
    return lines.join(QStringLiteral("<br/>"));
}

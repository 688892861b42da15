#include "ui/editor/LineEnds.h"

QString withSimpleLineEnds(QString text)
{
    const QLatin1Char lineEnd('\n');
    return text.replace(QLatin1String("\r\n"), QLatin1String("\n"))
        .replace(QLatin1Char('\r'), lineEnd)
        .replace(QChar::LineSeparator, lineEnd)
        .replace(QChar::ParagraphSeparator, lineEnd);
}

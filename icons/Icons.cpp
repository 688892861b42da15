#include "icons/Icons.h"

#include <QtGlobal>

static void initResource()
{
    Q_INIT_RESOURCE(icons); // not possible within a namespace
}

void Icons::load()
{
    initResource();
}

QIcon Icons::application()
{
    QIcon icon(QStringLiteral(":/icons/appicon.png"));
    for (const int size : {16, 32, 48, 128, 256})
        icon.addFile(QStringLiteral(":/icons/appicon-%1.png").arg(size));
    return icon;
}

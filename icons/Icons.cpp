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

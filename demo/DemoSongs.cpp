#include "DemoGame.h"

#include "GeneratedFiles.h"
#include "Songs.h"

void writeDemoSongs(const QString &dir)
{
    Demo::GeneratedFiles files(dir);
    for (const Demo::SongPart &part : Demo::songParts())
        files.add(part.song + QLatin1Char('/') + part.fileName, part.abc);
    files.writeAround();
}

#include "demo/DemoGame.h"

#include "demo/GeneratedFiles.h"
#include "demo/MidiFile.h"
#include "demo/Songs.h"

#include "ABC/ABCParser.h"

namespace {

/// The song that is also written as a MIDI file; it has drums.
QString midiSong()
{
    return QStringLiteral("The Irish Washerwoman");
}

QString instrumentOf(const Track &track)
{
    return track.header(QStringLiteral("I")).mid(QStringLiteral("instrument ").size());
}

/// The General MIDI program that comes nearest; 0, a piano, for any other instrument.
int programOf(const QString &instrument)
{
    struct Program {
        QLatin1String instrument;
        int number;
    };
    static const Program Programs[] = {
        {QLatin1String("Fiddle"), 40},    {QLatin1String("Flute"), 73}, {QLatin1String("Lute"), 24},
        {QLatin1String("Accordion"), 21}, {QLatin1String("Bass"), 32},
    };
    for (const Program &program : Programs) {
        if (program.instrument == instrument)
            return program.number;
    }
    return 0;
}

Demo::MidiPart midiPart(const Demo::SongPart &part)
{
    const Track track = ABCParser().parse(QString::fromUtf8(part.abc));
    const QString instrument = instrumentOf(track);
    return {track, instrument, programOf(instrument), instrument == QLatin1String("Drums")};
}

QByteArray midiVersion(const std::vector<Demo::SongPart> &parts)
{
    std::vector<Demo::MidiPart> midiParts;
    for (const Demo::SongPart &part : parts) {
        if (part.song == midiSong())
            midiParts.push_back(midiPart(part));
    }
    return Demo::midiFile(midiParts);
}

} // namespace

void writeDemoSongs(const QString &dir)
{
    const std::vector<Demo::SongPart> parts = Demo::songParts();
    Demo::GeneratedFiles files(dir);
    for (const Demo::SongPart &part : parts)
        files.add(part.song + QLatin1Char('/') + part.fileName, part.abc);
    files.add(midiSong() + QStringLiteral(".mid"), midiVersion(parts));
    files.writeAround();
}

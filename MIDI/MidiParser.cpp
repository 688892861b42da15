#include "MIDI/MidiParser.h"

MidiParser::MidiParser(const MidiOptions &options)
    : m_options(options)
{
}

QList<Track> MidiParser::parse(QDataStream &)
{
    return {};
}

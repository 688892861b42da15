#pragma once

#include "MIDI/MidiChannel.h"
#include "MIDI/MidiConductor.h"
#include "MIDI/MidiReader.h"

#include <vector>

/// Reads one track chunk of a MIDI file and tells channels and conductor what happens in it.
///
/// The chunk ends with its End Of Track or with the file; its length is not looked at. An event
/// that the end of the file cuts short goes on with zeros. Each status byte is the running
/// status of the data that follow without one, be it a system or meta event's.
class MidiChunk {
public:
    static constexpr int ChannelCount = 16;
    using Channels = std::vector<MidiChannel>; ///< of ChannelCount

    enum class Bends { Heard, Ignored };

    MidiChunk(MidiReader &reader, Channels &channels, MidiConductor &conductor, Bends bends);

    /// Throws a QString: "Invalid MIDI file." where no track chunk starts, "Unknown MIDI system
    /// event 0x%1." or "Unknown MIDI channel event 0x%1.".
    void read();

private:
    void readEvent();
    bool readStatus();
    void readNote(bool isOn);
    void readControl();
    void readBend();
    void readSystemEvent();
    void readMetaEvent();
    void readInstrumentName(quint32 length);
    void readChannelPrefix();
    void readMeter();
    void readKey();
    void endTrack();
    MidiChannel &channel() { return m_channels[m_status & 0x0FU]; }

    MidiReader &m_reader;
    Channels &m_channels;
    MidiConductor &m_conductor;
    const Bends m_bends;

    quint64 m_tick = 0;  // the file's units
    quint8 m_status = 0; // 0 until there is one
    quint8 m_prefix = 0; // the channel that names are for
    bool m_isEnded = false;
};

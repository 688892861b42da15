#pragma once

/// How a MIDI file becomes tracks.
struct MidiOptions {
    bool mergeChannels; ///< one track per MIDI channel of the file, else per channel and chunk
    bool autoRealign;   ///< each track is quick-realigned at last
    bool pitchBend;     ///< bends cut notes and strike them again at the nearest semitone

    /// What the settings are before the user has changed them.
    static MidiOptions defaults();
    /// What the user has chosen, from Settings::instance().
    static MidiOptions stored();
};

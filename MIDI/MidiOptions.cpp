#include "MIDI/MidiOptions.h"

#include "model/Settings.h"

MidiOptions MidiOptions::defaults()
{
    return {Settings::defaultValue(Settings::MergeChannels).toBool(),
            Settings::defaultValue(Settings::AutoRealign).toBool(),
            Settings::defaultValue(Settings::PitchBend).toBool()};
}

MidiOptions MidiOptions::stored()
{
    const Settings &settings = Settings::instance();
    return {settings.value(Settings::MergeChannels).toBool(),
            settings.value(Settings::AutoRealign).toBool(),
            settings.value(Settings::PitchBend).toBool()};
}

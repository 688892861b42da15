#pragma once

#include <QByteArray>
#include <QLibrary>
#include <QString>
#include <QStringList>

#include <functional>

/// Puts a fake of the installed sound library in force while the object lives, and reads what
/// the program asked of it. One object at a time; it may be used from any thread while other
/// threads call the library.
///
/// The fake records every call as one line, in order over all threads:
///
///     FMOD_System_Create() -> system1
///     FMOD_System_SetSoftwareChannels(system1, 2048)
///     FMOD_System_SetOutput(system1, 5)
///     FMOD_System_Init(system1, 2048, 1, "out.wav")
///     FMOD_System_GetSoftwareFormat(system1, out, null, null, null, null, null) -> 48000
///     FMOD_System_GetDSPClock(system1) -> 0 1024                     (high half, low half)
///     FMOD_System_CreateSound(system1, "a.wav", 0x148, null) -> sound1
///     FMOD_System_CreateSound(system1, data:52494646, 0x948,
///                             {cbsize=216, length=4, rest=0}) -> sound2      (on one line)
///     FMOD_System_CreateChannelGroup(system1, "T1") -> group1
///     FMOD_System_PlaySound(system1, -1, sound1, 1) -> channel1
///     FMOD_Channel_GetFrequency(channel1) -> 44100
///     FMOD_Channel_SetVolume(channel1, 0.5)
///     FMOD_Channel_SetDelay(channel1, 1, 0, 4800)
///     FMOD_Channel_SetPaused(channel1, 0)
///     FMOD_System_Update(system1)
///
/// Objects are numbered from 1 by kind. A handle out of use is logged as "unknown", a null
/// pointer as "null"; a call that fails ends with " = 36" or whatever its code is. Numbers are
/// decimal, the mode of a sound hexadecimal, floats are printed with nine significant digits
/// (0.1 reads 0.100000001). At most the first 8 bytes of sound data are shown; `rest` is
/// "garbage" when anything behind `length` is not zero. Driver data that is not the wave
/// writer's file name is logged as "pointer". Of the channels that
/// ended or were stopped, the one with the lowest number is handed out again.
///
/// In wave-writer mode each update moves the clock on by 1024 frames, init creates the file and
/// the system's release fills it: a 16-bit stereo wave file of silence as long as the clock ran.
/// In any other mode only setClock() moves the clock. Sounds are never opened: any name will do.
///
/// For a program started as a process of its own, set the environment variables
/// QUILLMOOR_FMOD_LIBRARY to path(), QUILLMOOR_SOUND to "library" and FAKE_FMOD_LOG to a file to
/// which the lines are appended. With FAKE_FMOD_STEP each reading of the clock moves it on by so
/// many frames.
class FakeFmod {
public:
    /// Resets the fake and sets QUILLMOOR_FMOD_LIBRARY and QUILLMOOR_SOUND in the environment of
    /// this process; the destructor puts both back.
    FakeFmod();
    ~FakeFmod();
    FakeFmod(const FakeFmod &) = delete;
    FakeFmod &operator=(const FakeFmod &) = delete;

    /// The fake as a shared library, with all entry points.
    static QString path();
    /// The same without FMOD_Channel_SetDelay.
    static QString incompletePath();

    /// All lines so far.
    QStringList calls() const;
    /// The lines of one function, say "FMOD_System_Init".
    QStringList calls(const QString &function) const;
    /// How many these are; cheap, for those who wait in a log that grows.
    int callCount(const QString &function) const;
    /// The functions called, without arguments.
    QStringList functions() const;
    void clearCalls();

    /// Lets the `nth` call of `function` from now on (1 is the next) answer `result` and do
    /// nothing; with 0 (FMOD_OK) it claims success but hands out a null object. One plan per
    /// function at a time.
    void fail(const QString &function, int nth, int result);

    /// Frames per second of the output; 48000.
    void setOutputRate(int rate);
    /// The own rate of sounds created from now on; 44100.
    void setSoundFrequency(float frequency);
    /// The clock at which systems start that are initialised from now on; 0.
    void setStartClock(quint64 clock);
    /// Sets the clock of every system now.
    void setClock(quint64 clock);
    /// Every playing channel reaches the end of its sound: its handle goes out of use.
    void endChannels();

private:
    using TakeLine = std::function<void(const char *)>;

    void readLog(const QString &function, const TakeLine &take) const;
    template <typename Function> Function *control(const char *name) const;

    mutable QLibrary m_library;
    QByteArray m_previousPath;
    QByteArray m_previousChoice;
};

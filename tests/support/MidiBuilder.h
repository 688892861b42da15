#pragma once

#include <QByteArray>
#include <QList>
#include <QtGlobal>

/// Builds MIDI files byte by byte, sound ones and broken ones. The bytes are written out here,
/// independent of the program's reader.
///
/// Each function for an event answers its bytes, which begin with the time `delta` since the event
/// before; a chunk is a sum of them. Channels count from 0.
namespace MidiBuilder {

QByteArray word16(quint32 value);
QByteArray word32(quint32 value);
/// In as few bytes as will do.
QByteArray quantity(quint32 value);

QByteArray header(quint32 format, quint32 chunkCount, quint32 division);
/// With the length that `events` have.
QByteArray chunk(const QByteArray &events);
/// A file of format 1 with a chunk for each of `chunks`, which have an End Of Track added.
QByteArray file(const QList<QByteArray> &chunks, quint32 division = 480);

QByteArray noteOn(quint32 delta, quint32 channel, quint32 key, quint32 velocity = 64);
QByteArray noteOff(quint32 delta, quint32 channel, quint32 key, quint32 velocity = 0);
QByteArray control(quint32 delta, quint32 channel, quint32 controller, quint32 value);
QByteArray program(quint32 delta, quint32 channel, quint32 number);
/// 8192 is no bend.
QByteArray bend(quint32 delta, quint32 channel, quint32 value);
/// The three controllers that set how many semitones a whole bend is.
QByteArray bendRange(quint32 delta, quint32 channel, quint32 semitones);

QByteArray meta(quint32 delta, quint32 type, const QByteArray &data);
QByteArray instrumentName(quint32 delta, const QByteArray &name);
QByteArray channelPrefix(quint32 delta, quint32 channel);
QByteArray tempo(quint32 delta, quint32 microseconds);
QByteArray meter(quint32 delta, quint32 numerator, quint32 exponent);
QByteArray key(quint32 delta, int sharps, quint32 mode);
QByteArray endOfTrack(quint32 delta = 0);

} // namespace MidiBuilder

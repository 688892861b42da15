#include "ABC/ABCParser.h"

#include "ABC/FieldValues.h"
#include "ABC/KeyTable.h"
#include "ABC/RationalWalk.h"
#include "model/MessageLog.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

using T = ABCTokenizer;

constexpr char Source[] = "ABC/ABCParser";

struct TupletRatio {
    quint32 simple;
    quint32 compound;
};

// How many notes' time p notes share, for p from 2 to 9.
constexpr std::array<TupletRatio, 8> TupletRatios{
    {{3, 3}, {2, 2}, {3, 3}, {2, 3}, {2, 2}, {2, 3}, {3, 3}, {2, 3}}};

quint32 defaultTupletQ(quint32 p, bool isCompoundMeter)
{
    if (p < 2 || p > 9)
        return p;
    const TupletRatio ratio = TupletRatios[p - 2];
    return isCompoundMeter ? ratio.compound : ratio.simple;
}

/// The integer at the start of `text`, blanks aside.
std::optional<qint32> leadingInteger(const QString &text)
{
    const QString trimmed = text.trimmed();
    int end = 0;
    while (end < trimmed.size()
           && (trimmed.at(end).isDigit()
               || (end == 0 && QStringLiteral("+-").contains(trimmed.at(end)))))
        ++end;
    bool isNumber = false;
    const int value = trimmed.leftRef(end).toInt(&isNumber);
    return isNumber ? std::optional<qint32>(value) : std::nullopt;
}

/// How long a chord lasts whose shortest member is given, if it has any.
quint64 lastingTicks(std::optional<quint64> shortest)
{
    if (!shortest)
        MessageLog::quotedWarning(Source, "quint64 ABCParser::parseChord()",
                                  QStringLiteral("Empty chord"));
    return shortest.value_or(0);
}

} // namespace

Track ABCParser::parse(const QString &text)
{
    *this = ABCParser();
    m_tokens.emplace(text);
    readHeader();
    startFromHeader();
    readBody();
    m_ties.release(m_track);
    m_track.setAbc(text);
    m_track.sortEvents();
    return std::move(m_track);
}

void ABCParser::fail(const QString &message) const
{
    throw message.arg(m_tokens->tokenLine() + 1).arg(m_tokens->tokenColumn() + 1);
}

void ABCParser::checkCount() const
{
    if (m_track.eventCount() + EventsPerHeader * m_track.allHeaders().size() > LargestCount)
        throw QStringLiteral("The ABC tune has too many events.");
}

void ABCParser::readHeader()
{
    QString field;
    while (field != QLatin1String("K")) {
        switch (m_tokens->next()) {
        case T::Instruction:
        case T::Whitespace:
            break;
        case T::Comment:
            readHeaderComment();
            break;
        case T::HeaderField:
            readHeaderField(field);
            break;
        case T::EndOfInput:
            return;
        default:
            fail(QStringLiteral("Unexpected token found in ABC header: line %1, column %2."));
        }
    }
}

void ABCParser::readHeaderField(QString &lastField)
{
    lastField = m_tokens->field();
    m_track.addHeader(lastField, m_tokens->value().trimmed());
    checkCount();
}

void ABCParser::readHeaderComment()
{
    const QString comment = m_tokens->comment().trimmed();
    if (!comment.startsWith(QLatin1String("Transpose")))
        return;
    const int colon = comment.indexOf(QLatin1Char(':'));
    if (const auto semitones = leadingInteger(comment.mid(colon + 1)); colon >= 0 && semitones)
        m_transpose = *semitones;
}

void ABCParser::startFromHeader()
{
    m_keyIndex = parseKey();
    startMeter();
    m_unitLength = FieldValues::unitLength(m_track.header(QStringLiteral("L"))).ticks;
    m_track.setTicksPerMinute(initialTempo());
}

void ABCParser::startMeter()
{
    const FieldValues::Meter meter = FieldValues::meter(m_track.header(QStringLiteral("M")));
    m_barLength = meter.measureTicks;
    m_isCompoundMeter = meter.isCompound();
    if (meter.den != 0)
        m_track.setMeasure(static_cast<quint32>(meter.measureTicks), meter.num);
}

quint64 ABCParser::initialTempo() const
{
    const FieldValues::Tempo tempo = FieldValues::tempo(m_track.header(QStringLiteral("Q")));
    const quint64 ticks = tempo.hasBeat()
        ? quint64{tempo.num} * Ticks::PerWholeNote * tempo.bpm / tempo.den
        : quint64{m_unitLength} * tempo.bpm;
    return ticks != 0 ? ticks : quint64{m_unitLength} * 120;
}

void ABCParser::readBody()
{
    while (m_tokens->next() != T::EndOfInput) {
        if (m_tokens->kind() == T::Unknown)
            fail(QStringLiteral("Unknown token found in ABC body at line %1, column %2."));
        readToken();
    }
}

void ABCParser::readToken()
{
    const bool isGrace = isInGraceNotes();
    switch (m_tokens->kind()) {
    case T::Note:
        return isGrace ? void() : readSingleNote();
    case T::Rest:
        return isGrace ? void() : readRest();
    case T::ChordStart:
        return isGrace ? void() : readChord();
    case T::Tuplet:
        return isGrace ? void() : readTuplet();
    case T::Bar:
        return readBar();
    case T::HeaderField:
    case T::InlineField:
        return readField();
    default:
        return;
    }
}

/// Grace notes end with their closing brace, with their line or at a bar line.
bool ABCParser::isInGraceNotes()
{
    const T::Kind kind = m_tokens->kind();
    if (kind == T::GraceStart)
        m_graceLine = m_tokens->tokenLine();
    else if (kind == T::GraceEnd || kind == T::Bar || m_tokens->tokenLine() != m_graceLine)
        m_graceLine = -1;
    return m_graceLine >= 0;
}

void ABCParser::advance(quint64 ticks)
{
    m_time += ticks;
    if (m_tupletRemaining > 0)
        --m_tupletRemaining;
}

void ABCParser::readSingleNote()
{
    advance(readNote(Place::Alone));
}

void ABCParser::readRest()
{
    advance(restDuration());
}

void ABCParser::readChord()
{
    m_ties.forgetSingle();
    advance(parseChord());
}

void ABCParser::readBar()
{
    if (m_barLength != 0) {
        ++m_barCount;
        m_time = m_barCount * m_barLength + m_meterStart;
    }
    m_barAccidentals.clear();
}

void ABCParser::readTuplet()
{
    const quint32 q = m_tokens->tupletQ();
    m_tupletP = m_tokens->tupletP();
    m_tupletRemaining = m_tupletP;
    m_tupletQ = q != 0 ? q : defaultTupletQ(m_tupletP, m_isCompoundMeter);
}

void ABCParser::readField()
{
    const QString field = m_tokens->field();
    const QString value = m_tokens->value().trimmed();
    if (field == QLatin1String("K")) {
        const TrackEvent key = parseKey(value);
        m_keyIndex = key.keyIndex();
        m_track.addEvent(key);
    } else if (field == QLatin1String("Q")) {
        const TrackEvent tempo = parseTempo(value);
        if (tempo.ticksPerMinute() != 0)
            m_track.addEvent(tempo);
    } else if (field == QLatin1String("L")) {
        readUnitLength(value);
    } else if (field == QLatin1String("M")) {
        readMeter(value);
    }
    checkCount();
}

void ABCParser::readUnitLength(const QString &value)
{
    const FieldValues::UnitLength unit = FieldValues::unitLength(value);
    m_unitLength = unit.ticks;
    m_track.addEvent(TrackEvent::makeUnitLength(m_time, unit.num, unit.den));
}

void ABCParser::readMeter(const QString &value)
{
    const FieldValues::Meter meter = FieldValues::meter(value);
    m_meterStart = m_time;
    m_barCount = 0;
    m_barLength = meter.measureTicks;
    m_track.addEvent(TrackEvent::makeMeter(m_time, meter.num, meter.den));
}

quint32 ABCParser::parseKey() const
{
    constexpr char function[] = "uint ABCParser::parseKey()";
    const QString value = m_track.header(QStringLiteral("K"));
    const FieldValues::Key key = FieldValues::key(value);
    if (key.problem == FieldValues::Key::NoKey)
        MessageLog::quotedWarning(Source, function,
                                  QStringLiteral("Could not parse key: %1").arg(value));
    else if (key.problem == FieldValues::Key::InvalidTonic)
        MessageLog::quotedWarning(Source, function,
                                  QStringLiteral("Invalid tonic: %1").arg(key.tonic));
    return key.row;
}

TrackEvent ABCParser::parseKey(const QString &value) const
{
    constexpr char function[] = "TrackEvent ABCParser::parseKey(const QString&)";
    const FieldValues::Key key = FieldValues::key(value);
    if (key.problem == FieldValues::Key::NoKey)
        MessageLog::quotedWarning(Source, function,
                                  QStringLiteral("Could not parse key: '%1'").arg(value));
    else if (key.problem == FieldValues::Key::InvalidTonic)
        MessageLog::quotedWarning(Source, function,
                                  QStringLiteral("Invalid tonic: '%1'").arg(key.tonic));
    return TrackEvent::makeKey(m_time, key.row, key.mode);
}

/// Of 0 ticks per minute when the value names no tempo.
TrackEvent ABCParser::parseTempo(const QString &value) const
{
    const FieldValues::Tempo tempo = FieldValues::tempo(value);
    if (tempo.hasBeat() || tempo.bpm == 0)
        return TrackEvent::makeTempo(m_time, tempo.num, tempo.den, tempo.bpm);

    const auto beat = RationalWalk::nearest(m_unitLength, Ticks::PerWholeNote);
    if (beat.num != 1)
        MessageLog::quotedWarning(
            Source, "TrackEvent ABCParser::parseTempo(const QString&)",
            QStringLiteral("Bad unit length: %1/%2").arg(beat.num).arg(beat.den));
    return TrackEvent::makeTempo(m_time, static_cast<quint32>(beat.num),
                                 static_cast<quint32>(beat.den), tempo.bpm);
}

quint64 ABCParser::parseChord()
{
    const int firstEvent = m_track.eventCount();
    std::optional<quint64> shortest;
    const auto add = [&shortest](quint64 duration) {
        shortest = std::min(duration, shortest.value_or(duration));
    };
    for (;;) {
        switch (m_tokens->next()) {
        case T::Whitespace:
            break;
        case T::Note:
            add(readNote(Place::InChord));
            break;
        case T::Rest:
            add(restDuration());
            break;
        case T::ChordEnd:
            return endChord(firstEvent, shortest);
        case T::EndOfInput:
            return lastingTicks(shortest);
        default:
            fail(QStringLiteral("Unexpected token found in chord at line %1, column %2."));
        }
    }
}

quint64 ABCParser::endChord(int firstEvent, std::optional<quint64> shortest)
{
    const T::Length factor = m_tokens->length();
    for (int i = firstEvent; i < m_track.eventCount(); ++i) {
        TrackEvent &event = m_track.event(i);
        event.setDuration(scaledTicks(event.duration(), factor));
    }
    m_ties.scale(m_time, factor);
    return scaledTicks(lastingTicks(shortest), factor);
}

quint64 ABCParser::readNote(Place place)
{
    const int octave = m_tokens->octave();
    if (octave < AccidentalMemory::LowestOctave || octave > AccidentalMemory::HighestOctave)
        return 0;

    const qint64 pitch = pitchOfNote();
    const quint64 duration = noteDuration();
    if (place == Place::Alone && m_ties.breakOff(pitch, m_time, m_track))
        return duration;
    if (pitch >= Ticks::LowestPitch && pitch <= Ticks::HighestPitch) {
        const quint64 sounding = m_tokens->staccato() ? duration / 2 : duration;
        addNote(TrackEvent::makeNote(static_cast<quint32>(pitch), m_time, sounding), place);
    }
    return duration;
}

void ABCParser::addNote(const TrackEvent &note, Place place)
{
    if (place == Place::Alone)
        m_ties.addSingle(note, m_tokens->tie(), m_track);
    else
        m_ties.add(note, m_tokens->tie(), m_track);
    checkCount();
}

qint64 ABCParser::pitchOfNote()
{
    const int letter = m_tokens->noteIndex();
    const int octave = m_tokens->octave();
    const int accidental = m_tokens->accidental();
    if (accidental != 0 || m_tokens->isNatural())
        m_barAccidentals.record(letter, octave, accidental);
    return qint64{m_transpose} + KeyTable::semitone(letter) + qint64{12} * (octave + 5)
        + m_barAccidentals.inForce(letter, octave, m_keyIndex);
}

quint64 ABCParser::noteDuration() const
{
    const quint64 duration = scaledTicks(m_unitLength, m_tokens->length());
    if (m_tupletRemaining == 0 || m_tupletP == 0)
        return duration;
    return m_tupletQ * duration / m_tupletP;
}

quint64 ABCParser::restDuration() const
{
    const quint32 unit = m_tokens->isMeasureRest() ? Ticks::PerWholeNote : m_unitLength;
    return scaledTicks(unit, m_tokens->length());
}

#include "Quillmoor/Instrument.h"

#include "Quillmoor/JsonFile.h"
#include "model/MessageLog.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <limits>

namespace {

void warn(const QString &message)
{
    MessageLog::warning("Quillmoor/Instrument",
                        "Instrument Instrument::fromObject(const QString&, const QJsonObject&, "
                        "const QString&)",
                        message);
}

QString errorText(const QJsonParseError &error)
{
    return error.error == QJsonParseError::NoError ? QStringLiteral("Could not open file")
                                                   : error.errorString();
}

QJsonObject rootObject(const QString &name, const QJsonDocument &document,
                       const QJsonParseError &error)
{
    if (document.isNull())
        throw QStringLiteral("Could not read tuning file for %1. Reason: %2.")
            .arg(name, errorText(error));
    if (!document.isObject())
        throw QStringLiteral("Could not read tuning file for %1, root element is not an object.")
            .arg(name);
    return document.object();
}

double usableFadeout(const QString &name, double fadeout)
{
    if (std::isfinite(fadeout) && fadeout >= 0.0)
        return fadeout;
    warn(QStringLiteral("The fadeout %1 of %2 is not usable, 0 is used instead.")
             .arg(QString::number(fadeout), name));
    return 0.0;
}

/// Playback rates are handed to the sound system in single precision.
bool isUsablePitch(double pitch)
{
    using Float = std::numeric_limits<float>;
    return pitch >= double{Float::min()} && pitch <= double{Float::max()};
}

double usablePitch(const QString &name, uint note, double frequency, double baseFrequency)
{
    const double pitch = baseFrequency == 0.0 ? 0.0 : frequency / baseFrequency;
    if (isUsablePitch(pitch))
        return pitch;
    warn(QStringLiteral("The pitch of note %1 of %2 cannot be told from the frequencies %3 and "
                        "%4, 1 is used instead.")
             .arg(QString::number(note), name, QString::number(frequency),
                  QString::number(baseFrequency)));
    return 1.0;
}

/// Reads the member "mapping", then gives the notes without a sample one to borrow.
class MappingReader {
public:
    MappingReader(const QString &name, const QString &prefix)
        : m_name(name)
        , m_prefix(prefix)
    {
    }

    Instrument::Mapping read(const QJsonObject &members)
    {
        for (auto member = members.begin(); member != members.end(); ++member)
            readMember(member.key(), member.value());
        std::sort(m_sampledNotes.begin(), m_sampledNotes.end());
        for (auto entry = m_mapping.begin(); entry != m_mapping.end(); ++entry) {
            if (entry.value().files().isEmpty())
                entry.value() = borrowed(entry.key(), entry.value().frequency());
        }
        return m_mapping;
    }

private:
    void readMember(const QString &key, const QJsonValue &value)
    {
        const uint note = key.toUInt(); // 0 when it is no number
        const QJsonObject object = value.toObject();
        if (note == 0 || !object.contains(QLatin1String("f")))
            return;
        m_mapping.insert(note, {filesOf(object), 1.0, object.value(QLatin1String("f")).toDouble()});
        if (isSampled(object))
            m_sampledNotes.append(note);
    }

    static bool isSampled(const QJsonObject &object)
    {
        return object.contains(QLatin1String("file")) || object.contains(QLatin1String("files"));
    }

    QStringList filesOf(const QJsonObject &object) const
    {
        if (object.contains(QLatin1String("file")))
            return {filePath(object.value(QLatin1String("file")))};
        QStringList files;
        const QJsonArray alternatives = object.value(QLatin1String("files")).toArray();
        for (const QJsonValue &file : alternatives)
            files.append(filePath(file));
        return files;
    }

    QString filePath(const QJsonValue &file) const
    {
        return m_prefix + file.toString().replace(QLatin1String("$instrument$"), m_name);
    }

    InstrumentSample borrowed(uint note, double frequency) const
    {
        const InstrumentSample base = m_mapping.value(baseNote(note));
        return {base.files(), usablePitch(m_name, note, frequency, base.frequency()), frequency};
    }

    /// The nearest sampled note below or at `note`, else the lowest one.
    uint baseNote(uint note) const
    {
        if (m_sampledNotes.isEmpty())
            throw QStringLiteral("Could not map instrument note %1 for %2.")
                .arg(QString::number(note), m_name);
        const auto above = std::upper_bound(m_sampledNotes.begin(), m_sampledNotes.end(), note);
        return above == m_sampledNotes.begin() ? m_sampledNotes.first() : *std::prev(above);
    }

    QString m_name;
    QString m_prefix;
    Instrument::Mapping m_mapping;
    QVector<uint> m_sampledNotes;
};

} // namespace

InstrumentSample::InstrumentSample(const QStringList &files, double pitch, double frequency)
    : m_files(files)
    , m_pitch(pitch)
    , m_frequency(frequency)
{
}

QString InstrumentSample::randomFile() const
{
    return m_files.isEmpty() ? QString() : m_files.at(std::rand() % m_files.size());
}

bool InstrumentSample::operator==(const InstrumentSample &other) const
{
    return m_files == other.m_files && m_pitch == other.m_pitch && m_frequency == other.m_frequency;
}

Instrument Instrument::fromFile(const QString &name, const QString &path, const QString &prefix)
{
    QJsonParseError error;
    const QJsonDocument document = JsonFile::read(path, &error);
    return fromObject(name, rootObject(name, document, error), prefix);
}

Instrument Instrument::fromBytes(const QString &name, const QByteArray &bytes,
                                 const QString &prefix)
{
    QJsonParseError error;
    const QJsonDocument document = JsonFile::parse(bytes, &error);
    return fromObject(name, rootObject(name, document, error), prefix);
}

Instrument Instrument::fromObject(const QString &name, const QJsonObject &tuning,
                                  const QString &prefix)
{
    Instrument instrument;
    instrument.m_name = name;
    instrument.m_fadeout = usableFadeout(name, tuning.value(QLatin1String("fadeout")).toDouble());
    instrument.m_mapping =
        MappingReader(name, prefix).read(tuning.value(QLatin1String("mapping")).toObject());
    return instrument;
}

InstrumentSample Instrument::sample(uint note) const
{
    const auto entry = m_mapping.constFind(note);
    if (entry == m_mapping.constEnd())
        throw QStringLiteral("Invalid note index");
    return entry.value();
}

bool Instrument::operator==(const Instrument &other) const
{
    return m_name == other.m_name && m_fadeout == other.m_fadeout && m_mapping == other.m_mapping;
}

#pragma once

#include "ABC/ABCGenerator.h"
#include "ABC/ABCParser.h"

#include <QString>
#include <QStringList>

#include <random>

inline QString operator""_s(const char *text, size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}

/// Music as text, and what code under test throws and logs.
namespace AbcTest {

inline Track parse(const QString &text)
{
    return ABCParser().parse(text);
}

/// `body` under a header of "X:1", the lines of `fields` and "K:C".
inline Track parseBody(const QString &body, const QString &fields = QString())
{
    return parse(QStringLiteral("X:1\n") + fields + QStringLiteral("K:C\n") + body);
}

/// "60@0+30240 62@30240+30240": pitch, start and duration.
inline QString notes(const Track &track)
{
    QStringList texts;
    for (const TrackEvent &event : track.events()) {
        if (event.isNote())
            texts << QStringLiteral("%1@%2+%3")
                         .arg(event.note())
                         .arg(event.time())
                         .arg(event.duration());
    }
    return texts.join(QLatin1Char(' '));
}

/// The events that are no notes: "Key@0 7 0", "Tempo@0 1/4=120", "L@0 1/8", "M@0 4/4".
inline QString controls(const Track &track)
{
    QStringList texts;
    for (const TrackEvent &event : track.events()) {
        const QString fraction = QStringLiteral("%1/%2").arg(event.num()).arg(event.den());
        const QString time = QString::number(event.time());
        switch (event.type()) {
        case TrackEvent::Key:
            texts
                << QStringLiteral("Key@%1 %2 %3").arg(time).arg(event.keyIndex()).arg(event.mode());
            break;
        case TrackEvent::Tempo:
            texts << QStringLiteral("Tempo@%1 %2=%3").arg(time, fraction).arg(event.bpm());
            break;
        case TrackEvent::UnitLength:
            texts << QStringLiteral("L@%1 %2").arg(time, fraction);
            break;
        case TrackEvent::Meter:
            texts << QStringLiteral("M@%1 %2").arg(time, fraction);
            break;
        default:
            break;
        }
    }
    return texts.join(QLatin1String("; "));
}

inline QString generate(Track track)
{
    return ABCGenerator().generate(track);
}

/// The generated text behind the header.
inline QString generatedBody(const Track &track)
{
    const QString text = generate(track);
    const int key = text.indexOf(QLatin1String("\nK: "));
    return text.mid(text.indexOf(QLatin1Char('\n'), key + 1) + 1);
}

template <typename Call> QString thrownBy(Call call)
{
    try {
        call();
    } catch (const QString &message) {
        return message;
    }
    return QStringLiteral("(nothing thrown)");
}

inline QString thrownByParsing(const QString &text)
{
    return thrownBy([&] { parse(text); });
}

/// Keeps the messages logged during its life: "source | function | category | text".
class LogRecorder {
public:
    LogRecorder()
        : m_previous(qInstallMessageHandler(record))
    {
        messages().clear();
    }
    ~LogRecorder() { qInstallMessageHandler(m_previous); }
    LogRecorder(const LogRecorder &) = delete;
    LogRecorder &operator=(const LogRecorder &) = delete;

    static QStringList &messages()
    {
        static QStringList list;
        return list;
    }

private:
    static void record(QtMsgType, const QMessageLogContext &context, const QString &text)
    {
        messages() << QStringLiteral("%1 | %2 | %3 | %4")
                          .arg(QString::fromLatin1(context.file),
                               QString::fromLatin1(context.function),
                               QString::fromLatin1(context.category), text);
    }

    QtMessageHandler m_previous;
};

/// The same numbers on every system.
class Random {
public:
    explicit Random(quint32 seed)
        : m_engine(seed)
    {
    }
    /// 0..bound - 1.
    quint32 below(quint32 bound) { return static_cast<quint32>(m_engine()) % bound; }

private:
    std::mt19937 m_engine;
};

} // namespace AbcTest

#include "support/FakeFmod.h"

#include <cstdint>

namespace {

const char *const pathVariable = "QUILLMOOR_FMOD_LIBRARY";
const char *const choiceVariable = "QUILLMOOR_SOUND";

void restore(const char *variable, const QByteArray &value)
{
    if (value.isNull())
        qunsetenv(variable);
    else
        qputenv(variable, value);
}

QString functionOf(const QString &call)
{
    return call.left(call.indexOf(QLatin1Char('(')));
}

} // namespace

FakeFmod::FakeFmod()
    : m_library(path())
    , m_previousPath(qgetenv(pathVariable))
    , m_previousChoice(qgetenv(choiceVariable))
{
    qputenv(pathVariable, path().toLocal8Bit());
    qputenv(choiceVariable, "library");
    m_library.setLoadHints(QLibrary::PreventUnloadHint);
    control<void()>("fakefmodReset")();
}

FakeFmod::~FakeFmod()
{
    restore(pathVariable, m_previousPath);
    restore(choiceVariable, m_previousChoice);
}

QString FakeFmod::path()
{
    return QStringLiteral(FAKE_FMOD_PATH);
}

QString FakeFmod::incompletePath()
{
    return QStringLiteral(FAKE_FMOD_INCOMPLETE_PATH);
}

QStringList FakeFmod::calls() const
{
    return calls(QString());
}

QStringList FakeFmod::calls(const QString &function) const
{
    QStringList lines;
    readLog(function, [&](const char *line) { lines.append(QString::fromLocal8Bit(line)); });
    return lines;
}

int FakeFmod::callCount(const QString &function) const
{
    int count = 0;
    readLog(function, [&](const char *) { ++count; });
    return count;
}

/// The fake is locked meanwhile, and its log may be long: lines not asked for cost next to nothing.
void FakeFmod::readLog(const QString &function, const TakeLine &take) const
{
    const QByteArray start = function.isEmpty() ? QByteArray() : function.toLatin1() + '(';
    TakeLine takeMatch = [&](const char *line) {
        if (qstrncmp(line, start.constData(), static_cast<uint>(start.size())) == 0)
            take(line);
    };
    const auto call = [](void *matching, const char *line) {
        (*static_cast<TakeLine *>(matching))(line);
    };
    using Call = void (*)(void *, const char *);
    control<void(Call, void *)>("fakefmodReadLog")(call, &takeMatch);
}

QStringList FakeFmod::functions() const
{
    QStringList names;
    for (const QString &call : calls())
        names.append(functionOf(call));
    return names;
}

void FakeFmod::clearCalls()
{
    control<void()>("fakefmodClearLog")();
}

void FakeFmod::fail(const QString &function, int nth, int result)
{
    control<void(const char *, int, int)>("fakefmodFail")(function.toLatin1().constData(), nth,
                                                          result);
}

void FakeFmod::setOutputRate(int rate)
{
    control<void(int)>("fakefmodSetOutputRate")(rate);
}

void FakeFmod::setSoundFrequency(float frequency)
{
    control<void(float)>("fakefmodSetSoundFrequency")(frequency);
}

void FakeFmod::setStartClock(quint64 clock)
{
    control<void(std::uint64_t)>("fakefmodSetStartClock")(clock);
}

void FakeFmod::setClock(quint64 clock)
{
    control<void(std::uint64_t)>("fakefmodSetClock")(clock);
}

void FakeFmod::endChannels()
{
    control<void()>("fakefmodEndChannels")();
}

template <typename Function> Function *FakeFmod::control(const char *name) const
{
    const QFunctionPointer found = m_library.resolve(name);
    if (!found)
        qFatal("The fake sound library lacks %s: %s", name, qPrintable(m_library.errorString()));
    return reinterpret_cast<Function *>(found);
}

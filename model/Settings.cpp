#include "model/Settings.h"

#include "model/MessageLog.h"
#include "model/SettingsFile.h"

#include <QColor>
#include <QCoreApplication>
#include <QEvent>

#include <vector>

namespace {

struct Row {
    Settings::Setting setting;
    QString key;
    QVariant defaultValue;
};

/// In the order of the enumeration.
const std::vector<Row> &table()
{
    static const std::vector<Row> rows = {
        {Settings::RootPath, QStringLiteral("quillmoor/rootPath"), QString()},
        {Settings::LoadMods, QStringLiteral("instruments/loadMods"), false},
        {Settings::DrawMeasureLines, QStringLiteral("preview/drawMeasureLines"), false},
        {Settings::DrawOctaveLines, QStringLiteral("preview/drawOctaveLines"), true},
        {Settings::NoteColor, QStringLiteral("preview/noteColor"), QColor(32, 96, 255)},
        {Settings::MergeChannels, QStringLiteral("midi/mergeChannels"), true},
        {Settings::AutoRealign, QStringLiteral("midi/autoRealign"), true},
        {Settings::PitchBend, QStringLiteral("midi/pitchBend"), true},
        {Settings::DefaultInstrument, QStringLiteral("instruments/default"), QString()},
        {Settings::FindString, QStringLiteral("findReplace/findString"), QString()},
        {Settings::ReplaceString, QStringLiteral("findReplace/replaceString"), QString()},
        {Settings::MatchWholeWords, QStringLiteral("findReplace/matchWholeWords"), false},
        {Settings::MatchWholeCase, QStringLiteral("findReplace/matchWholeCase"), false},
        {Settings::WrapAround, QStringLiteral("findReplace/wrapAround"), true},
        {Settings::SearchMode, QStringLiteral("findReplace/searchMode"), 0},
        {Settings::Direction, QStringLiteral("findReplace/direction"), 1},
        {Settings::RealignRegular, QStringLiteral("realign/regular"), 7},
        {Settings::RealignTriplets, QStringLiteral("realign/triplets"), 6},
        {Settings::RealignQuintuplets, QStringLiteral("realign/quintuplets"), 5},
        {Settings::RealignSeptuplets, QStringLiteral("realign/septuplets"), 5},
        {Settings::RealignNonuplets, QStringLiteral("realign/nonuplets"), 4},
        {Settings::PianoRollVisible, QStringLiteral("pianoroll/visible"), false},
        {Settings::PianoRollHScale, QStringLiteral("pianoroll/hScale"), 4},
        {Settings::PianoRollVScale, QStringLiteral("pianoroll/vScale"), 2},
        {Settings::DirAbcOpen, QStringLiteral("dirs/abc/open"), QString()},
        {Settings::DirAbcSave, QStringLiteral("dirs/abc/save"), QString()},
        {Settings::DirMidiOpen, QStringLiteral("dirs/midi/open"), QString()},
        {Settings::DirWavSave, QStringLiteral("dirs/wav/save"), QString()},
    };
    return rows;
}

/// Invalid when the value does not name a colour. (QVariant would make black of it, and log.)
QVariant colorFrom(const QVariant &value)
{
    const QString name = value.toString();
    return QColor::isValidColor(name) ? QVariant(QColor(name)) : QVariant();
}

/// Invalid when the way there and back does not lead to the same value.
QVariant convertedFaithfully(const QVariant &value, QVariant::Type type)
{
    QVariant there = value;
    if (value.isNull() || !there.convert(type))
        return {};
    QVariant back = there;
    return back.convert(value.userType()) && back == value ? there : QVariant();
}

QVariant converted(const QVariant &value, QVariant::Type type)
{
    if (value.type() == type)
        return value;
    return type == QVariant::Color ? colorFrom(value) : convertedFaithfully(value, type);
}

/// Whether this thread is within setValue()'s signal, and thus holds the lock.
thread_local bool isEmitting = false;

class EmissionMark {
public:
    EmissionMark() { isEmitting = true; }
    ~EmissionMark() { isEmitting = false; }
    Q_DISABLE_COPY(EmissionMark)
};

/// Takes a store whose changes cannot be written. When destroyed it would try once more, and wait
/// for a stuck lock without end; the end of the process is near anyway.
void abandon(std::unique_ptr<QSettings> store)
{
    static QSettings *abandoned = nullptr;
    abandoned = store.release();
    Q_UNUSED(abandoned)
}

} // namespace

Settings::Settings()
{
    qRegisterMetaType<Setting>("Settings::Setting");
    for (const Row &row : table()) {
        m_keys.insert(row.setting, row.key);
        m_defaults.insert(row.setting, row.defaultValue);
    }
    registerFormat();
    m_store = SettingsFile::open();
    // Changes are written from the main thread's event loop, whichever thread came first.
    if (const QCoreApplication *application = QCoreApplication::instance())
        moveToThread(application->thread());
}

// Without the lock: who calls exit() from a receiver of the signal would wait for ever.
Settings::~Settings()
{
    if (m_hasChanges)
        exchange();
    if (m_hasChanges)
        abandon(std::move(m_store));
}

void Settings::registerFormat()
{
    SettingsFile::registerFormat();
}

Settings &Settings::instance()
{
    // Destroyed after main() has returned or exit() was called, so after all windows, and with or
    // without an application object, which it needs no more by then. A routine of the
    // application's end would not be run by exit(), and would have to make a second store for
    // whoever asks later. What Qt itself keeps for settings was made before this was, and so is
    // destroyed later.
    static Settings settings;
    return settings;
}

QVariant Settings::defaultValue(Setting setting)
{
    const auto row = static_cast<size_t>(setting);
    return row < table().size() ? table()[row].defaultValue : QVariant();
}

QVariant Settings::value(Setting setting) const
{
    return value(setting, defaultValue(setting));
}

QVariant Settings::value(Setting setting, const QVariant &fallback) const
{
    const auto lock = locked();
    const QVariant stored = m_store->value(m_keys.value(setting));
    if (!stored.isValid())
        return fallback;
    const QVariant value = converted(stored, m_defaults.value(setting).type());
    return value.isValid() ? value : fallback;
}

bool Settings::contains(Setting setting) const
{
    const auto lock = locked();
    return m_store->contains(m_keys.value(setting));
}

void Settings::setValue(Setting setting, const QVariant &value)
{
    const auto lock = locked();
    const QString key = m_keys.value(setting);
    announce(setting, value);
    m_store->setValue(key, value);
    m_hasChanges = true;
    requestWrite();
}

void Settings::sync()
{
    const auto lock = locked();
    exchange();
}

std::unique_lock<std::mutex> Settings::locked() const
{
    Q_ASSERT_X(!isEmitting, Q_FUNC_INFO, "called from a receiver of settingChanged()");
    return std::unique_lock<std::mutex>(m_mutex);
}

void Settings::announce(Setting setting, const QVariant &value)
{
    const EmissionMark mark;
    emit settingChanged(setting, value);
}

void Settings::requestWrite()
{
    if (m_isWriteRequested)
        return;
    m_isWriteRequested = true;
    QCoreApplication::postEvent(this, new QEvent(QEvent::UpdateRequest));
}

bool Settings::event(QEvent *event)
{
    if (event->type() != QEvent::UpdateRequest)
        return QObject::event(event);
    writeRequested();
    return true;
}

void Settings::writeRequested()
{
    // A receiver of the signal may run an event loop of its own, such as a message box's. The
    // setValue() that waits for it asks again.
    if (isEmitting) {
        m_isWriteRequested = false;
        return;
    }
    const auto lock = locked();
    m_isWriteRequested = false;
    if (m_hasChanges)
        exchange();
}

void Settings::exchange()
{
    const bool isDone = SettingsFile::sync(*m_store, m_hasChanges);
    if (!isDone && !m_isFailing)
        MessageLog::warning("model/Settings", Q_FUNC_INFO,
                            QStringLiteral("Could not write %1. Changed settings are kept until "
                                           "the program ends, and the next change tries again")
                                .arg(m_store->fileName()));
    m_isFailing = !isDone;
    m_hasChanges = m_hasChanges && !isDone;
}

#include "model/SettingsFile.h"

#include "model/AtomicFile.h"
#include "model/MessageLog.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QStandardPaths>
#include <QThread>

#include <optional>

namespace {

constexpr int DamagedFilesKept = 99;
constexpr unsigned long PollMs = 5;

/// A lock of another host, and one that names nobody, are taken over when they are that old.
constexpr int ForeignLockMs = 30000;
constexpr int NamelessLockMs = 1000;

/// QSettings writes by itself when it gets this event from the event loop, whoever uses it on
/// another thread then.
class QuietSettings : public QSettings {
protected:
    bool event(QEvent *event) override
    {
        return event->type() == QEvent::UpdateRequest || QSettings::event(event);
    }
};

/// Keeps other processes from writing the file: the lock that QSettings takes while it writes.
///
/// QSettings waits for that lock without end, so it is tried here before. And it reads without
/// the lock, and looks up size and time of the file only after that: a file replaced in between
/// would be taken as read, and overwritten later.
class FileLock {
public:
    explicit FileLock(const QString &path)
        : m_lock(path + QStringLiteral(".lock"))
    {
        const QDeadlineTimer deadline(SettingsFile::PatienceMs);
        // Its own waiting doubles the pause each time, and so gives way to a busier process.
        while (!tryOnce() && m_lock.error() == QLockFile::LockFailedError && !deadline.hasExpired())
            QThread::msleep(PollMs);
    }

    bool isHeld() const { return m_lock.isLocked(); }
    void release() { m_lock.unlock(); }

private:
    /// A process that is killed while it makes its lock leaves an empty file, which does not tell
    /// who could be looked for.
    bool tryOnce()
    {
        qint64 processId = 0;
        QString host;
        QString program;
        const bool tellsOwner = m_lock.getLockInfo(&processId, &host, &program);
        m_lock.setStaleLockTime(tellsOwner ? ForeignLockMs : NamelessLockMs);
        return m_lock.tryLock(0);
    }

    QLockFile m_lock;
};

std::optional<QJsonObject> objectFrom(QIODevice &device)
{
    const QByteArray text = device.read(SettingsFile::MaximumBytes + 1);
    if (text.size() > SettingsFile::MaximumBytes)
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(text);
    return document.isObject() ? std::make_optional(document.object()) : std::nullopt;
}

QByteArray textOf(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Indented);
}

/// QSettings takes a file of the same size and time (in milliseconds) as one that it knows. The
/// file system's clock ticks more slowly than two processes can write.
void makeYounger(QFileDevice &file)
{
    const QFileInfo replaced(file.fileName());
    if (!replaced.exists())
        return;
    const QDateTime time =
        qMax(QDateTime::currentDateTimeUtc(), replaced.lastModified().addMSecs(1));
    file.setFileTime(time, QFileDevice::FileModificationTime);
}

/// As QSettings puts it together. It must be known before QSettings reads the file.
QString pathOfFile()
{
    const QString name = QCoreApplication::organizationName();
    const QString organization = name.isEmpty() ? QCoreApplication::organizationDomain() : name;
    return QStringLiteral("%1/%2/%3.cfg")
        .arg(QStandardPaths::writableLocation(QStandardPaths::ConfigLocation), organization,
             QCoreApplication::applicationName());
}

bool isDamaged(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.size() > 0 && !objectFrom(file);
}

QString nameForDamaged(const QString &path)
{
    QString name = path + QStringLiteral(".damaged");
    for (int i = 2; i <= DamagedFilesKept && QFileInfo::exists(name); ++i)
        name = QStringLiteral("%1.damaged-%2").arg(path).arg(i);
    return name;
}

bool writeEmpty(const QString &path)
{
    try {
        AtomicFile::write(path, textOf({}));
        return true;
    } catch (const QString &) {
        return false; // The caller tells of it.
    }
}

bool replaceDamaged(const QString &path)
{
    const QString kept = nameForDamaged(path);
    if (!QFile::rename(path, kept))
        return false;
    MessageLog::warning("model/SettingsFile", Q_FUNC_INFO,
                        QStringLiteral("The settings in %1 could not be read. All of them are at "
                                       "their defaults; the file was kept as %2")
                            .arg(path, kept));
    return writeEmpty(path);
}

/// The status of a QSettings is that of its first failure for ever. A new one shares the changes
/// of all others of the same file, writes them when it is made, and has a status of its own.
bool writeChanges(const QSettings &store)
{
    const QSettings attempt(store.format(), store.scope(), store.organizationName(),
                            store.applicationName());
    return attempt.status() == QSettings::NoError;
}

} // namespace

namespace SettingsFile {

void registerFormat()
{
    // There is room for sixteen formats only.
    static const QSettings::Format format =
        QSettings::registerFormat(QStringLiteral("cfg"), read, write, Qt::CaseSensitive);
    QSettings::setDefaultFormat(format);
    QSettings::setPath(format, QSettings::UserScope,
                       QStandardPaths::writableLocation(QStandardPaths::ConfigLocation));
}

bool read(QIODevice &device, QSettings::SettingsMap &values)
{
    values = objectFrom(device).value_or(QJsonObject()).toVariantMap();
    return true;
}

bool write(QIODevice &device, const QSettings::SettingsMap &values)
{
    if (!AtomicFile::writeWhole(device, textOf(QJsonObject::fromVariantMap(values))))
        return false;
    auto *file = qobject_cast<QFileDevice *>(&device);
    if (!file)
        return true;
    // Before its time is set: what is still to be written would change it again.
    if (!file->flush())
        return false;
    makeYounger(*file);
    return true;
}

std::unique_ptr<QSettings> open()
{
    const FileLock lock(pathOfFile());
    auto store = std::make_unique<QuietSettings>();
    store->setFallbacksEnabled(false);
    return store;
}

bool sync(QSettings &store, bool hasChanges)
{
    const QString path = store.fileName();
    if (hasChanges)
        QDir().mkpath(QFileInfo(path).path()); // The lock lies there.
    FileLock lock(path);
    const bool isSound = !isDamaged(path) || (lock.isHeld() && replaceDamaged(path));
    if (!hasChanges) {
        store.sync();
        return isSound;
    }
    if (!isSound || !lock.isHeld())
        return false;
    lock.release();
    return writeChanges(store);
}

} // namespace SettingsFile

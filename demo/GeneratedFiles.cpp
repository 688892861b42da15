#include "demo/GeneratedFiles.h"

#include "model/AtomicFile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace Demo {

namespace {

QString listName()
{
    return QStringLiteral("demo-files.json");
}

QString digest(const QByteArray &contents)
{
    const QByteArray hash = QCryptographicHash::hash(contents, QCryptographicHash::Sha256);
    return QString::fromLatin1(hash.toHex());
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw QStringLiteral("Could not read '%1': %2").arg(path, file.errorString());
    return file.readAll();
}

} // namespace

GeneratedFiles::GeneratedFiles(const QString &dir)
    : m_dir(QDir(dir).absolutePath())
{
}

void GeneratedFiles::add(const QString &path, const QByteArray &contents)
{
    m_files.insert(path, contents);
}

void GeneratedFiles::writeOrRefuse() const
{
    const QJsonObject digests = knownDigests();
    for (auto file = m_files.cbegin(); file != m_files.cend(); ++file) {
        if (stateOf(file.key(), digests) == State::Foreign)
            throw QStringLiteral("'%1' is there already and is not from the demo game, or was "
                                 "changed since. Move it away or choose another directory.")
                .arg(absolutePath(file.key()));
    }
    writeAll(digests);
}

void GeneratedFiles::writeAround() const
{
    writeAll(knownDigests());
}

void GeneratedFiles::writeAll(const QJsonObject &digests) const
{
    for (auto file = m_files.cbegin(); file != m_files.cend(); ++file) {
        const State state = stateOf(file.key(), digests);
        if (state == State::Missing || state == State::Outdated)
            write(file.key(), file.value());
    }
    write(listName(), digestList());
}

GeneratedFiles::State GeneratedFiles::stateOf(const QString &path, const QJsonObject &digests) const
{
    const QString absolute = absolutePath(path);
    if (!QFileInfo::exists(absolute))
        return State::Missing;
    if (!QFileInfo(absolute).isFile())
        return State::Foreign;
    const QByteArray present = contentsOf(absolute);
    if (present == m_files.value(path))
        return State::Same;
    return digests.value(path).toString() == digest(present) ? State::Outdated : State::Foreign;
}

QString GeneratedFiles::absolutePath(const QString &path) const
{
    return m_dir + QLatin1Char('/') + path;
}

QJsonObject GeneratedFiles::knownDigests() const
{
    QFile list(absolutePath(listName()));
    if (!list.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(list.readAll()).object();
}

QByteArray GeneratedFiles::digestList() const
{
    QJsonObject digests;
    for (auto file = m_files.cbegin(); file != m_files.cend(); ++file)
        digests.insert(file.key(), digest(file.value()));
    return QJsonDocument(digests).toJson();
}

void GeneratedFiles::write(const QString &path, const QByteArray &contents) const
{
    const QString absolute = absolutePath(path);
    const QString dir = QFileInfo(absolute).path();
    if (!QDir().mkpath(dir))
        throw QStringLiteral("Could not create the directory '%1'.").arg(dir);
    AtomicFile::write(absolute, contents);
}

} // namespace Demo

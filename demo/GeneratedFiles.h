#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QMap>
#include <QString>

namespace Demo {

/// A set of files to be written below a directory, beside what others may have put there.
///
/// A small list of digests is kept with them ("demo-files.json"), so that a later run knows its
/// own files from those that someone else wrote or has changed since.
class GeneratedFiles {
public:
    explicit GeneratedFiles(const QString &dir);

    /// `path` is relative to the directory.
    void add(const QString &path, const QByteArray &contents);

    /// Writes every file that is missing or was written by an earlier run; each appears whole or
    /// not at all. If one of the paths holds a file of somebody else, throws before anything is
    /// written. Throws a QString too when a directory or file cannot be written.
    void writeOrRefuse() const;

    /// The same, but leaves the files of others as they are.
    void writeAround() const;

private:
    enum class State { Missing, Same, Outdated, Foreign };

    State stateOf(const QString &path, const QJsonObject &digests) const;
    QString absolutePath(const QString &path) const;
    QJsonObject knownDigests() const;
    void writeAll(const QJsonObject &digests) const;
    void write(const QString &path, const QByteArray &contents) const;
    QByteArray digestList() const;

    QString m_dir;
    QMap<QString, QByteArray> m_files;
};

} // namespace Demo

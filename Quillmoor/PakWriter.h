#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

class QIODevice;

/// Writes an asset package of content type "Assets2" that PakReader and the game read.
///
/// Collects the files in memory, then lays out the tree: leaf chains, index blocks of as many
/// levels as it takes, the file table. The same files give the same bytes, whatever the order
/// they were added in.
class PakWriter {
public:
    /// `blockSize` is the size of a block in bytes, 64 to 1 MiB; a size outside is moved to the
    /// nearer end.
    explicit PakWriter(int blockSize = 2048);

    /// `path` is an absolute asset path with its leading slash. Replaces a file added before
    /// under the same path. The path "_index" is taken: the list of paths is stored there.
    void add(const QString &path, const QByteArray &contents);

    /// The whole package, for packages below 2 GiB. Throws a QString when it does not fit.
    QByteArray toBytes() const;

    /// Writes the package to `fileName`, replacing a file there only when all is written.
    /// Throws a QString with the reason when that fails.
    void save(const QString &fileName) const;

private:
    void write(QIODevice &device) const;
    QByteArray fileTable() const;
    QMap<QByteArray, QByteArray> valuesByKey() const;

    int m_blockSize;
    QMap<QString, QByteArray> m_files;
};

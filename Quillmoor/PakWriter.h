#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

/// Writes an asset package of content type "Assets2" that PakReader and the game read.
///
/// Collects the files in memory, then lays out the tree: leaf chains, index blocks of as many
/// levels as it takes, the file table. The same files give the same bytes, whatever the order
/// they were added in.
class PakWriter {
public:
    /// `blockSize` is the size of a block in bytes, 64 or more (the smallest that holds an index
    /// block with one key is 50).
    explicit PakWriter(int blockSize = 2048);

    /// `path` is an absolute asset path with its leading slash. Replaces a file added before
    /// under the same path.
    void add(const QString &path, const QByteArray &contents);

    /// The whole package.
    QByteArray toBytes() const;

    /// Writes the package to `fileName`, replacing a file there only when all is written.
    /// Throws a QString with the reason when that fails.
    void save(const QString &fileName) const;

private:
    int m_blockSize;
    QMap<QString, QByteArray> m_files;
};

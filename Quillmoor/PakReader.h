#pragma once

#include <QByteArray>
#include <QFile>
#include <QStringList>

/// Reads files out of one of the game's asset packages (`.pak`, `.modpak`).
///
/// Nothing is kept in memory but the header: each lookup walks the tree in the file, costs a
/// read per level and a scan of one leaf, and holds no more than the bytes that it answers.
/// Every failure is thrown as a QString. A package may be larger than 2 GiB; a single file in it
/// may not. One thread at a time uses a reader.
///
/// A damaged package ends in one of the messages in time linear in its size. Where the file ends
/// early, a header of less than 75 bytes is "Invalid Block File Header.", a block without a tag
/// is treated as one with an unknown tag, and all else is "Premature end of leaf block". A block
/// index outside the file, or one that makes a lookup visit more blocks than the file has,
/// counts as a failed seek. A negative count is a count of 0.
class PakReader : public QFile {
public:
    enum ContentType { Assets1 = 0, Assets2 = 1 };

    /// Opens nothing yet.
    explicit PakReader(const QString &path);

    /// Opens the package read-only and checks its header. After a throw the reader is closed and
    /// the next call tries again; does nothing when already open. A header size below 0 or a
    /// block size too small to hold anything (below 10) is "Invalid Block File Header.", found
    /// after all other checks.
    void open();
    /// The same with an answer instead of a throw; false for any mode but reading. The message is
    /// the errorString().
    bool open(OpenMode mode) override;

    // The lookups open the package first when that has not been done. Paths are absolute asset
    // paths, taken exactly as spelt.

    bool hasFile(const QString &path);
    /// Throws "File not found" for a path that the package does not hold.
    QByteArray getFile(const QString &path);
    /// As getFile(), but a failure is logged as a warning and answered with false; `out` is
    /// replaced only on success.
    bool tryGetFile(const QString &path, QByteArray &out);
    /// All paths, in stored order. Throws "File table not found" for a package without a list.
    QStringList fileList();

    // From the header; 0, false and Assets1 until it was accepted. Sizes are in bytes.
    qint32 headerSize() const { return m_header.headerSize; }
    qint32 blockSize() const { return m_header.blockSize; }
    qint32 keySize() const { return m_header.keySize; }
    qint32 rootBlock() const { return m_header.rootBlock; }
    bool rootIsLeaf() const { return m_header.rootIsLeaf; }
    ContentType contentType() const { return m_header.contentType; }

private:
    struct Header {
        qint32 headerSize = 0;
        qint32 blockSize = 0;
        qint32 keySize = 0;
        qint32 rootBlock = 0;
        bool rootIsLeaf = false;
        ContentType contentType = Assets1;
    };

    static Header parseHeader(const QByteArray &bytes);
    void openFile();

    Header m_header;
};

#include "model/AtomicFile.h"

#include "support/SizeLimit.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString messageOf(const QString &path, const QByteArray &bytes)
{
    try {
        AtomicFile::write(path, bytes);
        return {};
    } catch (const QString &message) {
        return message;
    }
}

} // namespace

class TestAtomicFile : public QObject {
    Q_OBJECT

private slots:
    void init() { m_dir.reset(new QTemporaryDir); }

    void createsAFile()
    {
        AtomicFile::write(path(), "new");
        QCOMPARE(contentsOf(path()), QByteArray("new"));
    }

    void replacesAFile()
    {
        AtomicFile::write(path(), "much longer than the other");
        AtomicFile::write(path(), "new");
        QCOMPARE(contentsOf(path()), QByteArray("new"));
    }

    void keepsTheOlderFileWhenTheDiskIsFull()
    {
        AtomicFile::write(path(), "older");
        const SizeLimit limit(1000);
        QCOMPARE(messageOf(path(), QByteArray(2000, 'x')),
                 QStringLiteral("Could not write %1: File too large").arg(path()));
        QCOMPARE(contentsOf(path()), QByteArray("older"));
        QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files).size(), 1);
    }

    void tellsWhyAFileCannotBeMade()
    {
        const QString missing = m_dir->filePath(QStringLiteral("none/file"));
        QCOMPARE(messageOf(missing, "x"),
                 QStringLiteral("Could not write %1: No such file or directory").arg(missing));
    }

private:
    QString path() const { return m_dir->filePath(QStringLiteral("file")); }

    QScopedPointer<QTemporaryDir> m_dir;
};

QTEST_GUILESS_MAIN(TestAtomicFile)
#include "tst_AtomicFile.moc"

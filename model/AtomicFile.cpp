#include "model/AtomicFile.h"

#include <QSaveFile>

void AtomicFile::write(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || !writeWhole(file, bytes)
        || !file.commit())
        throw QStringLiteral("Could not write %1: %2").arg(path, file.errorString());
}

bool AtomicFile::writeWhole(QIODevice &device, const QByteArray &bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const qint64 written = device.write(bytes.constData() + done, bytes.size() - done);
        if (written <= 0)
            return false;
        done += written;
    }
    return true;
}

#include "Quillmoor/JsonFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

const QRegularExpression &lineComment()
{
    static const QRegularExpression expression(QStringLiteral("\\/\\/.*$"),
                                               QRegularExpression::MultilineOption);
    return expression;
}

QString withoutComments(const QByteArray &bytes)
{
    const auto length = qstrnlen(bytes.constData(), static_cast<uint>(bytes.size()));
    QString text = QString::fromLatin1(bytes.constData(), static_cast<int>(length));
    text.remove(lineComment());
    return text;
}

} // namespace

QJsonDocument JsonFile::read(const QString &path, QJsonParseError *error)
{
    if (error != nullptr)
        *error = {};
    QFile file(path);
    // A pipe would block, and a device may never end.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    return parse(file.readAll(), error);
}

QJsonDocument JsonFile::parse(const QByteArray &bytes, QJsonParseError *error)
{
    return QJsonDocument::fromJson(withoutComments(bytes).toUtf8(), error);
}

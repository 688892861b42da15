#include "model/FileNameCodec.h"

#include <QTextCodec>

namespace {

constexpr ushort EscapeBase = 0xDC00; // the byte 0x80 becomes U+DC80

bool isEscape(ushort unit)
{
    return unit >= EscapeBase + 0x80 && unit <= EscapeBase + 0xFF;
}

bool isContinuation(uchar byte)
{
    return (byte & 0xC0) == 0x80;
}

/// The length of the well-formed UTF-8 sequence at `bytes` (RFC 3629), or 0.
int sequenceLength(const uchar *bytes, int available)
{
    const uchar lead = bytes[0];
    const int length = lead < 0x80     ? 1
        : lead >= 0xC2 && lead <= 0xDF ? 2
        : (lead & 0xF0) == 0xE0        ? 3
        : lead >= 0xF0 && lead <= 0xF4 ? 4
                                       : 0;
    if (length == 0 || length > available)
        return 0;
    for (int i = 1; i < length; ++i) {
        if (!isContinuation(bytes[i]))
            return 0;
    }
    const bool overlong = (lead == 0xE0 && bytes[1] < 0xA0) || (lead == 0xF0 && bytes[1] < 0x90);
    const bool surrogate = lead == 0xED && bytes[1] > 0x9F;
    const bool beyond = lead == 0xF4 && bytes[1] > 0x8F;
    return overlong || surrogate || beyond ? 0 : length;
}

/// Appends the character of a well-formed sequence. QString::fromUtf8() would take U+FEFF for a
/// byte order mark and drop it.
void appendSequence(QString &text, const uchar *bytes, int length)
{
    uint character = length == 1 ? bytes[0] : bytes[0] & (0x7FU >> length);
    for (int i = 1; i < length; ++i)
        character = character << 6 | (bytes[i] & 0x3FU);
    if (QChar::requiresSurrogates(character)) {
        text.append(QChar(QChar::highSurrogate(character)));
        text.append(QChar(QChar::lowSurrogate(character)));
    } else {
        text.append(QChar(static_cast<ushort>(character)));
    }
}

/// QTextCodec registers itself with Qt, which deletes it at exit.
class Codec : public QTextCodec {
public:
    QByteArray name() const override { return QByteArrayLiteral("UTF-8-file-names"); }
    int mibEnum() const override { return -20613; }

protected:
    QString convertToUnicode(const char *chars, int length, ConverterState *) const override
    {
        return FileNameCodec::decode(QByteArray::fromRawData(chars, length));
    }

    QByteArray convertFromUnicode(const QChar *chars, int length, ConverterState *) const override
    {
        return FileNameCodec::encode(QString::fromRawData(chars, length));
    }
};

} // namespace

void FileNameCodec::install()
{
    static Codec *const codec = new Codec;
    QTextCodec::setCodecForLocale(codec);
}

QString FileNameCodec::decode(const QByteArray &bytes)
{
    const uchar *const data = reinterpret_cast<const uchar *>(bytes.constData());
    QString text;
    text.reserve(bytes.size());
    int pos = 0;
    while (pos < bytes.size()) {
        const int length = sequenceLength(data + pos, bytes.size() - pos);
        if (length == 0) {
            text.append(QChar(static_cast<ushort>(EscapeBase + data[pos])));
            ++pos;
        } else {
            appendSequence(text, data + pos, length);
            pos += length;
        }
    }
    return text;
}

QByteArray FileNameCodec::encode(const QString &text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (isEscape(c.unicode())) {
            bytes.append(static_cast<char>(c.unicode() - EscapeBase));
        } else if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            bytes.append(text.mid(i, 2).toUtf8());
            ++i;
        } else {
            bytes.append(QString(c).toUtf8());
        }
    }
    return bytes;
}

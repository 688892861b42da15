#pragma once

#include <QByteArray>
#include <QString>

/// Writes one JSON value as text on one line, members in the order they are given.
///
/// Integers are exact in all 64 bits. A floating-point number is the shortest that reads back as
/// the same value of its type, always with a decimal point or an exponent ("1.0"); one that is
/// not finite becomes null. The text is valid UTF-8 whatever goes in: half a surrogate pair,
/// which is how a file name's stray byte travels (see FileNameCodec), becomes an escape such as
/// "\udc80".
class JsonWriter {
public:
    JsonWriter &beginObject();
    JsonWriter &endObject();
    JsonWriter &beginArray();
    JsonWriter &endArray();

    /// Inside an object, before each value.
    JsonWriter &key(const QString &name);
    JsonWriter &key(const char *name) { return key(QString::fromLatin1(name)); }

    JsonWriter &value(const QString &text);
    JsonWriter &value(bool flag);
    JsonWriter &value(int number) { return value(qint64{number}); }
    JsonWriter &value(quint32 number) { return value(quint64{number}); }
    JsonWriter &value(qint64 number);
    JsonWriter &value(quint64 number);
    JsonWriter &value(float number);
    JsonWriter &value(double number);
    JsonWriter &value(const char *) = delete; // would be taken for a bool

    template <typename T> JsonWriter &member(const char *name, const T &content)
    {
        return key(name).value(content);
    }

    const QByteArray &text() const { return m_text; }

private:
    JsonWriter &begin(char bracket);
    JsonWriter &end(char bracket);
    JsonWriter &append(const QByteArray &token);
    void separate();

    QByteArray m_text;
    bool m_needsComma = false;
};

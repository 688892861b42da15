#include "cli/JsonWriter.h"

#include <array>
#include <charconv>
#include <cmath>

namespace {

QByteArray escapedUnit(ushort unit)
{
    return "\\u" + QByteArray::number(unit, 16).rightJustified(4, '0');
}

QByteArray escapedControl(ushort unit)
{
    switch (unit) {
    case '"':
        return QByteArrayLiteral("\\\"");
    case '\\':
        return QByteArrayLiteral("\\\\");
    case '\b':
        return QByteArrayLiteral("\\b");
    case '\f':
        return QByteArrayLiteral("\\f");
    case '\n':
        return QByteArrayLiteral("\\n");
    case '\r':
        return QByteArrayLiteral("\\r");
    case '\t':
        return QByteArrayLiteral("\\t");
    default:
        return escapedUnit(unit);
    }
}

bool needsEscape(QChar c)
{
    return c.unicode() < 0x20 || c == QLatin1Char('"') || c == QLatin1Char('\\');
}

bool isPair(const QString &text, int index)
{
    return text.at(index).isHighSurrogate() && index + 1 < text.size()
        && text.at(index + 1).isLowSurrogate();
}

/// The number of UTF-16 units from `begin` on that stand in JSON as they are.
int plainLength(const QString &text, int begin)
{
    int end = begin;
    while (end < text.size() && !needsEscape(text.at(end))) {
        if (isPair(text, end))
            ++end;
        else if (text.at(end).isSurrogate())
            break;
        ++end;
    }
    return end - begin;
}

QByteArray quoted(const QString &text)
{
    QByteArray result(1, '"');
    for (int pos = 0; pos < text.size();) {
        const int length = plainLength(text, pos);
        result += text.midRef(pos, length).toUtf8();
        pos += length;
        if (pos < text.size())
            result += escapedControl(text.at(pos++).unicode());
    }
    return result + '"';
}

template <typename Float> QByteArray shortest(Float number)
{
    if (!std::isfinite(number))
        return QByteArrayLiteral("null");
    std::array<char, 32> buffer;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    const QByteArray digits(buffer.data(), static_cast<int>(result.ptr - buffer.data()));
    return digits.contains('.') || digits.contains('e') ? digits : digits + ".0";
}

} // namespace

JsonWriter &JsonWriter::beginObject()
{
    return begin('{');
}

JsonWriter &JsonWriter::endObject()
{
    return end('}');
}

JsonWriter &JsonWriter::beginArray()
{
    return begin('[');
}

JsonWriter &JsonWriter::endArray()
{
    return end(']');
}

JsonWriter &JsonWriter::key(const QString &name)
{
    separate();
    m_text += quoted(name);
    m_text += ':';
    m_needsComma = false;
    return *this;
}

JsonWriter &JsonWriter::value(const QString &text)
{
    return append(quoted(text));
}

JsonWriter &JsonWriter::value(bool flag)
{
    return append(flag ? QByteArrayLiteral("true") : QByteArrayLiteral("false"));
}

JsonWriter &JsonWriter::value(qint64 number)
{
    return append(QByteArray::number(number));
}

JsonWriter &JsonWriter::value(quint64 number)
{
    return append(QByteArray::number(number));
}

JsonWriter &JsonWriter::value(float number)
{
    return append(shortest(number));
}

JsonWriter &JsonWriter::value(double number)
{
    return append(shortest(number));
}

JsonWriter &JsonWriter::begin(char bracket)
{
    separate();
    m_text += bracket;
    m_needsComma = false;
    return *this;
}

JsonWriter &JsonWriter::end(char bracket)
{
    m_text += bracket;
    m_needsComma = true;
    return *this;
}

JsonWriter &JsonWriter::append(const QByteArray &token)
{
    separate();
    m_text += token;
    m_needsComma = true;
    return *this;
}

void JsonWriter::separate()
{
    if (m_needsComma)
        m_text += ',';
}

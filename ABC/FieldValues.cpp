#include "ABC/FieldValues.h"

#include "ABC/Expression.h"
#include "ABC/KeyTable.h"

#include <limits>

namespace {

/// An expression, with the numbers of the groups that it may have.
struct FieldExpression {
    explicit FieldExpression(const char *pattern, quint32 options = Expression::NoOption)
        : expression(pattern, options)
        , num(expression.group("num"))
        , den(expression.group("den"))
        , bpm(expression.group("bpm"))
        , tonic(expression.group("tonic"))
        , mode(expression.group("mode"))
    {
    }

    Expression expression;
    int num;
    int den;
    int bpm;
    int tonic;
    int mode;
};

const FieldExpression KeyExpression(
    R"((?<tonic>[a-z](?:\#|b)?)\s*)"
    R"((?<mode>(?:maj)|(?:min)|(?:ion)|(?:aeo)|(?:mix)|(?:dor)|(?:phr)|(?:lyd)|(?:loc)|m)?)",
    Expression::CaseInsensitive);

const FieldExpression GeneratorKeyExpression(
    R"((?<tonic>[a-z](?:\#|b)?)\s*)"
    R"((?<mode>m|(?:maj)|(?:min)|(?:ion)|(?:aeo)|(?:mix)|(?:dor)|(?:phr)|(?:lyd)|(?:loc))?)",
    Expression::CaseInsensitive | Expression::Anchored);

const FieldExpression UnitLengthExpression(R"((?<num>\d+)(?:/(?<den>\d+))?)");

const FieldExpression TempoExpression(R"(((?<num>\d+)(?:/(?<den>\d+))\=)?(?<bpm>\d+))");

const FieldExpression MeterExpression(R"((?<num>\d+)(?:/(?<den>\d+))?)",
                                      Expression::CaseInsensitive);

FieldValues::Key readKey(const FieldExpression &field, const QString &value)
{
    FieldValues::Key key;
    Expression::Match match;
    if (!field.expression.match(value, match)) {
        key.problem = FieldValues::Key::NoKey;
        return key;
    }
    key.tonic = match.captured(field.tonic).toString().toUpper();
    key.modeName = match.captured(field.mode).toString().toUpper();
    const quint32 mode = KeyTable::mode(key.modeName);
    if (const auto row = KeyTable::row(key.tonic, mode)) {
        key.row = *row;
        key.mode = mode;
    } else {
        key.problem = FieldValues::Key::InvalidTonic;
    }
    return key;
}

FieldValues::Meter makeMeter(quint32 num, quint32 den)
{
    const quint64 ticks = Ticks::ofFraction(num, den);
    // Tracks hold a measure in 32 bits: it must not become 0 there either.
    if (static_cast<quint32>(ticks) == 0)
        return {};
    return {num, den, ticks};
}

} // namespace

quint32 FieldValues::number(QStringView digits)
{
    quint64 value = 0;
    for (const QChar digit : digits) {
        value = value * 10 + (digit.unicode() - '0');
        if (value > std::numeric_limits<quint32>::max())
            return 0;
    }
    return static_cast<quint32>(value);
}

quint32 FieldValues::unitTicks(quint32 num, quint32 den)
{
    const auto ticks = static_cast<quint32>(Ticks::ofFraction(num, den));
    return ticks == 0 ? DefaultUnitTicks : ticks;
}

FieldValues::UnitLength FieldValues::unitLength(const QString &value)
{
    Expression::Match match;
    if (!UnitLengthExpression.expression.match(value, match))
        return {};
    const quint32 num = number(match.captured(UnitLengthExpression.num));
    const QStringView denDigits = match.captured(UnitLengthExpression.den);
    const quint32 den = denDigits.isEmpty() ? 1 : number(denDigits);
    if (static_cast<quint32>(Ticks::ofFraction(num, den)) == 0)
        return {};
    return {num, den, unitTicks(num, den)};
}

FieldValues::Meter FieldValues::meter(const QString &value)
{
    const QString text = value.toLower();
    if (text == QLatin1String("c"))
        return makeMeter(4, 4);
    if (text == QLatin1String("c|"))
        return makeMeter(2, 4);
    Expression::Match match;
    if (!MeterExpression.expression.match(text, match))
        return {};
    return makeMeter(number(match.captured(MeterExpression.num)),
                     number(match.captured(MeterExpression.den)));
}

FieldValues::Tempo FieldValues::tempo(const QString &value)
{
    Expression::Match match;
    if (!TempoExpression.expression.match(value, match))
        return {};
    const quint32 num = number(match.captured(TempoExpression.num));
    const quint32 den = number(match.captured(TempoExpression.den));
    const quint32 bpm = number(match.captured(TempoExpression.bpm));
    if (num == 0 || den == 0)
        return {0, 0, bpm};
    return {num, den, bpm};
}

FieldValues::Key FieldValues::key(const QString &value)
{
    return readKey(KeyExpression, value);
}

FieldValues::Key FieldValues::keyForGenerator(const QString &value)
{
    return readKey(GeneratorKeyExpression, value);
}

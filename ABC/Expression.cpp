#include "ABC/Expression.h"

#include <QString>

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

namespace {

// More pairs than any of our expressions has groups.
constexpr quint32 MatchPairs = 16;

quint32 compileOptions(quint32 options)
{
    quint32 flags = PCRE2_EXTENDED | PCRE2_NO_AUTO_CAPTURE;
    if (options & Expression::CaseInsensitive)
        flags |= PCRE2_CASELESS;
    if (options & Expression::Anchored)
        flags |= PCRE2_ANCHORED;
    if (options & Expression::UnicodeSpaces)
        flags |= PCRE2_UCP;
    return flags;
}

PCRE2_SPTR16 units(QStringView text)
{
    return reinterpret_cast<PCRE2_SPTR16>(text.utf16());
}

pcre2_code_16 *compile(const QString &pattern, quint32 options)
{
    // Whatever the library was built with, only a line feed ends a line.
    pcre2_compile_context_16 *const context = pcre2_compile_context_create_16(nullptr);
    pcre2_set_newline_16(context, PCRE2_NEWLINE_LF);
    int error = 0;
    PCRE2_SIZE offset = 0;
    pcre2_code_16 *const code =
        pcre2_compile_16(units(pattern), static_cast<PCRE2_SIZE>(pattern.size()),
                         compileOptions(options), &error, &offset, context);
    pcre2_compile_context_free_16(context);
    return code;
}

} // namespace

Expression::Match::Match()
    : m_data(pcre2_match_data_create_16(MatchPairs, nullptr))
{
    Q_CHECK_PTR(m_data.get());
}

void Expression::Match::Free::operator()(pcre2_match_data_16 *data) const
{
    pcre2_match_data_free_16(data);
}

int Expression::Match::length() const
{
    const PCRE2_SIZE *const pairs = pcre2_get_ovector_pointer_16(m_data.get());
    return static_cast<int>(pairs[1] - pairs[0]);
}

QStringView Expression::Match::captured(int group) const
{
    if (group == 0)
        return {};
    const PCRE2_SIZE *const pair = pcre2_get_ovector_pointer_16(m_data.get()) + qptrdiff{2} * group;
    if (pair[0] == PCRE2_UNSET)
        return {};
    return m_subject.mid(static_cast<int>(pair[0]), static_cast<int>(pair[1] - pair[0]));
}

Expression::Expression(const char *pattern, quint32 options)
    : m_code(compile(QString::fromLatin1(pattern), options))
{
    Q_ASSERT(m_code);
    m_isMachineCode = pcre2_jit_compile_16(m_code.get(), PCRE2_JIT_COMPLETE) == 0;
}

void Expression::Free::operator()(pcre2_code_16 *code) const
{
    pcre2_code_free_16(code);
}

int Expression::group(const char *name) const
{
    const QString text = QString::fromLatin1(name);
    return std::max(0, pcre2_substring_number_from_name_16(m_code.get(), units(text)));
}

bool Expression::match(QStringView subject, Match &match) const
{
    const int result = run(subject, match.m_data.get());
    if (result == PCRE2_ERROR_NOMATCH)
        return false;
    if (result < 0)
        throw QStringLiteral("Internal error, could not match any regex.");
    match.m_subject = subject;
    return true;
}

int Expression::run(QStringView subject, pcre2_match_data_16 *data) const
{
    const auto length = static_cast<PCRE2_SIZE>(subject.size());
    if (m_isMachineCode) {
        const int result =
            pcre2_jit_match_16(m_code.get(), units(subject), length, 0, 0, data, nullptr);
        if (result >= 0 || result == PCRE2_ERROR_NOMATCH)
            return result;
    }
    // Also when the machine code ran out of its small stack.
    return pcre2_match_16(m_code.get(), units(subject), length, 0, PCRE2_NO_JIT, data, nullptr);
}

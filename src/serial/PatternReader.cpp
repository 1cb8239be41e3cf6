#include "serial/PatternReader.h"

#include <algorithm>
#include <optional>

namespace vorn {

namespace {

// How many atoms are read, each repetition counted: more would make steps slow, or reading endless.
constexpr int MostAtoms = 2048;
constexpr int Unlimited = -1;
// A repetition that may go on for longer than this counts as one without a limit: to keep all the
// counts apart takes more time than it saves.
constexpr int MostOptional = 8;

bool isAsciiLetter(QChar c)
{
    return c.unicode() < 128 && c.isLetter();
}

} // namespace

std::shared_ptr<const PatternAutomaton> PatternReader::read(const QRegularExpression &expression)
{
    PatternReader reader(expression);
    reader.leadingOptions();
    const Part whole = reader.alternatives();
    // A choice that is kept for good, made by what comes next, may be another one a character
    // earlier: then the walks of both would have to be told apart.
    const bool isUnclear = reader.m_keepsChoices && reader.m_looksAhead;
    if (reader.m_gaveUp || !reader.atEnd() || isUnclear || whole.mayBeEmpty ||
        reader.m_automaton.isTooLarge())
        return nullptr;
    reader.m_automaton.finish(whole);
    return std::make_shared<const PatternAutomaton>(std::move(reader.m_automaton));
}

PatternReader::PatternReader(const QRegularExpression &expression)
    : m_pattern(expression.pattern()), m_options(expression.patternOptions())
{
}

PatternReader::Part PatternReader::giveUp()
{
    m_gaveUp = true;
    m_at = m_pattern.size();
    return {};
}

bool PatternReader::take(QStringView text)
{
    const bool is = isNext(text);
    if (is)
        m_at += text.size();
    return is;
}

// "(?i)" and the like in front of all else.
void PatternReader::leadingOptions()
{
    static const QRegularExpression inlineOptions(QStringLiteral("^\\(\\?([ims]+)\\)"));
    const auto match = inlineOptions.match(m_pattern);
    m_at += match.capturedLength();
    const QString letters = match.captured(1);
    if (letters.contains(u'i'))
        m_options |= QRegularExpression::CaseInsensitiveOption;
    if (letters.contains(u'm'))
        m_options |= QRegularExpression::MultilineOption;
    if (letters.contains(u's'))
        m_options |= QRegularExpression::DotMatchesEverythingOption;
    if (m_options.testFlag(QRegularExpression::ExtendedPatternSyntaxOption))
        giveUp();
}

PatternReader::Part PatternReader::alternatives()
{
    Part all = sequence();
    while (take(u"|"))
        all = PatternAutomaton::either(std::move(all), sequence());
    return all;
}

PatternReader::Part PatternReader::sequence()
{
    Part all;
    while (!atEnd() && !isNext(u"|") && !isNext(u")"))
        all = m_automaton.sequence(std::move(all), quantified());
    return all;
}

PatternReader::Part PatternReader::quantified()
{
    const qsizetype begin = m_at;
    std::optional<Part> read = atom();
    const auto [least, most] = quantifier();
    const qsizetype end = m_at;
    // The places of a repeated atom are made anew each time, by reading it again.
    const auto once = [&] {
        if (read)
            return *std::exchange(read, std::nullopt);
        m_at = begin;
        return atom();
    };

    Part rest;
    int required = least;
    if (most == Unlimited && least == 0) {
        rest = PatternAutomaton::optional(m_automaton.repeated(once()));
    } else if (most == Unlimited) {
        rest = m_automaton.repeated(once());
        --required;
    }
    for (int i = least; i < most && !m_gaveUp; ++i)
        rest = PatternAutomaton::optional(m_automaton.sequence(once(), rest));
    for (int i = 0; i < required && !m_gaveUp; ++i)
        rest = m_automaton.sequence(once(), rest);
    if (!m_gaveUp)
        m_at = end;
    return rest;
}

// Least and most number of times, once without a quantifier.
std::pair<int, int> PatternReader::quantifier()
{
    std::pair<int, int> times(1, 1);
    if (take(u"*")) {
        times = {0, Unlimited};
    } else if (take(u"+")) {
        times = {1, Unlimited};
    } else if (take(u"?")) {
        times = {0, 1};
    } else if (isNext(u"{")) {
        static const QRegularExpression counts(QStringLiteral("\\{(\\d{1,5})(,?)(\\d{0,5})\\}"));
        const auto match = counts.match(m_pattern, m_at, QRegularExpression::NormalMatch,
                                        QRegularExpression::AnchorAtOffsetMatchOption);
        if (!match.hasMatch()) {
            giveUp();
            return times;
        }
        m_at = match.capturedEnd();
        times.first = match.captured(1).toInt();
        if (match.capturedLength(2) == 0)
            times.second = times.first;
        else
            times.second = match.capturedLength(3) == 0 ? Unlimited : match.captured(3).toInt();
    } else {
        return times;
    }
    if (times.second > times.first + MostOptional)
        times.second = Unlimited;
    // Trying few times first or many does not change what can be matched; never going back does.
    if (!take(u"?") && take(u"+"))
        m_keepsChoices = true;
    return times;
}

PatternReader::Part PatternReader::atom()
{
    if (atEnd() || ++m_atoms > MostAtoms)
        return giveUp();
    const qsizetype begin = m_at;
    const QChar c = m_pattern[m_at++];
    switch (c.unicode()) {
    case u'(':
        return group();
    case u'[':
        return characterClass(begin);
    case u'\\':
        return escape(begin);
    case u'.':
        return askEngine(begin);
    case u'^':
        // Behind a line's end, it is met only if there is something more.
        return m_options.testFlag(QRegularExpression::MultilineOption)
                   ? nextCharacterIfAny(Characters().set())
                   : Part();
    case u'$':
        return nextCharacterIfAny(Characters().set('\n'));
    case u'*':
    case u'+':
    case u'?':
    case u'{':
        return giveUp();
    default:
        if (c.isHighSurrogate())
            ++m_at;
        return c.unicode() < 128 ? literal(c) : askEngine(begin);
    }
}

PatternReader::Part PatternReader::group()
{
    static const QRegularExpression name(QStringLiteral("\\?(?:P?<\\w+>|'\\w+')"));
    const auto match = name.match(m_pattern, m_at, QRegularExpression::NormalMatch,
                                  QRegularExpression::AnchorAtOffsetMatchOption);
    if (match.hasMatch())
        m_at = match.capturedEnd();
    else if (take(u"?>"))
        m_keepsChoices = true;
    else if (!take(u"?:") && (isNext(u"?") || isNext(u"*")))
        return giveUp();
    Part part = alternatives();
    return take(u")") ? part : giveUp();
}

PatternReader::Part PatternReader::characterClass(qsizetype begin)
{
    static const QRegularExpression rest(
        QStringLiteral(R"(\^?\]?(?:[^\]\[\\]|\\[^QEc]|\[:\^?[a-z]+:\]|\[(?![:.=]))*\])"));
    const auto match = rest.match(m_pattern, m_at, QRegularExpression::NormalMatch,
                                  QRegularExpression::AnchorAtOffsetMatchOption);
    if (!match.hasMatch())
        return giveUp();
    m_at = match.capturedEnd();
    return askEngine(begin);
}

PatternReader::Part PatternReader::escape(qsizetype begin)
{
    const QChar c = atEnd() ? QChar() : m_pattern[m_at++];
    switch (c.unicode()) {
    case u'A':
    case u'G':
    case u'z':
        return {};
    case u'Z':
        return nextCharacterIfAny(Characters().set('\n'));
    case u'b':
    case u'B':
        return nextCharacterIfAny(Characters().set());
    case u'R':
        return m_automaton.sequence(askEngine(begin), PatternAutomaton::optional(m_automaton.place(
                                                          Characters().set('\n'))));
    case u'x':
        return hexadecimal(begin);
    default:
        break;
    }
    if (QStringView(u"dDwWsShHvVNnrtfae").contains(c) && !(c == u'N' && isNext(u"{")))
        return askEngine(begin);
    const bool isLiteral = c.isPrint() && c.unicode() < 128 && !c.isLetterOrNumber();
    return isLiteral ? literal(c) : giveUp();
}

PatternReader::Part PatternReader::hexadecimal(qsizetype begin)
{
    static const QRegularExpression digits(
        QStringLiteral("\\{([0-9A-Fa-f]{1,6})\\}|([0-9A-Fa-f]{1,2})"));
    const auto match = digits.match(m_pattern, m_at, QRegularExpression::NormalMatch,
                                    QRegularExpression::AnchorAtOffsetMatchOption);
    if (!match.hasMatch())
        return giveUp();
    m_at = match.capturedEnd();
    const uint code = match.captured(match.lastCapturedIndex()).toUInt(nullptr, 16);
    return code < 128 ? literal(QChar(code)) : askEngine(begin);
}

PatternReader::Part PatternReader::literal(QChar character)
{
    Characters characters;
    if (ignoresCase() && isAsciiLetter(character)) {
        characters.set(character.toLower().unicode());
        characters.set(character.toUpper().unicode());
        characters.set(PatternAutomaton::OtherCharacter); // the Kelvin sign is a k, too
    } else {
        characters.set(character.unicode());
    }
    return m_automaton.place(characters);
}

PatternReader::Part PatternReader::nextCharacterIfAny(const Characters &characters)
{
    m_looksAhead = true;
    return PatternAutomaton::optional(m_automaton.place(characters));
}

// The pattern from the given place to here, which takes one character.
PatternReader::Part PatternReader::askEngine(qsizetype begin)
{
    const QString atom = m_pattern.sliced(begin, m_at - begin);
    auto known = m_known.constFind(atom);
    if (known == m_known.constEnd()) {
        const QRegularExpression expression(atom, m_options);
        if (!expression.isValid())
            return giveUp();
        known = m_known.insert(atom, charactersTakenBy(expression));
    }
    return m_automaton.place(*known);
}

PatternReader::Characters PatternReader::charactersTakenBy(const QRegularExpression &atom) const
{
    Characters taken;
    for (char16_t c = 0; c < PatternAutomaton::OtherCharacter; ++c)
        taken[c] = atom.match(QString(QChar(c))).hasMatch();
    taken[PatternAutomaton::OtherCharacter] = mayTakeOthers(atom.pattern());
    return taken;
}

// True unless the atom certainly takes ASCII characters only.
bool PatternReader::mayTakeOthers(const QString &atom) const
{
    if (ignoresCase() || m_options.testFlag(QRegularExpression::UseUnicodePropertiesOption))
        return true;
    static const QRegularExpression asciiOnly(QStringLiteral(
        R"((?:\\[dwsnrtfae]|\[(?!\^)(?:[!-Z^-~ ]|\\[dwsnrtfae]|\\[!-/:-@[-`{-~])*\])\z)"));
    return !asciiOnly
                .match(atom, 0, QRegularExpression::NormalMatch,
                       QRegularExpression::AnchorAtOffsetMatchOption)
                .hasMatch();
}

} // namespace vorn

#pragma once

#include "serial/PatternAutomaton.h"

#include <QHash>
#include <QRegularExpression>
#include <QString>
#include <QStringView>

#include <memory>
#include <utility>

namespace vorn {

// Reads a regular expression's pattern into an automaton that walks every text the expression
// matches, and maybe more: what the automaton rules out need not be given to the expression.
//
// To be precise, for a text that grows character by character: when the expression matches at the
// text's start for the first time, the automaton's walk from there ends with that character. So an
// assertion about what comes next (\b, $) stands for that character, if it comes.
class PatternReader
{
public:
    // Null when the expression may match without taking a character, or has something in it that is
    // not known here (look-around, references, options inside, ...).
    static std::shared_ptr<const PatternAutomaton> read(const QRegularExpression &expression);

private:
    using Part = PatternAutomaton::Part;
    using Characters = PatternAutomaton::Characters;

    explicit PatternReader(const QRegularExpression &expression);
    // The rest of the pattern counts as read; what is returned from here on does not matter.
    Part giveUp();

    void leadingOptions();
    Part alternatives();
    Part sequence();
    Part quantified();
    std::pair<int, int> quantifier();
    Part atom();
    Part group();
    Part characterClass(qsizetype begin);
    Part escape(qsizetype begin);
    Part hexadecimal(qsizetype begin);
    Part literal(QChar character);
    Part nextCharacterIfAny(const Characters &characters);
    Part askEngine(qsizetype begin);
    Characters charactersTakenBy(const QRegularExpression &atom) const;
    bool mayTakeOthers(const QString &atom) const;

    bool ignoresCase() const
    {
        return m_options.testFlag(QRegularExpression::CaseInsensitiveOption);
    }
    bool atEnd() const { return m_at >= m_pattern.size(); }
    bool isNext(QStringView text) const
    {
        return QStringView(m_pattern).sliced(m_at).startsWith(text);
    }
    bool take(QStringView text);

    const QString m_pattern;
    QRegularExpression::PatternOptions m_options;
    PatternAutomaton m_automaton;
    QHash<QString, Characters> m_known;
    qsizetype m_at = 0;
    int m_atoms = 0;
    bool m_gaveUp = false;
    bool m_looksAhead = false;
    bool m_keepsChoices = false;
};

} // namespace vorn

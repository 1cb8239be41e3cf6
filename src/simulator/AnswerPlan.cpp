#include "simulator/AnswerPlan.h"

#include <algorithm>

namespace vorn {

namespace {

using namespace std::chrono_literals;

// Begins with neither an acknowledgement nor a refusal.
constexpr const char *kGarbage = "\x55\x00\x5A";
constexpr qsizetype kGarbageLength = 3;
constexpr auto kNoiseLead = 10ms;

bool endsExchange(const std::optional<Fault> &fault)
{
    return fault && (fault->kind == FaultKind::Silence || fault->kind == FaultKind::Refuse ||
                     fault->kind == FaultKind::Garbage || fault->kind == FaultKind::Unplug);
}

// Adds the right answer, or what the fault makes of it.
void add(std::vector<Answer> &answers, Answer right, const std::optional<Fault> &fault)
{
    if (!fault) {
        answers.push_back(right);
        return;
    }
    const Answer garbage{QByteArray(kGarbage, kGarbageLength), right.after};
    switch (fault->kind) {
    case FaultKind::Silence:
        return;
    case FaultKind::Refuse:
        right = {QByteArray(1, static_cast<char>(boot::kNak)), right.after};
        break;
    case FaultKind::Garbage:
        right = garbage;
        break;
    case FaultKind::Unplug:
        right = {.after = right.after, .unplugs = true};
        break;
    case FaultKind::Noise:
        answers.push_back(garbage);
        right.after += kNoiseLead;
        break;
    case FaultKind::Late:
        right.after += fault->delay;
        break;
    case FaultKind::Duplicate:
        right.bytes += right.bytes;
        break;
    }
    answers.push_back(right);
}

} // namespace

void AnswerPlan::setFaults(const std::vector<Fault> &faults)
{
    m_faults.clear();
    for (const Fault &fault : faults)
        m_faults.push_back({fault});
}

std::optional<Fault> AnswerPlan::faultAt(BootStep step, int frame)
{
    for (CountedFault &counted : m_faults) {
        const Fault &fault = counted.fault;
        // The last frame has a number, too.
        if (fault.step == BootStep::Frame ? fault.frame != frame : fault.step != step)
            continue;
        ++counted.reached;
        if (counted.reached > fault.after &&
            (fault.times == 0 || counted.reached <= fault.after + fault.times))
            return fault;
    }
    return std::nullopt;
}

Answer AnswerPlan::acknowledgement() const
{
    return {QByteArray(1, static_cast<char>(boot::kAck)), m_options.answerDelay, true};
}

std::vector<Answer> AnswerPlan::answersTo(const BootEvent &event)
{
    if (event.verdict == BootEvent::Verdict::Ignored)
        return {};
    if (event.verdict == BootEvent::Verdict::Refused)
        return {{QByteArray(1, static_cast<char>(boot::kNak)), m_options.answerDelay}};
    if (event.step == BootStep::Connect)
        return answersToConnect();
    if (event.step == BootStep::Header)
        return answersToHeader();
    std::vector<Answer> answers;
    Answer right = acknowledgement();
    right.completes = event.step == BootStep::Last;
    add(answers, right, faultAt(event.step, event.frame));
    return answers;
}

std::vector<Answer> AnswerPlan::answersToConnect()
{
    Answer whole = acknowledgement();
    whole.bytes += QByteArray(2, '\0') + static_cast<char>(m_options.modelCode);
    std::vector<Answer> answers;
    const std::optional<Fault> fault = faultAt(BootStep::Connect);
    if (fault || m_options.connectPieces.empty()) {
        add(answers, whole, fault);
        return answers;
    }
    std::vector<int> pieces = m_options.connectPieces;
    pieces.push_back(static_cast<int>(whole.bytes.size())); // what is left
    Answer piece = whole;
    for (const int length : pieces) {
        piece.bytes = whole.bytes.first(std::min<qsizetype>(length, whole.bytes.size()));
        whole.bytes.remove(0, piece.bytes.size());
        if (!piece.bytes.isEmpty())
            answers.push_back(piece);
        piece.after += m_options.pieceGap;
        piece.releases = false; // the acknowledgement is the first byte
    }
    return answers;
}

std::vector<Answer> AnswerPlan::answersToHeader()
{
    std::vector<Answer> answers;
    Answer ready = acknowledgement();
    // A header fault that does not end the exchange affects the first answer.
    std::optional<Fault> fault = faultAt(BootStep::Header);
    if (endsExchange(fault)) {
        add(answers, ready, fault);
        return answers;
    }
    bool joins = false;
    if (m_options.modelCode >= boot::kFirstErasingModel) {
        Answer erased = acknowledgement();
        erased.after += m_options.eraseTime;
        erased.releases = false;
        if (const std::optional<Fault> own = faultAt(BootStep::Erase))
            fault = own;
        add(answers, erased, fault);
        if (endsExchange(fault))
            return answers;
        ready.after += answers.back().after;
        joins = m_options.joinEraseAnswers && !fault;
        fault.reset();
    }
    if (const std::optional<Fault> own = faultAt(BootStep::Ready))
        fault = own;
    if (joins && !fault) {
        answers.back().bytes += ready.bytes;
        answers.back().releases = true;
    } else {
        add(answers, ready, fault);
    }
    return answers;
}

} // namespace vorn

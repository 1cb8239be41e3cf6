#include "simulator/AnswerPlan.h"

#include <algorithm>

namespace vorn {

namespace {

using namespace std::chrono_literals;

// Neither an acknowledgement nor a refusal in front, as a wrong speed would make of either.
constexpr std::array<std::uint8_t, 3> GarbageBytes{0x55, 0x00, 0x5A};
constexpr auto NoiseLead = 10ms;

Answer makeAnswer(std::initializer_list<std::uint8_t> bytes, std::chrono::nanoseconds after)
{
    Answer answer;
    std::copy(bytes.begin(), bytes.end(), answer.bytes.begin());
    answer.length = bytes.size();
    answer.after = after;
    return answer;
}

Answer garbage(std::chrono::nanoseconds after)
{
    Answer answer;
    std::copy(GarbageBytes.begin(), GarbageBytes.end(), answer.bytes.begin());
    answer.length = GarbageBytes.size();
    answer.after = after;
    return answer;
}

bool endsTheExchange(FaultKind kind)
{
    return kind == FaultKind::Silence || kind == FaultKind::Refuse || kind == FaultKind::Garbage ||
           kind == FaultKind::Unplug;
}

} // namespace

AnswerPlan::AnswerPlan(const DeviceOptions &options) : m_options(options)
{
    setFaults(options.faults);
}

void AnswerPlan::setFaults(const std::vector<Fault> &faults)
{
    m_faults.clear();
    m_faults.reserve(faults.size());
    for (const Fault &fault : faults)
        m_faults.push_back({fault});
}

std::optional<Fault> AnswerPlan::faultAt(BootStep step, int frame)
{
    for (CountedFault &counted : m_faults) {
        const Fault &fault = counted.fault;
        const bool fits = fault.step == BootStep::Frame ? fault.frame > 0 && fault.frame == frame
                                                        : fault.step == step;
        if (!fits)
            continue;
        ++counted.reached;
        const bool begun = counted.reached > fault.after;
        const bool used = fault.times > 0 && counted.reached > fault.after + fault.times;
        if (begun && !used)
            return fault;
    }
    return std::nullopt;
}

Answer AnswerPlan::acknowledgement(std::chrono::nanoseconds after) const
{
    Answer answer = makeAnswer({boot::Ack}, after);
    answer.releases = true;
    return answer;
}

void AnswerPlan::answer(const BootEvent &event, std::vector<Answer> &answers)
{
    if (event.verdict == BootEvent::Verdict::Ignored)
        return;
    if (event.verdict == BootEvent::Verdict::Refused) {
        answers.push_back(makeAnswer({boot::Nak}, m_options.answerDelay));
        return;
    }
    if (event.step == BootStep::Connect) {
        answerConnect(answers);
    } else if (event.step == BootStep::Header) {
        answerHeader(answers);
    } else {
        Answer right = acknowledgement(m_options.answerDelay);
        right.completes = event.step == BootStep::Last;
        add(answers, right, faultAt(event.step, event.frame));
    }
}

void AnswerPlan::answerConnect(std::vector<Answer> &answers)
{
    const std::optional<Fault> fault = faultAt(BootStep::Connect, 0);
    Answer whole = acknowledgement(m_options.answerDelay);
    whole.bytes = {boot::Ack, 0, 0, static_cast<std::uint8_t>(m_options.modelCode)};
    whole.length = 4;
    if (fault || m_options.connectPieces.empty()) {
        add(answers, whole, fault);
        return;
    }
    std::size_t done = 0;
    for (std::size_t i = 0; done < whole.length; ++i) {
        Answer piece = whole;
        piece.length = whole.length - done;
        if (i < m_options.connectPieces.size())
            piece.length = static_cast<std::size_t>(m_options.connectPieces[i]);
        std::copy_n(whole.bytes.begin() + static_cast<std::ptrdiff_t>(done), piece.length,
                    piece.bytes.begin());
        piece.after += m_options.pieceGap * static_cast<int>(i);
        piece.releases = i == 0; // the acknowledgement is the first byte
        answers.push_back(piece);
        done += piece.length;
    }
}

void AnswerPlan::answerHeader(std::vector<Answer> &answers)
{
    std::optional<Fault> fault = faultAt(BootStep::Header, 0);
    if (fault && endsTheExchange(fault->kind)) {
        add(answers, acknowledgement(m_options.answerDelay), fault);
        return;
    }
    std::chrono::nanoseconds readyAfter = m_options.answerDelay;
    bool joined = false;
    if (m_options.modelCode >= boot::FirstErasingModel) {
        Answer erased = acknowledgement(m_options.eraseTime + m_options.answerDelay);
        erased.releases = false;
        if (const std::optional<Fault> eraseFault = faultAt(BootStep::Erase, 0))
            fault = eraseFault;
        if (!add(answers, erased, fault))
            return;
        readyAfter += answers.back().after;
        joined = m_options.joinEraseAnswers && !fault;
        fault.reset();
    }
    if (const std::optional<Fault> readyFault = faultAt(BootStep::Ready, 0))
        fault = readyFault;
    if (joined && !fault) {
        Answer &both = answers.back();
        both.bytes[both.length++] = boot::Ack;
        both.releases = true;
    } else {
        add(answers, acknowledgement(readyAfter), fault);
    }
}

bool AnswerPlan::add(std::vector<Answer> &answers, Answer right,
                     const std::optional<Fault> &fault) const
{
    if (!fault) {
        answers.push_back(right);
        return true;
    }
    switch (fault->kind) {
    case FaultKind::Silence:
        break;
    case FaultKind::Refuse:
        answers.push_back(makeAnswer({boot::Nak}, right.after));
        break;
    case FaultKind::Garbage:
        answers.push_back(garbage(right.after));
        break;
    case FaultKind::Noise:
        answers.push_back(garbage(right.after));
        right.after += NoiseLead;
        answers.push_back(right);
        break;
    case FaultKind::Late:
        right.after += fault->delay;
        answers.push_back(right);
        break;
    case FaultKind::Duplicate:
        std::copy_n(right.bytes.begin(), right.length,
                    right.bytes.begin() + static_cast<std::ptrdiff_t>(right.length));
        right.length *= 2;
        answers.push_back(right);
        break;
    case FaultKind::Unplug: {
        Answer unplug;
        unplug.after = right.after;
        unplug.unplugs = true;
        answers.push_back(unplug);
        break;
    }
    }
    return !endsTheExchange(fault->kind);
}

} // namespace vorn

#include "soak/UpdateCase.h"

#include "tests/support/TestImage.h"

#include <random>

namespace vorn {
namespace {

using std::chrono::milliseconds;
using Kind = UpdateFailureKind;
using Time = LineFault::Time;
using Clock = DeviceLine::Clock;

constexpr std::array kStepNames{
    std::pair{"sync", BootStep::Sync},       std::pair{"connect", BootStep::Connect},
    std::pair{"version", BootStep::Version}, std::pair{"download", BootStep::Download},
    std::pair{"erase", BootStep::Erase},     std::pair{"ready", BootStep::Ready},
    std::pair{"frame", BootStep::Frame},     std::pair{"last", BootStep::Last},
};
const QByteArray kGarbage = "\x01\xaf\xfc";
// The connect answer has four bytes.
constexpr int kGaps = 3;

QByteArray randomImage(int seed, int bytes)
{
    // Those that mean something elsewhere in the protocol come often.
    constexpr std::array<char, 5> kMeaningful{'\xf4', '\xaf', '\xfc', '\xfb', '\0'};
    std::mt19937 random(static_cast<unsigned>(seed));
    QByteArray image(bytes, Qt::Uninitialized);
    for (char &byte : image) {
        const auto number = random();
        byte = number % 4 == 0 ? kMeaningful[(number >> 8U) % kMeaningful.size()]
                               : static_cast<char>(number >> 8U);
    }
    return image;
}

// A moment that no answer shares.
Clock::duration between(int time)
{
    return milliseconds(time) + 500us;
}

} // namespace

ScriptedLine::Fault play(const QByteArrayList &chunks, milliseconds after, milliseconds gap)
{
    return [=](ScriptedLine &line, const QByteArray &answer) {
        bool goesOn = false;
        milliseconds time = after;
        for (QByteArray chunk : chunks) {
            goesOn = goesOn || chunk.contains('=') || chunk == "/";
            if (chunk == "/") {
                for (const char byte : answer) {
                    line.answer(QByteArray(1, byte), time);
                    time += gap;
                }
            } else {
                line.answer(chunk.replace('=', answer), time);
                time += gap;
            }
        }
        return goesOn;
    };
}

UpdateResult ScriptedUpdate::update(const BootParameters &parameters)
{
    result = runUpdate(
        line,
        [this](qint32) {
            line.pause(readingTime);
            return FirmwareImage{image, failure};
        },
        parameters, *this);
    return result;
}

const std::vector<LineFault> &lineFaults()
{
    // Nothing tells two answers to the header that come at different times from one another and
    // from noise, so what adds to an answer does not strike the end of the erase.
    static const std::vector<LineFault> faults{
        {.name = "silence", .ending = Kind::TimedOut},
        {.name = "lost", .ending = Kind::TimedOut, .losesFrame = true},
        {.name = "refusal", .ending = Kind::Refused, .chunks = {"\xfc"}, .losesFrame = true},
        {.name = "garbage", .ending = Kind::TimedOut, .chunks = {kGarbage, "\x02"}},
        {.name = "garbage-first", .ending = Kind::None, .chunks = {kGarbage, "="}},
        {.name = "garbage-in-front",
         .ending = Kind::TimedOut,
         .chunks = {"\x01="},
         .atErase = false},
        {.name = "garbage-behind", .ending = Kind::None, .chunks = {"=\xfc"}, .atErase = false},
        {.name = "doubled", .ending = Kind::None, .chunks = {"=", "="}, .atErase = false},
        {.name = "refusal-behind", .ending = Kind::None, .chunks = {"=", "\xfc"}, .atErase = false},
        {.name = "joined", .ending = Kind::None, .chunks = {"\xaf\xaf"}, .only = BootStep::Erase},
        {.name = "joined-refusal",
         .ending = Kind::Refused,
         .chunks = {"\xaf\xfc"},
         .only = BootStep::Erase},
        {.name = "late", .ending = Kind::None, .chunks = {"="}, .time = Time::AroundLimit},
        {.name = "split",
         .ending = Kind::None,
         .chunks = {"/"},
         .only = BootStep::Connect,
         .time = Time::AnswerGap},
        {.name = "unplugged", .ending = Kind::PortClosed, .event = LineEvent::Gone},
        {.name = "abandoned", .ending = Kind::Abandoned, .event = LineEvent::Abandoned},
    };
    return faults;
}

const std::array<UpdateCase::Number, 8> &UpdateCase::numbers()
{
    static constexpr std::array<Number, 8> kNumbers{{
        {"model", &UpdateCase::modelCode, 0},
        {"bytes", &UpdateCase::bytes, 1},
        {"image", &UpdateCase::image, 0},
        {"latency", &UpdateCase::latency, 1},
        {"reading", &UpdateCase::reading, 0},
        {"early", &UpdateCase::early, 0},
        {"gone", &UpdateCase::gone, 0},
        {"abandoned", &UpdateCase::abandoned, 0},
    }};
    return kNumbers;
}

UpdateCase UpdateCase::random(unsigned seed)
{
    std::mt19937 random(seed);
    const auto below = [&](auto limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    const auto sometimes = [&](int most) { return below(8) == 0 ? 1 + below(most) : 0; };
    UpdateCase made;
    made.modelCode = below(below(4) == 0 ? 256 : 10);
    made.bytes = 1 + below(below(50) == 0 ? 65'536 : 1'500);
    if (below(4) == 0)
        made.bytes = 250 * (1 + below(6)) - 1 + below(3);
    made.image = static_cast<int>(seed % 1'000'000);
    made.latency = 1 + below(3);
    made.reading = sometimes(6'000);
    made.early = sometimes(19);
    made.gone = sometimes(below(2) == 0 ? 100 : 70'000);
    made.abandoned = sometimes(below(2) == 0 ? 100 : 70'000);
    const std::vector<Step> steps = made.steps();
    for (int left = below(4); left > 0; --left) {
        const Step &step = steps[static_cast<std::size_t>(below(steps.size()))];
        Fault fault{&lineFaults()[static_cast<std::size_t>(below(lineFaults().size()))],
                    {step.device, step.frame}};
        const int limit = static_cast<int>(step.limit.count());
        if (fault.kind->time == Time::AnswerGap)
            fault.time = 1 + below(kVornBoot.answerGap.count() / (kGaps + 1));
        else if (fault.kind->time == Time::AroundLimit)
            fault.time = below(2) == 0 ? 1 + below(limit + 500) : limit - 4 + below(6);
        if (fault.kind->strikes(step.device) && made.faultAt(step.device, step.frame) == nullptr)
            made.faults.push_back(fault);
    }
    return made;
}

std::optional<UpdateCase> UpdateCase::fromText(const QString &text)
{
    UpdateCase made;
    for (const Number &number : numbers())
        made.*number.value = number.least;
    for (const QString &word : text.split(u' ', Qt::SkipEmptyParts)) {
        const bool isNumber = word.contains(u'=');
        const QStringList pair = word.split(isNumber ? u'=' : u'@');
        const auto named = [](const QString &name) {
            return [name](const auto &entry) { return name == QLatin1String(entry.name); };
        };
        if (isNumber) {
            const auto number = std::ranges::find_if(numbers(), named(pair.first()));
            if (number == numbers().end())
                return std::nullopt;
            made.*number->value = std::max(pair.last().toInt(), number->least);
            continue;
        }
        const QStringList what = pair.first().split(u':');
        const QStringList where = pair.last().split(u':');
        const auto kind = std::ranges::find_if(lineFaults(), named(what.first()));
        const auto step = std::ranges::find_if(kStepNames, [&](const auto &entry) {
            return where.first() == QLatin1String(entry.first);
        });
        if (kind == lineFaults().end() || step == kStepNames.end())
            return std::nullopt;
        made.faults.push_back(
            {&*kind, {step->second, where.value(1).toInt()}, what.value(1).toInt()});
    }
    return made;
}

QString UpdateCase::text() const
{
    QStringList words;
    for (const Number &number : numbers())
        if (const int value = this->*number.value; value != 0)
            words += QStringLiteral("%1=%2").arg(QLatin1String(number.name)).arg(value);
    for (const Fault &fault : faults) {
        const auto *step = std::ranges::find(kStepNames, fault.step.first,
                                             &decltype(kStepNames)::value_type::second);
        words += QLatin1String(fault.kind->name) +
                 (fault.time ? QStringLiteral(":%1").arg(fault.time) : QString()) + u'@' +
                 QLatin1String(step->first) +
                 (fault.step.second ? QStringLiteral(":%1").arg(fault.step.second) : QString());
    }
    return words.join(u' ');
}

const UpdateCase::Fault *UpdateCase::faultAt(BootStep step, int frame) const
{
    const auto found = std::ranges::find(faults, ScriptedLine::Step{step, frame}, &Fault::step);
    return found == faults.end() ? nullptr : &*found;
}

// The answers that a device gives, and the step of the update that waits for each.
std::vector<UpdateCase::Step> UpdateCase::steps() const
{
    std::vector<Step> all{{BootStep::Sync, UpdateStep::Synchronize, 5s},
                          {BootStep::Connect, UpdateStep::Connect, 5s},
                          {BootStep::Version, UpdateStep::QueryVersion, 5s},
                          {BootStep::Download, UpdateStep::Download, 5s}};
    if (modelCode >= 2)
        all.push_back({BootStep::Erase, UpdateStep::Erase, 30s});
    all.push_back({BootStep::Ready, UpdateStep::Release, 30s});
    for (int frame = 1; frame <= bytes / 250; ++frame)
        all.push_back({BootStep::Frame, UpdateStep::Data, 5s, frame});
    all.push_back({BootStep::Last, UpdateStep::Finish, 5s});
    return all;
}

UpdateCase::Expected UpdateCase::expected() const
{
    static const LineFault kRightAnswer{"", Kind::None, {"="}};
    auto goneAt = gone ? between(gone) : Clock::duration::max();
    auto abandonedAt = abandoned ? between(abandoned) : Clock::duration::max();
    Expected end;
    Clock::duration now = milliseconds(20); // a reset pulse and the start of the boot loader
    std::optional<Kind> joined;
    for (const Step &step : steps()) {
        end.at = step;
        const Fault *fault = joined ? nullptr : faultAt(step.device, step.frame);
        const LineFault &kind = fault ? *fault->kind : kRightAnswer;
        const int time = fault ? fault->time : 0;
        // The image is read while the device answers the version query.
        const auto began = now + milliseconds(step.device == BootStep::Version ? reading : 0);
        auto arrived = now + milliseconds(latency + time);
        auto ended = std::max(began, arrived);
        end.ending = kind.ending;
        if (kind.event == LineEvent::Gone)
            goneAt = std::min(goneAt, arrived);
        else if (kind.event == LineEvent::Abandoned)
            abandonedAt = std::min(abandonedAt, arrived);
        if (kind.event != LineEvent::Chunk || ended > began + step.limit)
            end.ending = Kind::TimedOut;
        if (end.ending == Kind::TimedOut)
            arrived = ended = began + step.limit;
        if (joined) { // what came with the answer before
            end.ending = *joined;
            arrived = ended = now;
        }
        end.deviceHoldsImage = step.device == BootStep::Last && !kind.losesFrame;
        joined.reset();
        if (goneAt < arrived) { // what arrived before still counts
            end.ending = Kind::PortClosed;
            ended = std::max(began, goneAt);
        }
        if (abandonedAt <= ended) { // nothing does
            end.ending = Kind::Abandoned;
            ended = std::max(began, abandonedAt);
        }
        if (end.ending == kind.ending && kind.only == BootStep::Erase)
            joined = std::exchange(end.ending, Kind::None);
        now = ended;
        if (kind.only == BootStep::Connect) {
            const auto cutAt = std::min(goneAt, abandonedAt);
            now = std::min(ended + kGaps * milliseconds(time), std::max(ended, cutAt));
            end.versionIsWhole = now < cutAt;
            if (end.ending == Kind::None && !end.versionIsWhole)
                end.ending = abandonedAt <= goneAt ? Kind::Abandoned : Kind::PortClosed;
        }
        if (end.ending != Kind::None)
            break;
    }
    end.elapsed = std::chrono::duration_cast<milliseconds>(now);
    return end;
}

UpdateCase::Outcome UpdateCase::run() const
{
    Outcome outcome;
    ScriptedUpdate run(modelCode, image == 0 ? imageOf(bytes) : randomImage(image, bytes),
                       milliseconds(latency));
    run.readingTime = milliseconds(reading);
    if (early != 0)
        run.line.answer("\xfc", milliseconds(early));
    if (gone != 0)
        run.line.happens(LineEvent::Gone, between(gone));
    if (abandoned != 0)
        run.line.happens(LineEvent::Abandoned, between(abandoned));
    for (const Fault &fault : faults) {
        run.line.faults[fault.step] = [&](ScriptedLine &line, const QByteArray &answer) {
            outcome.struck.push_back(fault.kind);
            if (fault.kind->losesFrame)
                line.forgetFrame();
            if (fault.kind->event == LineEvent::Chunk)
                return play(fault.kind->chunks, milliseconds(fault.time),
                            milliseconds(fault.time))(line, answer);
            line.happens(fault.kind->event);
            return false;
        };
    }
    UpdateResult result;
    try {
        result = run.update();
    } catch (const std::runtime_error &hang) {
        outcome.complaint = QString::fromLatin1(hang.what());
        return outcome;
    }
    outcome.ending = result.failure.kind;

    const Expected wanted = expected();
    const auto compare = [&](const char *what, auto is, auto shouldBe) {
        if (is != shouldBe && outcome.complaint.isEmpty())
            outcome.complaint = QStringLiteral("%1 is %2 instead of %3")
                                    .arg(QLatin1String(what))
                                    .arg(is)
                                    .arg(shouldBe);
    };
    const bool isAbandoned = wanted.ending == Kind::Abandoned;
    const bool isAtLast = wanted.at.step == UpdateStep::Finish;
    compare("the kind of failure", static_cast<int>(result.failure.kind),
            static_cast<int>(wanted.ending));
    compare("the device's holding the image", run.deviceHoldsImage(), wanted.deviceHoldsImage);
    compare("the step", static_cast<int>(result.step), static_cast<int>(wanted.at.step));
    compare("the frame", result.frame, qint64{std::max(wanted.at.frame - 1, 0)});
    compare("\"may be erased\"", result.mayBeErased, wanted.at.step >= UpdateStep::Erase);
    compare("the number of ends", run.ends, isAbandoned ? 0 : 1);
    compare("what the device objected to", run.line.violations.join(u','), QString());
    QString rts;
    for (const bool high : run.line.rts)
        rts += high ? u'1' : u'0';
    QString wantedRts = wanted.ending == Kind::None ? QStringLiteral("1010") : QStringLiteral("10");
    if (isAtLast && (wanted.ending == Kind::TimedOut || wanted.ending == Kind::PortClosed))
        wantedRts += u'0';
    compare("RTS", rts, wantedRts);
    if (!isAbandoned)
        compare("the time it took", qint64{result.elapsed.count()}, qint64{wanted.elapsed.count()});
    if (wanted.ending == Kind::TimedOut)
        compare("the time waited", qint64{result.waited.count()}, qint64{wanted.at.limit.count()});
    if (wanted.at.step >= UpdateStep::QueryVersion) {
        compare("the size", result.imageBytes, qint64{bytes});
        if (wanted.versionIsWhole)
            compare("the version", run.targetVersion, modelCode);
    }
    compare("the percentages' order", std::ranges::is_sorted(run.percents), true);
    return outcome;
}

} // namespace vorn

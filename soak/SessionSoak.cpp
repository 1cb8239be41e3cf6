#include "soak/SessionSoak.h"

#include "platform/MainQueue.h"
#include "soak/SessionRun.h"
#include "soak/Surroundings.h"
#include "tests/support/Eventually.h"

#include <functional>
#include <thread>

namespace vorn {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

bool soakOne(unsigned seed, Tally &tally)
{
    SessionRun run(seed);
    // Every other run has to share the processors.
    const bool isLoaded = seed % 2 != 0;
    const ProcessorLoad load(isLoaded ? 2 * std::max(std::thread::hardware_concurrency(), 1U) : 0);
    if (isLoaded)
        ++tally.faults["processors busy"];
    const QString complaint = run.run(tally);
    if (complaint.isEmpty())
        return true;
    std::printf("WRONG: expected %s\n    %s\n    --session-seed %u\n%s\n", qPrintable(complaint),
                qPrintable(run.story()), seed, qPrintable(run.transcript().left(1000)));
    return false;
}

// While `goesOn` holds, with seeds that differ by `step`.
bool soakWhile(const std::function<bool(const Tally &)> &goesOn, unsigned seed, unsigned step)
{
    // Opens what stays open as long as the program runs.
    MainQueue::instance();
    runEventLoopFor(1ms);

    Tally tally;
    const auto began = Clock::now();
    bool isRight = true;
    for (; isRight && goesOn(tally); seed += step)
        isRight = soakOne(seed, tally);
    const double seconds = std::chrono::duration<double>(Clock::now() - began).count();
    std::printf(
        "sessions on pseudo-terminals: %lld in %.0f s, each with another update behind it\n",
        tally.runs, seconds);
    tally.print();
    return isRight;
}

} // namespace

bool soakSessions(unsigned firstSeed, std::chrono::seconds time)
{
    const auto deadline = Clock::now() + time;
    return soakWhile([&](const Tally &) { return Clock::now() < deadline; }, firstSeed, 1);
}

bool replaySession(unsigned seed, int times)
{
    return soakWhile([&](const Tally &tally) { return tally.runs < times; }, seed, 0);
}

} // namespace vorn

#include "soak/ScriptedSoak.h"

#include <atomic>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <set>
#include <thread>

namespace vorn {
namespace {

using Clock = std::chrono::steady_clock;

// An update takes microseconds.
constexpr int kHangSeconds = 20;

struct Worker
{
    std::atomic<unsigned> seed = 0; // of the update that runs now
    Tally tally;
    std::jthread thread;
};

void count(const UpdateCase &made, const UpdateCase::Outcome &outcome, Tally &tally)
{
    ++tally.runs;
    ++tally.endings[nameOf(outcome.ending)];
    for (const LineFault *fault : outcome.struck)
        ++tally.faults[fault->name];
    for (const auto &[name, value] : {std::pair{"slow reading", made.reading},
                                      {"refusal during the reset", made.early},
                                      {"port closes at any time", made.gone},
                                      {"abandoned at any time", made.abandoned}})
        if (value != 0)
            ++tally.faults[name];
}

// Cases that are simpler in one respect.
std::vector<UpdateCase> simpler(const UpdateCase &made)
{
    std::vector<UpdateCase> all;
    for (std::size_t i = 0; i < made.faults.size(); ++i) {
        all.push_back(made);
        all.back().faults.erase(all.back().faults.begin() + static_cast<std::ptrdiff_t>(i));
    }
    const auto below = [](int value, int least) {
        std::set<int> lower{least, (value + least) / 2, value - 250, value - 1};
        std::erase_if(lower, [&](int one) { return one < least || one >= value; });
        return lower;
    };
    for (const UpdateCase::Number &number : UpdateCase::numbers()) {
        for (const int value : below(made.*number.value, number.least)) {
            all.push_back(made);
            all.back().*number.value = value;
        }
    }
    for (std::size_t i = 0; i < made.faults.size(); ++i) {
        for (const int time : below(made.faults[i].time, 0)) {
            all.push_back(made);
            all.back().faults[i].time = time;
        }
        for (const int frame : below(made.faults[i].step.second, 1)) {
            all.push_back(made);
            all.back().faults[i].step.second = frame;
        }
    }
    return all;
}

UpdateCase smallestLike(UpdateCase failing)
{
    for (bool isSmallest = false; !isSmallest;) {
        isSmallest = true;
        for (UpdateCase &candidate : simpler(failing)) {
            if (candidate.run().complaint.isEmpty())
                continue;
            failing = std::move(candidate);
            isSmallest = false;
            break;
        }
    }
    return failing;
}

void print(const char *what, const UpdateCase &made)
{
    std::printf("%s: %s\n    --case \"%s\"\n", what, made.run().complaint.toUtf8().constData(),
                made.text().toUtf8().constData());
}

} // namespace

bool replay(const UpdateCase &made)
{
    const UpdateCase::Outcome outcome = made.run();
    std::printf("%s\n", made.text().toUtf8().constData());
    if (outcome.complaint.isEmpty()) {
        std::printf("ends as it must: %s\n", nameOf(outcome.ending));
        return true;
    }
    print("WRONG", made);
    print("smallest", smallestLike(made));
    return false;
}

bool soakScripted(unsigned firstSeed, std::chrono::seconds time)
{
    const auto began = Clock::now();
    const auto deadline = began + time;
    std::atomic<unsigned> next = firstSeed;
    std::mutex mutex;
    std::optional<unsigned> failed;
    std::atomic<bool> ends = false;
    std::atomic<unsigned> running = std::max(std::thread::hardware_concurrency(), 1U);
    std::deque<Worker> workers(running);
    for (Worker &worker : workers) {
        worker.thread = std::jthread([&] {
            while (!ends && Clock::now() < deadline) {
                worker.seed = next++;
                const UpdateCase made = UpdateCase::random(worker.seed);
                const UpdateCase::Outcome outcome = made.run();
                count(made, outcome, worker.tally);
                if (outcome.complaint.isEmpty())
                    continue;
                const std::lock_guard lock(mutex);
                failed = worker.seed;
                ends = true;
            }
            --running;
        });
    }
    std::vector<std::pair<unsigned, int>> same(workers.size()); // a seed, and for how many seconds
    while (running > 0) {
        std::this_thread::sleep_for(std::min<Clock::duration>(1s, deadline - Clock::now()));
        for (std::size_t i = 0; i < workers.size() && !ends; ++i) {
            same[i] = {workers[i].seed, workers[i].seed == same[i].first ? same[i].second + 1 : 0};
            if (same[i].second < kHangSeconds || Clock::now() >= deadline)
                continue;
            std::printf("HANGS: seed %u\n    --case \"%s\"\n", same[i].first,
                        UpdateCase::random(same[i].first).text().toUtf8().constData());
            std::fflush(stdout);
            std::_Exit(1);
        }
    }
    Tally sum;
    for (const Worker &worker : workers)
        sum += worker.tally;
    const double seconds = std::chrono::duration<double>(Clock::now() - began).count();
    std::printf("scripted line: %lld updates in %.0f s, %.0f a second, seeds from %u\n", sum.runs,
                seconds, static_cast<double>(sum.runs) / seconds, firstSeed);
    sum.print();
    if (!failed)
        return true;
    std::printf("seed %u\n", *failed);
    return replay(UpdateCase::random(*failed));
}

} // namespace vorn

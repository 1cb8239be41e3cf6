// How quickly the programs start, and how small they stay, side by side with minimal ones: the
// window with a window of the same controls, the command line with an empty Qt Core program. Needs
// an X server without a window manager.
#include "benchmarks/Programs.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <poll.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

namespace {

using namespace vorn;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kDefaultRounds = 31;
constexpr int kCommandRounds = 101;
constexpr auto kStartLimit = 30s;
constexpr auto kLook = 50ms; // a program is idle that used no processor time in four looks
constexpr int kIdleLooks = 4;
constexpr double kAllowedTime = 1.5;
constexpr double kAllowedMemory = 1.2;
constexpr double kAllowedCommandLine = 2.0;

using EventPtr = std::unique_ptr<xcb_generic_event_t, decltype(&std::free)>;

// Sees other programs' windows appear on the screen.
class Screen
{
public:
    Screen() : m_connection(xcb_connect(nullptr, nullptr), &xcb_disconnect)
    {
        if (xcb_connection_has_error(m_connection.get()))
            return;
        const auto *damage = xcb_get_extension_data(m_connection.get(), &xcb_damage_id);
        if (!damage || !damage->present)
            return;
        m_drawn = static_cast<uint8_t>(damage->first_event + XCB_DAMAGE_NOTIFY);
        std::free(xcb_damage_query_version_reply(m_connection.get(),
                                                 xcb_damage_query_version(m_connection.get(),
                                                                          XCB_DAMAGE_MAJOR_VERSION,
                                                                          XCB_DAMAGE_MINOR_VERSION),
                                                 nullptr));
        const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(
            m_connection.get(),
            xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root,
            XCB_CW_EVENT_MASK, &mask);
        xcb_flush(m_connection.get());
    }

    bool isReady() const { return m_drawn != 0; }

    // Waits until a window is mapped; then, and when something has been drawn in it, calls back.
    template <typename Mapped, typename Drawn>
    bool awaitWindow(Mapped mapped, Drawn drawn)
    {
        const auto deadline = Clock::now() + kStartLimit;
        xcb_window_t window = XCB_NONE;
        for (EventPtr event = next(deadline); event; event = next(deadline)) {
            const auto type = static_cast<uint8_t>(event->response_type & 0x7F);
            if (type == XCB_MAP_NOTIFY && window == XCB_NONE) {
                const auto &map = reinterpret_cast<const xcb_map_notify_event_t &>(*event);
                if (map.override_redirect)
                    continue;
                mapped();
                window = map.window;
            } else if (type == XCB_CREATE_NOTIFY) {
                // Now already, so that nothing that is drawn is missed.
                const auto &create = reinterpret_cast<const xcb_create_notify_event_t &>(*event);
                xcb_damage_create(m_connection.get(), xcb_generate_id(m_connection.get()),
                                  create.window, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
                xcb_flush(m_connection.get());
            } else if (type == m_drawn && window != XCB_NONE) {
                drawn();
                return true;
            }
        }
        return false;
    }

    // Forgets the events of a program that has ended.
    void clear()
    {
        std::free(xcb_get_input_focus_reply(m_connection.get(),
                                            xcb_get_input_focus(m_connection.get()), nullptr));
        while (EventPtr(xcb_poll_for_event(m_connection.get()), &std::free)) {
        }
    }

private:
    EventPtr next(Clock::time_point deadline)
    {
        EventPtr event(xcb_poll_for_event(m_connection.get()), &std::free);
        while (!event && !xcb_connection_has_error(m_connection.get())) {
            pollfd readable{xcb_get_file_descriptor(m_connection.get()), POLLIN, 0};
            const auto left =
                std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0 || ::poll(&readable, 1, static_cast<int>(left)) <= 0)
                break;
            event.reset(xcb_poll_for_event(m_connection.get()));
        }
        return event;
    }

    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> m_connection;
    uint8_t m_drawn = 0; // the event's number; 0 without a usable server
};

// Times in milliseconds since exec.
struct Start
{
    double mapped = 0;
    double drawn = 0;
    double cpuDrawn = 0;  // processor time until the first picture
    double cpuIdle = 0;   // processor time until nothing is left to do
    double megabytes = 0; // resident then
};

double processorTime(pid_t process)
{
    clockid_t clock = 0;
    timespec used{};
    if (::clock_getcpuclockid(process, &clock) != 0 || ::clock_gettime(clock, &used) != 0)
        return -1;
    return Milliseconds(std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec))
        .count();
}

double residentMegabytes(pid_t process)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(process));
    if (status.open(QIODevice::ReadOnly))
        for (const QByteArray &line : status.readAll().split('\n'))
            if (line.startsWith("VmRSS:"))
                return line.simplified().split(' ').value(1).toDouble() / 1024;
    return 0;
}

double processorTimeOnceIdle(pid_t process)
{
    double used = processorTime(process);
    for (int looks = 0; looks < kIdleLooks; ++looks) {
        std::this_thread::sleep_for(kLook);
        const double now = processorTime(process);
        if (now > used)
            looks = -1;
        used = now;
    }
    return used;
}

// Shows the program's window and ends it.
std::optional<Start> startOnce(Screen &screen, const QString &program)
{
    screen.clear();
    const auto begin = Clock::now();
    const auto child = startProgram({program});
    if (!child)
        return std::nullopt;
    Start start;
    const auto since = [begin] { return Milliseconds(Clock::now() - begin).count(); };
    const bool isShown = screen.awaitWindow([&] { start.mapped = since(); },
                                            [&] {
                                                start.drawn = since();
                                                start.cpuDrawn = processorTime(*child);
                                            });
    if (isShown) {
        start.cpuIdle = processorTimeOnceIdle(*child);
        start.megabytes = residentMegabytes(*child);
    }
    ::kill(*child, SIGTERM);
    ::waitpid(*child, nullptr, 0);
    return isShown ? std::optional(start) : std::nullopt;
}

bool report(const char *name, double ratio, double allowed)
{
    const bool met = ratio <= allowed;
    std::printf("%s: ratio %.2f (allowed: %.2f): %s\n", name, ratio, allowed,
                met ? "met" : "MISSED");
    return met;
}

// Runs both in turns, each round starting with the other; the first does not count.
template <typename Value, typename Run>
bool inTurns(int rounds, std::array<std::vector<Value>, 2> &values, Run run)
{
    for (int round = 0; round <= rounds; ++round) {
        for (int turn = 0; turn < 2; ++turn) {
            const auto which = static_cast<std::size_t>((turn + round) % 2);
            const std::optional<Value> value = run(which);
            if (!value)
                return false;
            if (round > 0)
                values[which].push_back(*value);
        }
    }
    return true;
}

bool compareWindows(int rounds)
{
    Screen screen;
    if (!screen.isReady()) {
        std::fprintf(stderr, "There is no X server with the damage extension\n");
        return false;
    }
    const QStringList programs{builtProgram(QStringLiteral("vornupdater")),
                               builtProgram(QStringLiteral("minimal_window"))};
    std::array<std::vector<Start>, 2> starts;
    if (!inTurns(rounds, starts, [&](std::size_t which) {
            return startOnce(screen, programs.at(static_cast<qsizetype>(which)));
        })) {
        std::fprintf(stderr, "A window did not appear\n");
        return false;
    }
    struct Row
    {
        const char *name;
        double Start::*value;
        double allowed; // 0: none
    };
    constexpr std::array kRows{Row{"exec to mapped window, ms", &Start::mapped, kAllowedTime},
                               Row{"exec to first picture, ms", &Start::drawn, 0},
                               Row{"processor until first picture, ms", &Start::cpuDrawn, 0},
                               Row{"processor until idle, ms", &Start::cpuIdle, 0},
                               Row{"resident when idle, MB", &Start::megabytes, kAllowedMemory}};
    std::printf("Start of the window beside a minimal one with the same controls, medians of %d\n\n"
                "%-34s %9s %9s %7s %10s\n",
                rounds, "", "ours", "minimal", "ratio", "of minima");
    bool met = true;
    for (const Row &row : kRows) {
        const auto least = [&](const std::vector<Start> &from) {
            return std::ranges::min(from, {}, row.value).*row.value;
        };
        const double ours = median(starts[0], row.value);
        const double minimal = median(starts[1], row.value);
        std::printf("%-34s %9.1f %9.1f %7.2f %10.2f\n", row.name, ours, minimal, ours / minimal,
                    least(starts[0]) / least(starts[1]));
        if (row.allowed > 0)
            met = report("    against the minimal window", ours / minimal, row.allowed) && met;
    }
    return met;
}

bool compareCommandLines()
{
    const std::array commands{
        QStringList{builtProgram(QStringLiteral("vornupdater-cli")), QStringLiteral("--version")},
        QStringList{builtProgram(QStringLiteral("empty_core"))}};
    std::array<std::vector<ProgramRun>, 2> runs;
    if (!inTurns(kCommandRounds, runs,
                 [&](std::size_t which) { return runProgram(commands[which]); })) {
        std::fprintf(stderr, "A program failed\n");
        return false;
    }
    const double ours = median(runs[0], &ProgramRun::wall);
    const double empty = median(runs[1], &ProgramRun::wall);
    std::printf("\nExec to exit, medians of %d\n%-34s %9.1f ms\n%-34s %9.1f ms\n", kCommandRounds,
                "vornupdater-cli --version", ours * 1e3, "empty Qt Core program", empty * 1e3);
    return report("Command line to empty program", ours / empty, kAllowedCommandLine);
}

} // namespace

// bench_start [ROUNDS]: 0 when the targets are met.
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir home;
    for (const char *variable : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        qputenv(variable, QFile::encodeName(home.path()));
    qputenv("QT_QPA_PLATFORM", "xcb");
    const int rounds = QCoreApplication::arguments().value(1).toInt();
    const bool isQuickWindow = compareWindows(rounds > 0 ? rounds : kDefaultRounds);
    return compareCommandLines() && isQuickWindow ? 0 : 1;
}

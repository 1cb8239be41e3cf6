// soak [MINUTES]: half of the time updates over scripted lines, then sessions with simulated
// devices.
//   --seed N          the scripted update with this seed alone
//   --case "..."      this scripted update alone
//   --session-seed N  a hundred sessions with this seed
//   --sessions        sessions only
#include "soak/ScriptedSoak.h"
#include "soak/SessionSoak.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <random>

using namespace vorn;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    QCommandLineParser parser;
    parser.addPositionalArgument(QStringLiteral("MINUTES"), QStringLiteral("5 when left out"));
    const QCommandLineOption seed(QStringLiteral("seed"), {}, QStringLiteral("N"));
    const QCommandLineOption text(QStringLiteral("case"), {}, QStringLiteral("TEXT"));
    const QCommandLineOption session(QStringLiteral("session-seed"), {}, QStringLiteral("N"));
    const QCommandLineOption sessionsOnly(QStringLiteral("sessions"));
    parser.addOptions({seed, text, session, sessionsOnly});
    parser.addHelpOption();
    parser.process(application);

    if (parser.isSet(seed))
        return replay(UpdateCase::random(parser.value(seed).toUInt())) ? 0 : 1;
    if (parser.isSet(text)) {
        const auto made = UpdateCase::fromText(parser.value(text));
        if (!made)
            std::fprintf(stderr, "not a case: %s\n", qPrintable(parser.value(text)));
        return made && replay(*made) ? 0 : 1;
    }
    if (parser.isSet(session))
        return replaySession(parser.value(session).toUInt(), 100) ? 0 : 1;
    const double minutes = parser.positionalArguments().value(0, QStringLiteral("5")).toDouble();
    const std::chrono::seconds half(static_cast<int>(minutes * 30));
    const unsigned first = std::random_device()();
    if (parser.isSet(sessionsOnly))
        return soakSessions(first, 2 * half) ? 0 : 1;
    // Both, whatever the first one finds.
    const bool areUpdatesRight = soakScripted(first, half);
    const bool areSessionsRight = soakSessions(first, half);
    return areUpdatesRight && areSessionsRight ? 0 : 1;
}

#include "simulator/CommandSupport.h"

#include "simulator/UniqueFd.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QSocketNotifier>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <sys/signalfd.h>

namespace vorn {
namespace {

sigset_t interruptions()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&set, number);
    return set;
}

} // namespace

int complainAboutUsage(const QString &problem)
{
    std::fprintf(stderr, "%s\nTry vornsim --help.\n", qPrintable(problem));
    return kExitUsage;
}

int complain(const QString &problem)
{
    std::fprintf(stderr, "%s\n", qPrintable(problem));
    return kExitFailure;
}

std::optional<int> parse(QCommandLineParser &parser, const QStringList &arguments)
{
    const QCommandLineOption help = parser.addHelpOption();
    if (!parser.parse(arguments))
        return complainAboutUsage(parser.errorText());
    if (parser.isSet(help)) {
        std::fputs(qPrintable(parser.helpText()), stdout);
        return 0;
    }
    return std::nullopt;
}

std::optional<qint64> number(const QCommandLineParser &parser, const QString &option, qint64 least,
                             qint64 most, QString &problem)
{
    bool isNumber = false;
    const qint64 value = parser.value(option).toLongLong(&isNumber);
    if (isNumber && value >= least && value <= most)
        return value;
    problem = QStringLiteral("--%1 takes a whole number from %2 to %3, not \"%4\"")
                  .arg(option)
                  .arg(least)
                  .arg(most)
                  .arg(parser.value(option));
    return std::nullopt;
}

void printLine(const QJsonObject &object)
{
    std::puts(QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

bool writeJson(const QJsonObject &object, const QString &file, QString &problem)
{
    const QByteArray text = QJsonDocument(object).toJson();
    if (file.isEmpty()) {
        std::fputs(text.constData(), stdout);
        std::fflush(stdout);
        return true;
    }
    QFile out(file);
    if (out.open(QIODevice::WriteOnly) && out.write(text) == text.size() && out.flush())
        return true;
    problem = file + QStringLiteral(": ") + out.errorString();
    return false;
}

void blockInterruptions()
{
    const sigset_t set = interruptions();
    ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

void runUntilInterrupted(const std::function<bool()> &quit)
{
    const sigset_t set = interruptions();
    const UniqueFd fd(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    QSocketNotifier notifier(fd.get(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &QCoreApplication::quit);
    QTimer lookAgain;
    QObject::connect(&lookAgain, &QTimer::timeout, [&] {
        if (quit())
            QCoreApplication::quit();
    });
    lookAgain.start(5);
    QCoreApplication::exec();
}

} // namespace vorn

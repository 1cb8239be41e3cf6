// Unpacks one firmware-like package with ZipArchive and with the usual tools, in turns, and
// compares the medians. Every run is a process of its own into a fresh folder, so that start-up
// counts for all.

#include "benchmarks/Programs.h"
#include "ziparchive/ZipArchive.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <vector>

namespace {

using vorn::median;
using vorn::ProgramRun;

constexpr int kFiles = 2200;
constexpr int kFolders = 40;
constexpr int kDefaultRounds = 15;
constexpr double kAllowedRatio = 1.10;
constexpr long kAllowedKilobytes = 16 * 1024;

struct Tool
{
    QString name;
    // "%in" and "%out" stand for the package and the folder.
    QStringList command;
    std::vector<ProgramRun> runs;
};

// Bytes as firmware has them: code that repeats itself now and then, tables, padding.
QByteArray firmwareLike(std::mt19937 &random, qsizetype size)
{
    QByteArray bytes;
    bytes.reserve(size + 1024);
    while (bytes.size() < size) {
        const qsizetype length = 32 + static_cast<qsizetype>(random() % 480);
        const auto kind = random() % 100;
        if (kind < 62) {
            for (qsizetype i = 0; i < length; ++i)
                bytes.append(static_cast<char>(random() & (kind < 40 ? 0xFF : 0x3F)));
        } else if (kind < 94 && bytes.size() > length) {
            const auto from = static_cast<qsizetype>(random()) % (bytes.size() - length);
            bytes.append(bytes.sliced(from, length));
        } else {
            bytes.append(length, '\xFF');
        }
    }
    return bytes.first(size);
}

bool makePackage(const QString &folder, const QString &package)
{
    std::mt19937 random(20240229);
    const QDir top(folder);
    for (int i = 0; i < kFiles; ++i) {
        const QString path =
            QStringLiteral("VornUpdate2/model-%1/VORN-%2.bin").arg(i * kFolders / kFiles).arg(i);
        const qsizetype size = 2000 + static_cast<qsizetype>(random() % 90'000);
        QFile file(top.filePath(path));
        if (!top.mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly) ||
            file.write(firmwareLike(random, size)) != size)
            return false;
    }
    QProcess zip;
    zip.setWorkingDirectory(folder);
    zip.start(QStringLiteral("zip"),
              {QStringLiteral("-q"), QStringLiteral("-r"), package, QStringLiteral("VornUpdate2")});
    return zip.waitForFinished(-1) && zip.exitCode() == 0;
}

bool runOnce(Tool &tool, const QString &package, const QString &target)
{
    QStringList command = tool.command;
    command.replaceInStrings(QStringLiteral("%in"), package);
    command.replaceInStrings(QStringLiteral("%out"), target);
    const auto run = vorn::runProgram(command);
    if (run)
        tool.runs.push_back(*run);
    return run.has_value();
}

// This process's resident memory in kilobytes: the highest so far ("VmHWM:") or the present
// ("VmRSS:").
long memoryNow(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.simplified().split(' ').value(1).toLong();
    return 0;
}

int unpack(const QString &package, const QString &target)
{
    ZipArchive archive;
    return archive.UnzipOpenFile(package) && archive.UnzipFileTo(target, true) ? 0 : 1;
}

int unpackAndReportMemory(const QString &package, const QString &target)
{
    const long before = memoryNow("VmRSS:");
    const int result = unpack(package, target);
    std::fprintf(stderr, "%ld\n", memoryNow("VmHWM:") - before);
    return result;
}

bool compare(int rounds)
{
    const QTemporaryDir work;
    const QString package = work.filePath(QStringLiteral("package.zip"));
    const QString source = work.filePath(QStringLiteral("source"));
    if (!work.isValid() || !makePackage(source, package)) {
        std::fprintf(stderr, "The package could not be made\n");
        return false;
    }
    QDir(source).removeRecursively();
    std::printf("Package: %d files, %.1f MB packed\n", kFiles,
                static_cast<double>(QFileInfo(package).size()) / 1e6);

    const QString self = QCoreApplication::applicationFilePath();
    std::vector<Tool> tools = {
        {.name = "ZipArchive", .command = {self, "--unpack", "%in", "%out"}, .runs = {}},
        {.name = "unzip", .command = {"unzip", "-q", "%in", "-d", "%out"}, .runs = {}},
        {.name = "bsdtar", .command = {"bsdtar", "-xf", "%in", "-C", "%out"}, .runs = {}},
        {.name = "7z", .command = {"7z", "x", "-bd", "-y", "-o%out", "%in"}, .runs = {}}};
    // The first round warms the caches and does not count. Each round starts with another tool.
    for (int round = 0; round <= rounds; ++round) {
        for (std::size_t i = 0; i < tools.size(); ++i) {
            Tool &tool = tools[(i + static_cast<std::size_t>(round)) % tools.size()];
            QDir target(work.filePath(QStringLiteral("out")));
            if (!target.mkpath(QStringLiteral(".")) || !runOnce(tool, package, target.path())) {
                std::fprintf(stderr, "%s failed\n", qPrintable(tool.name));
                return false;
            }
            target.removeRecursively();
            ::sync();
        }
        if (round == 0)
            for (Tool &tool : tools)
                tool.runs.clear();
    }

    const auto fastest = [&tools](auto member) {
        double best = median(tools[1].runs, member);
        for (std::size_t i = 2; i < tools.size(); ++i)
            best = std::min(best, median(tools[i].runs, member));
        return best;
    };
    const double bestWall = fastest(&ProgramRun::wall);
    const double bestCpu = fastest(&ProgramRun::cpu);
    std::printf("Medians of %d rounds; ratios to the fastest of the other tools\n\n", rounds);
    std::printf("%-12s %9s %7s %11s %7s\n", "", "wall ms", "ratio", "cpu ms", "ratio");
    for (const Tool &tool : tools) {
        const double wall = median(tool.runs, &ProgramRun::wall);
        const double cpu = median(tool.runs, &ProgramRun::cpu);
        std::printf("%-12s %9.1f %7.2f %11.1f %7.2f\n", qPrintable(tool.name), wall * 1e3,
                    wall / bestWall, cpu * 1e3, cpu / bestCpu);
    }

    QProcess memory;
    memory.start(self, {"--memory", package, work.filePath(QStringLiteral("out"))});
    if (!memory.waitForFinished(-1) || memory.exitCode() != 0)
        return false;
    const long kilobytes = memory.readAllStandardError().trimmed().toLong();
    const bool isFast = median(tools[0].runs, &ProgramRun::wall) <= bestWall * kAllowedRatio;
    std::printf("\nPeak memory above the program's own: %ld kB (allowed: below %ld): %s\n",
                kilobytes, kAllowedKilobytes, kilobytes < kAllowedKilobytes ? "met" : "MISSED");
    std::printf("Wall time within %.2f of the fastest: %s\n", kAllowedRatio,
                isFast ? "met" : "MISSED");
    return isFast && kilobytes < kAllowedKilobytes;
}

} // namespace

// bench_extraction [ROUNDS]: 0 when the targets are met. (--unpack and --memory are its own runs.)
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("vorn.*.info=false"));
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments.at(1) == QStringLiteral("--unpack"))
        return unpack(arguments.at(2), arguments.at(3));
    if (arguments.size() == 4 && arguments.at(1) == QStringLiteral("--memory"))
        return unpackAndReportMemory(arguments.at(2), arguments.at(3));
    const int rounds = arguments.value(1).toInt();
    return compare(rounds > 0 ? rounds : kDefaultRounds) ? 0 : 1;
}

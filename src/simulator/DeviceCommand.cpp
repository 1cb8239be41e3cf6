#include "simulator/Command.h"
#include "simulator/SimulatedDevice.h"
#include "simulator/StopEvents.h"

#include <QJsonDocument>

#include <climits>

namespace vorn {

namespace {

constexpr const char *Description =
    "A simulated device: a boot loader on a pseudo-terminal. Prints one line of JSON when it is\n"
    "plugged in and one, the report, when it ends (SIGTERM, SIGINT or --exit-after).";

constexpr const char *Examples =
    "A fault is STEP=KIND[,after=N][,times=N]:\n"
    "  STEP   the answer that it replaces: sync, connect, version, download, header, erase, "
    "ready,\n"
    "         frame:K (data frames count from 1) or last\n"
    "  KIND   silence, refuse (FC), garbage, noise (garbage, then the right answer), late:MS,\n"
    "         duplicate, unplug\n"
    "  after  the first N times that the step is reached, nothing happens (default: 0)\n"
    "  times  then the fault strikes N times (default: each time)\n"
    "\n"
    "Examples:\n"
    "  vornsim device --dir /tmp/devices --name usbserial-demo --model 8 --erase-ms 500 "
    "--baud 2000000\n"
    "      a faultless device of model 8 on a line of 2 Mbaud\n"
    "  vornsim device --dir /tmp/devices --name usbserial-1 --fault frame:10=unplug,times=1 "
    "--replug-ms 3000\n"
    "      comes loose at the tenth frame of the first update and is back after three seconds\n"
    "  vornsim device --dir /tmp/devices --name usbserial-1 --fault sync=refuse,after=1\n"
    "      answers the first exchange and refuses every later one\n"
    "  vornsim device --exit-after 1 --image received.bin --report report.json\n"
    "      no link; ends after one update and leaves the image and the report in files\n";

void addOptions(CommandLine &line)
{
    line.addOption("dir", "Directory for the link to the terminal.", "DIR");
    line.addOption("name", "Name of the link; it is there while the device is plugged in.", "NAME");
    line.addOption("model", "Model code, 0 to 255; from 2 on the device erases (default: 8).", "N");
    line.addOption("erase-ms", "Time of the flash erase after the header (default: 0).", "MS");
    line.addOption("answer-delay-ms", "Time from a frame to its answer (default: 0).", "MS");
    line.addOption("baud", "Pace the line, ten bits a byte (default: not paced).", "N");
    line.addOption("flash-size", "A longer image is refused (default: 16777216).", "BYTES");
    line.addOption("split", "Cut the connect answer into pieces, for example 1,2.", "LENGTHS");
    line.addOption("split-gap-ms", "Time between these pieces (default: 5).", "MS");
    line.addOption("join-erase-answers", "Write the two answers around the erase as one chunk.");
    line.addOption("fault", "A fault, see below; may be given several times.", "FAULT");
    line.addOption("replug-ms", "Plug in again so long after an unplug fault.", "MS");
    line.addOption("exit-after", "End after so many completed updates.", "N");
    line.addOption("count", "The same as --exit-after.", "N");
    line.addOption("image", "Write the image of the last completed update at the end.", "FILE");
    line.addOption("report", "Write the report into a file as well.", "FILE");
}

int boundedInt(CommandLine &line, const char *name, int otherwise)
{
    const qint64 value = line.number(name, otherwise);
    if (value <= INT_MAX)
        return static_cast<int>(value);
    line.fail(QStringLiteral("--%1: %2 is too much").arg(QLatin1String(name)).arg(value));
    return otherwise;
}

DeviceOptions readOptions(CommandLine &line)
{
    DeviceOptions options;
    options.directory = line.text("dir");
    options.name = line.text("name");
    options.modelCode = boundedInt(line, "model", options.modelCode);
    options.eraseTime = line.milliseconds("erase-ms", options.eraseTime);
    options.answerDelay = line.milliseconds("answer-delay-ms", options.answerDelay);
    options.baud = boundedInt(line, "baud", options.baud);
    options.flashSize = line.number("flash-size", options.flashSize);
    options.pieceGap = line.milliseconds("split-gap-ms", options.pieceGap);
    options.joinEraseAnswers = line.isSet("join-erase-answers");
    if (line.isSet("replug-ms"))
        options.replugAfter = line.milliseconds("replug-ms", {});
    if (line.isSet("split"))
        for (const QString &piece : line.text("split").split(u','))
            options.connectPieces.push_back(piece.toInt());
    for (const QString &text : line.texts("fault")) {
        QString problem;
        if (const std::optional<Fault> fault = parseFault(text, &problem))
            options.faults.push_back(*fault);
        else
            line.fail(problem);
    }
    line.fail(deviceOptionsProblem(options));
    return options;
}

int finish(const CommandLine &line, const DeviceReport &report)
{
    bool written = true;
    if (line.isSet("image")) {
        if (report.updates > 0)
            written = writeFile(line.text("image"), report.image);
        else
            printNote(QStringLiteral("no update was completed: no image is written"));
    }
    if (line.isSet("report"))
        written =
            writeFile(line.text("report"), QJsonDocument(report.toJson()).toJson()) && written;
    printEvent("report", report.toJson());
    return written ? Success : Failure;
}

} // namespace

int runDevice(const QStringList &arguments)
{
    CommandLine line(QStringLiteral("device"), QLatin1String(Description), QLatin1String(Examples));
    addOptions(line);
    if (!line.parse(arguments))
        return Success;
    const DeviceOptions options = readOptions(line);
    const int exitAfter = boundedInt(line, line.isSet("count") ? "count" : "exit-after", 1);
    const bool ends = line.isSet("count") || line.isSet("exit-after");
    if (line.isSet("count") && line.isSet("exit-after"))
        line.fail(QStringLiteral("--count and --exit-after are the same"));
    if (exitAfter < 1)
        line.fail(QStringLiteral("--exit-after: at least one update"));
    if (line.failed())
        return line.complain();

    const StopEvents stop;
    SimulatedDevice device(options);
    device.setObserver([&](const DeviceEvent &event) {
        if (ends && event.kind == DeviceEvent::Kind::Update && event.number == exitAfter)
            stop.call();
    });
    QString problem = QStringLiteral("signals cannot be waited for");
    if (!stop.isValid() || !device.start(&problem)) {
        printNote(problem);
        return Failure;
    }
    printEvent("ready", {{QStringLiteral("path"), device.path()},
                         {QStringLiteral("terminal"), device.slavePath()}});
    stop.wait();
    device.awaitReader();
    device.unplug();
    return finish(line, device.report());
}

} // namespace vorn

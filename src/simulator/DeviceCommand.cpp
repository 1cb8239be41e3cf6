#include "platform/QuitSignals.h"
#include "simulator/CommandOptions.h"
#include "simulator/SimulatedDevice.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>

namespace vorn {

namespace {

constexpr const char *kDescription =
    "A simulated device: a boot loader on a pseudo-terminal. Prints one line of JSON when it is\n"
    "plugged in and one, the report, when it ends (SIGTERM, SIGINT or --exit-after).";

constexpr const char *kExamples =
    "A fault is STEP=KIND[,after=N][,times=N]:\n"
    "  STEP   the answer that it replaces: sync, connect, version, download, header, erase, "
    "ready,\n"
    "         frame:K (data frames count from 1) or last\n"
    "  KIND   silence, refuse (FC), garbage, noise (garbage, then the right answer), late:MS,\n"
    "         duplicate, unplug\n"
    "  after  let the step pass N times first (default: 0)\n"
    "  times  then strike N times (default: every time)\n"
    "\n"
    "Examples:\n"
    "  vornsim device --dir /tmp/devices --name usbserial-demo --erase-ms 500 --baud 2000000\n"
    "      a faultless device on a line of 2 Mbaud\n"
    "  vornsim device --dir /tmp/devices --name usbserial-1 --fault frame:10=unplug,times=1 "
    "--replug-ms 3000\n"
    "      is unplugged at the tenth frame of the first update and back after three seconds\n"
    "  vornsim device --exit-after 1 --image received.bin --report report.json\n"
    "      ends after one update and leaves the image and the report in files\n"
    "  vornsim device --dir /tmp/devices --name usbserial-1 --replay vornupdater-log.txt\n"
    "      answers as the device did whose exchange is in the saved log\n";

CommandOptions deviceCommand()
{
    return {"device",
            kDescription,
            kExamples,
            {{"dir", "DIR", "Directory for the link to the terminal."},
             {"name", "NAME", "Name of the link; it exists while the device is plugged in."},
             {"model", "N", "Model code, 0 to 255; from 2 on the device erases (default: 8)."},
             {"erase-ms", "MS", "Time of the flash erase after the header (default: 0)."},
             {"answer-delay-ms", "MS", "Time from a frame to its answer (default: 0)."},
             {"baud", "N", "Pace the line, at ten bits a byte (default: not paced)."},
             {"flash-size", "BYTES", "Refuse a longer image (default: 16777216)."},
             {"split", "LENGTHS", "Split the connect answer into pieces, for example 1,2."},
             {"split-gap-ms", "MS", "Time between these pieces (default: 5)."},
             {"join-erase-answers", nullptr, "Send both answers to the header in one write."},
             {"fault", "FAULT", "A fault, see below; may be given several times."},
             {"replug-ms", "MS", "Plug in again this long after an unplug fault."},
             {"replay", "FILE",
              "Replay the transcript in a saved log; only --dir, --name, --replug-ms and "
              "--report go with it."},
             {"exit-after", "N", "End after this many completed updates."},
             {"image", "FILE", "At the end, write the image of the last completed update."},
             {"report", "FILE", "Write the report to a file as well."}}};
}

std::vector<int> connectPieces(const CommandOptions &line)
{
    constexpr int kConnectAnswerLength = 4;
    std::vector<int> pieces;
    int left = kConnectAnswerLength;
    for (const QString &text : line.text("split").split(u',')) {
        const int piece = text.toInt();
        if (piece < 1 || piece > left)
            line.fail(QStringLiteral("only the four bytes of the connect answer can be split"));
        pieces.push_back(piece);
        left -= piece;
    }
    return pieces;
}

// The text of the transcript; empty without one.
QString transcript(const CommandOptions &line)
{
    if (!line.isSet("replay"))
        return {};
    for (const char *option :
         {"model", "erase-ms", "answer-delay-ms", "baud", "flash-size", "split", "split-gap-ms",
          "join-erase-answers", "fault", "exit-after", "image"})
        if (line.isSet(option))
            line.fail(QStringLiteral("--%1 contradicts --replay").arg(QLatin1String(option)));
    QFile file(line.text("replay"));
    if (!file.open(QIODevice::ReadOnly))
        line.fail(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    QString text = QString::fromUtf8(file.readAll());
    if (Replay(text).report().entries == 0)
        line.fail(QStringLiteral("%1: there is no transcript in it").arg(file.fileName()));
    return text;
}

DeviceOptions deviceOptions(const CommandOptions &line)
{
    DeviceOptions options;
    options.directory = line.text("dir");
    options.name = line.text("name");
    options.replay = transcript(line);
    options.modelCode = static_cast<int>(line.number("model", options.modelCode, 255));
    options.eraseTime = line.milliseconds("erase-ms", options.eraseTime);
    options.answerDelay = line.milliseconds("answer-delay-ms", options.answerDelay);
    options.baud = static_cast<int>(line.number("baud", options.baud, kAnyInt));
    options.flashSize = line.number("flash-size", options.flashSize, kAnyNumber, 1);
    options.pieceGap = line.milliseconds("split-gap-ms", options.pieceGap);
    options.joinEraseAnswers = line.isSet("join-erase-answers");
    if (line.isSet("replug-ms"))
        options.replugAfter = line.milliseconds("replug-ms", {});
    if (line.isSet("split"))
        options.connectPieces = connectPieces(line);
    for (const QString &text : line.texts("fault")) {
        QString problem;
        const std::optional<Fault> fault = parseFault(text, &problem);
        if (!fault)
            line.fail(problem);
        if (fault->step == BootStep::Erase && options.modelCode < boot::kFirstErasingModel)
            line.fail(QStringLiteral("only model codes from 2 on have the step erase"));
        options.faults.push_back(*fault);
    }
    if (options.directory.isEmpty() != options.name.isEmpty())
        line.fail(QStringLiteral("a directory and a name belong together"));
    if (options.name.contains(u'/'))
        line.fail(QStringLiteral("\"%1\" is not a valid file name").arg(options.name));
    return options;
}

bool writeImage(const CommandOptions &line, const DeviceReport &report)
{
    if (!line.isSet("image"))
        return true;
    if (report.updates > 0)
        return writeFile(line.text("image"), report.image);
    printNote(QStringLiteral("no image is written, since no update was completed"));
    return true;
}

} // namespace

int runDevice(const QStringList &arguments)
{
    CommandOptions line = deviceCommand();
    if (!line.parse(arguments))
        return kExitSuccess;
    SimulatedDevice device(deviceOptions(line));
    const qint64 exitAfter = line.number("exit-after", 0, kAnyInt, 1);

    QuitSignals quitSignals;
    quitSignals.watch();
    QSocketNotifier updated(device.updated().descriptor(), QSocketNotifier::Read);
    QObject::connect(&updated, &QSocketNotifier::activated, &updated, [&] {
        device.updated().clear();
        if (exitAfter > 0 && device.report().updates >= exitAfter)
            QCoreApplication::exit();
    });
    QString problem;
    if (!device.start(&problem))
        throw CommandFailure{kExitFailure, problem};
    printEvent("ready", {{QStringLiteral("path"), device.path()},
                         {QStringLiteral("terminal"), device.slavePath()}});
    QCoreApplication::exec();

    quitSignals.letKill();
    if (exitAfter > 0 && device.report().updates >= exitAfter)
        device.awaitReader();
    const DeviceReport report = device.report();
    device.unplug();
    const bool imageWritten = writeImage(line, report);
    return giveReport(line, report.toJson()) && imageWritten ? kExitSuccess : kExitFailure;
}

} // namespace vorn

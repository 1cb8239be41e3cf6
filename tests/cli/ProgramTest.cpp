// The program itself: its commands, their exit codes and what they leave.
#include "tests/cli/ProgramRig.h"

namespace vorn {
namespace {

TEST_F(CliTest, EveryFailureHasItsExitCodeItsWordAndOneLine)
{
    struct Row
    {
        QString fault;
        QString arguments;
        int exitCode;
        QString cause;
        int opens = 1;
    };
    const QString file = "update --firmware " + home.filePath("VornUpdate2/");
    for (const Row &row : std::vector<Row>{
             {"", "update --newest", 0, ""},
             {"", "info", 0, ""},
             {"", "update --newest nobody", 3, "no-device", 0},
             {"connect=silence", "--timeout-scale 0.02 info usbserial-A", 5, "no-answer"},
             {"frame:3=silence", "--timeout-scale 0.02 update --newest", 5, "no-answer"},
             {"connect=refuse", "update --newest", 6, "refused"},
             {"frame:3=unplug", "update --newest", 7, "unplugged"},
             {"", "update --firmware /nowhere", 8, "bad-image", 0},
             {"", file + "empty.bin", 8, "bad-image", 0},
             {"", file + "VORN_I-9.0.bin", 8, "wrong-model"},
             {"", "download", 9, "download-failed", 0},
             {"", "--package-host 127.0.0.1:1 download", 9, "download-failed", 0},
         }) {
        SCOPED_TRACE(qPrintable(row.arguments + " " + row.cause));
        devices.clear();
        const SimulatedDevice &device = addDevice("usbserial-A", row.fault);
        EXPECT_EQ(run("--json " + row.arguments), row.exitCode) << err.constData();
        EXPECT_EQ(lastEvent()["event"], "result");
        EXPECT_EQ(lastEvent()["result"], row.cause.isEmpty() ? "ok" : "failed");
        EXPECT_EQ(lastEvent()["cause"].toString(), row.cause);
        EXPECT_EQ(err.count('\n'), row.cause.isEmpty() ? 0 : 1) << err.constData();
        EXPECT_EQ(device.report().opens, row.opens);
        EXPECT_TRUE(row.cause != "wrong-model" || device.report().declaredLength == 0);
    }
    for (const char *arguments :
         {"", "--nonsense", "nonsense", "update", "update --newest --firmware x", "list x",
          "watch --newest x", "--timeout-scale 0 list", "firmware --model x",
          "update --newest --all x"}) {
        EXPECT_EQ(run(arguments), 2) << arguments;
        EXPECT_TRUE(out.isEmpty());
        EXPECT_TRUE(err.contains("--help"));
    }
    QDir(home.filePath("VornUpdate2")).removeRecursively();
    writeFile(home.filePath("VornUpdate2"), {});
    for (const char *arguments : {"--json firmware", "--json update --newest"}) {
        EXPECT_EQ(run(arguments), 8) << arguments;
        EXPECT_TRUE(err.contains("Not a directory")) << err.constData();
    }
}

TEST_F(CliTest, APortThatCannotBeOpenedSaysWhy)
{
    const SimulatedDevice &device = addDevice("usbserial-A");
    const int held = ::open(qPrintable(device.path()), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    EXPECT_EQ(run("--json info"), 4);
    EXPECT_EQ(lastEvent()["cause"], "busy");
    EXPECT_EQ(lastEvent()["errno"], EBUSY);
    EXPECT_TRUE(err.contains("(process ")) << err.constData();
    ::close(held);

    ASSERT_TRUE(QFile::link("/dev/null", plugged.filePath("usbserial-null")));
    EXPECT_EQ(run("info usbserial-null"), 4);
    EXPECT_TRUE(err.contains("not a serial port"));
}

TEST_F(CliTest, SeveralDevicesAreUpdatedSideBySideAndOneFailureHarmsNoOther)
{
    addDevice("usbserial-A");
    EXPECT_EQ(run("update --newest"), 0);
    addDevice("usbserial-B", "frame:20=refuse");
    addDevice("usbserial-C");
    addDevice("other");

    EXPECT_EQ(run("update --newest"), 3);
    EXPECT_TRUE(err.contains("usbserial-A, usbserial-B, usbserial-C"));
    EXPECT_EQ(run("--json update --newest --all"), 1);
    QStringList results;
    for (const QJsonObject &event : objectsIn(out))
        if (event["event"] == "result")
            results.append(event["device"].toString() + event["cause"].toString());
    results.sort();
    EXPECT_EQ(results, QStringList({"usbserial-A", "usbserial-Brefused", "usbserial-C"}));
    // The newest for the model, by number and not a trial version.
    const QByteArray image = readFile(firmware("VORN_PLATINA-3.10.0.bin"));
    EXPECT_EQ(devices[0]->report().updates, 2);
    EXPECT_TRUE(devices[0]->report().image == image && devices[2]->report().image == image);
    EXPECT_EQ(devices[3]->report().opens, 0);

    // By its node, which no other rule would choose.
    const QString other = firmware("VORN_I-9.0.bin");
    EXPECT_EQ(run("update --force --firmware " + other + " " + devices[3]->path()), 0);
    EXPECT_EQ(devices[3]->report().image, readFile(other));
}

TEST_F(CliTest, TheFirstCtrlCGoesOnAndTheSecondEndsBetweenTwoFrames)
{
    for (const bool isSecond : {false, true}) {
        devices.clear();
        const SimulatedDevice &device = addDevice("usbserial-A", "frame:80=late:1500", 500'000);
        out.clear();
        err.clear();
        ASSERT_NO_FATAL_FAILURE(start("--json update --newest"));
        ASSERT_TRUE(waitForOutput("\"percent\""));
        pressCtrlC();
        ASSERT_TRUE(eventually([&] {
            err += program.readAllStandardError();
            return err.contains("half written");
        }));
        if (isSecond)
            pressCtrlC();
        EXPECT_EQ(finish(), isSecond ? 10 : 0);
        const DeviceReport report = device.report();
        EXPECT_EQ(report.errors, QStringList());
        EXPECT_EQ(report.updates, isSecond ? 0 : 1);
        EXPECT_EQ(lastEvent()["cause"].toString(), isSecond ? "interrupted" : "");
        EXPECT_EQ(report.partialImage.size() % 250, 0);
    }
}

TEST_F(CliTest, AStationUpdatesEachDeviceOncePerPlugInAndKeepsARecord)
{
    constexpr int kRounds = 20;
    constexpr int kKilledAfter = 5; // rounds, as if by a power cut
    constexpr int kDevices = 10;    // the last one is faulty
    const QString file = firmware("VORN_PLATINA-3.9.0.bin");
    const QByteArray image = readFile(file);
    const QString record = home.filePath("record");
    for (int i = 1; i <= kDevices; ++i)
        addDevice(QString("usbserial-%1").arg(i), i < kDevices ? "" : "frame:7=refuse").unplug();
    const QString arguments = "--json watch --firmware " + file + " --record " + record;
    ASSERT_NO_FATAL_FAILURE(start(arguments));
    const auto held = [this](const char *kind) {
        return QDir(QString("/proc/%1/%2").arg(program.processId()).arg(kind)).count();
    };
    uint descriptors = 0;
    for (int round = 1; round <= kRounds; ++round) {
        for (const auto &device : devices)
            ASSERT_TRUE(device->replug());
        out.clear();
        ASSERT_TRUE(waitForOutput("\"event\":\"result\"", kDevices)) << round;
        for (const auto &device : devices) {
            const bool isFaulty = device == devices.back();
            ASSERT_EQ(device->report().updates, isFaulty ? 0 : round);
            ASSERT_EQ(device->report().image, isFaulty ? QByteArray() : image);
            device->unplug();
        }
        if (round == kKilledAfter) {
            program.kill();
            ASSERT_TRUE(program.waitForFinished());
            ASSERT_NO_FATAL_FAILURE(start(arguments));
        } else if (round == kKilledAfter + 1) {
            descriptors = held("fd");
        }
    }
    EXPECT_TRUE(eventually([&] { return held("fd") <= descriptors; })) << held("fd");
    // The pool keeps as many as were busy at once.
    EXPECT_LT(held("task"), kRounds * kDevices / 2U);
    pressCtrlC();
    EXPECT_EQ(finish(), 1);
    constexpr int kLater = kRounds - kKilledAfter;
    EXPECT_EQ(lastEvent()["good"], kLater * (kDevices - 1));
    EXPECT_EQ(lastEvent()["failed"], kLater);
    EXPECT_EQ(err.count("plug it in again"), kLater) << err.constData();

    const QByteArray sha256 = QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex();
    QMap<QString, int> lines;
    for (QJsonObject line : objectsIn(readFile(record))) {
        EXPECT_TRUE(line.take("time").toString().endsWith(u'Z'));
        EXPECT_GT(line.take("seconds").toDouble(), 0);
        const QString name = line.take("device").toString();
        ++lines[name];
        const bool isFaulty = name == "usbserial-10";
        EXPECT_EQ(line, QJsonObject({{"model", 8},
                                     {"file", file},
                                     {"sha256", QString::fromLatin1(sha256)},
                                     {"result", isFaulty ? "failed" : "ok"},
                                     {"cause", isFaulty ? QJsonValue("refused") : QJsonValue()}}));
    }
    EXPECT_EQ(lines.values(), QList<int>(kDevices, kRounds));
}

TEST_F(CliTest, DownloadFetchesThePackageOnce)
{
    QFileInfo(firmware("x")).dir().removeRecursively(); // as before the first download
    PackageServer server(
        {.package = samplePackage(), .lastModified = "Tue, 14 Jan 2025 10:00:00 GMT"});
    ASSERT_TRUE(server.start());
    const QString arguments =
        "--package-host " + server.host() + " --package-ca " + server.authorityFile() + " download";
    EXPECT_EQ(run(arguments), 0) << err.constData();
    EXPECT_TRUE(out.contains("is installed.")) << out.constData();
    EXPECT_TRUE(QFile::exists(firmware("VORN_PLATINA-3.3.0-beta.bin")));
    EXPECT_EQ(run(arguments), 0);
    EXPECT_TRUE(out.contains("installed already")) << out.constData();
}

TEST_F(CliTest, WhatItCreatesIsForItsUserAloneWhateverTheUmask)
{
    PackageServer server({.package = samplePackage(), .lastModified = "x"});
    ASSERT_TRUE(server.start());
    for (const mode_t mask : {mode_t{0}, mode_t{0077}}) {
        const QTemporaryDir outer;
        const QString fresh = outer.filePath("fresh");
        QProcessEnvironment environment = program.processEnvironment();
        environment.insert("XDG_CACHE_HOME", fresh + "/cache");
        environment.insert("XDG_CONFIG_HOME", fresh + "/config");
        program.setProcessEnvironment(environment);
        program.setChildProcessModifier([mask] { ::umask(mask); });
        EXPECT_EQ(run("--package-host " + server.host() + " --package-ca " +
                      server.authorityFile() + " download"),
                  0);
        ASSERT_NO_FATAL_FAILURE(start("watch --newest --record " + fresh + "/record"));
        ASSERT_TRUE(eventually([&] { return QFile::exists(fresh + "/record"); }));
        pressCtrlC();
        finish();
        int items = 0;
        for (QDirIterator item(outer.path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                               QDirIterator::Subdirectories);
             item.hasNext(); ++items) {
            struct stat status = {};
            EXPECT_EQ(::lstat(qPrintable(item.next()), &status), 0);
            EXPECT_EQ(status.st_mode & 07777, S_ISDIR(status.st_mode) ? 0700U : 0600U)
                << qPrintable(item.filePath());
        }
        EXPECT_GE(items, 12); // 5 folders, 5 images, the package, the settings, the record
    }
}

TEST_F(CliTest, OnlyRootIsWarnedAndNotInTheJsonText)
{
    const bool isRootHere = ::geteuid() == 0;
    for (const bool isRoot : {true, false}) {
        QStringList command{VORNUPDATER_CLI, "--json", "list"};
        if (isRoot && !isRootHere)
            continue;
        if (isRootHere && !isRoot)
            command = QStringList{"setpriv", "--reuid=65534", "--clear-groups"} + command;
        program.start(command.takeFirst(), command);
        ASSERT_TRUE(program.waitForFinished(20'000));
        constexpr int kNotExecutable = 126; // and 127: not found
        if (program.exitCode() == kNotExecutable || program.exitCode() == kNotExecutable + 1)
            GTEST_SKIP() << "other users cannot reach the program";
        ASSERT_EQ(program.exitCode(), 0) << program.readAllStandardError().constData();
        EXPECT_EQ(program.readAllStandardError().contains(kRootNote), isRoot);
        EXPECT_FALSE(program.readAllStandardOutput().contains("root"));
    }
}

} // namespace
} // namespace vorn

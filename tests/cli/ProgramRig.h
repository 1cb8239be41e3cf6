#pragma once

#include "platform/FileDescriptor.h"
#include "simulator/PackageServer.h"
#include "simulator/SampleFirmware.h"
#include "simulator/SimulatedDevice.h"
#include "tests/support/QtPrinting.h"
#include "tests/support/TestImage.h"
#include "tests/support/TestTerminal.h"
#include "tests/ziparchive/Tree.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

namespace vorn {

using namespace std::chrono_literals;

inline const QByteArray kRootNote =
    "The program runs as root: it unpacks downloads with all rights, into root's folder. "
    "Start it as an ordinary user; the group dialout or the package gives access to the device.\n";

inline QList<QJsonObject> objectsIn(const QByteArray &text)
{
    QList<QJsonObject> objects;
    for (const QByteArray &line : text.split('\n')) {
        const QJsonObject object = QJsonDocument::fromJson(line).object();
        EXPECT_NE(line.isEmpty(), object.contains("event") || object.contains("time"))
            << line.constData();
        if (!object.isEmpty())
            objects.append(object);
    }
    return objects;
}

// Runs the program as a script would, against simulated devices.
struct CliTest : testing::Test
{
    CliTest()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
            environment.insert(name, home.path());
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS"})
            environment.remove(name);
        environment.insert("TERM", "xterm");
        program.setProcessEnvironment(environment);
        for (const auto &[name, size] : {std::pair("VORN_PLATINA-3.9.0.bin", 2000),
                                         {"VORN_PLATINA-3.10.0-beta.bin", 3000},
                                         {"VORN_PLATINA-3.10.0.bin", 40'000},
                                         {"VORN_I-9.0.bin", 5000},
                                         {"empty.bin", 0}})
            writeFile(firmware(name), imageOf(size));
    }
    ~CliTest() override
    {
        program.kill();
        program.waitForFinished();
    }

    QString firmware(const QString &name) const { return home.filePath("VornUpdate2/" + name); }
    SimulatedDevice &addDevice(const QString &name, const QString &fault = {}, int baud = 0)
    {
        DeviceOptions options;
        options.directory = plugged.path();
        options.name = name;
        for (const QString &each : fault.split(u' ', Qt::SkipEmptyParts))
            options.faults.push_back(parseFault(each, nullptr).value());
        options.baud = baud;
        devices.push_back(std::make_unique<SimulatedDevice>(options));
        EXPECT_TRUE(devices.back()->start());
        return *devices.back();
    }

    void start(const QString &arguments)
    {
        program.start(VORNUPDATER_CLI, QStringList{"--device-dir", plugged.path()} +
                                           arguments.split(u' ', Qt::SkipEmptyParts));
        ASSERT_TRUE(program.waitForStarted(20'000));
    }
    // The exit code, once everything that the program wrote is in `out` and `err`.
    int finish()
    {
        EXPECT_TRUE(eventually([&] { return program.state() == QProcess::NotRunning; }, 60s));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        out += program.readAllStandardOutput();
        err += program.readAllStandardError();
        if (::geteuid() == 0)
            err.replace(kRootNote, {});
        return program.exitCode();
    }
    int run(const QString &arguments)
    {
        out.clear();
        err.clear();
        start(arguments);
        return finish();
    }
    void pressCtrlC() const { ::kill(static_cast<pid_t>(program.processId()), SIGINT); }
    QJsonObject lastEvent() const { return objectsIn(out).value(objectsIn(out).size() - 1); }
    bool waitForOutput(const QByteArray &text, int times = 1)
    {
        return eventually([&] {
            out += program.readAllStandardOutput();
            return out.count(text) >= times;
        });
    }

    // A pipe as standard output; returns the end to read from.
    FileDescriptor pipeOutput()
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        pipe = FileDescriptor(ends[1]);
        program.setChildProcessModifier([fd = ends[1]] { ::dup2(fd, STDOUT_FILENO); });
        return FileDescriptor(ends[0]);
    }

    const QTemporaryDir home;
    const QTemporaryDir plugged;
    std::vector<std::unique_ptr<SimulatedDevice>> devices;
    FileDescriptor pipe;
    QProcess program;
    QByteArray out;
    QByteArray err;
};

} // namespace vorn

#include "platform/DesktopNotifications.h"
#include "platform/MessageBus.h"
#include "platform/PowerEvents.h"
#include "platform/SleepBlock.h"
#include "tests/support/Eventually.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalServer>
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <sys/prctl.h>

#include <csignal>

namespace vorn {
namespace {

constexpr int kLimit = 20000; // ms to wait for what must come

// A bus of the test's own, with mocked services on it.
class DesktopTest : public testing::Test
{
protected:
    DesktopTest()
    {
        // They end with the test also when it is killed.
        for (QProcess *const process : {&m_daemon, &m_service})
            process->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        // Without the machine's own services, which a call would start.
        QFile config(m_directory.filePath("bus.conf"));
        EXPECT_TRUE(config.open(QIODevice::WriteOnly));
        config.write(
            "<busconfig><type>session</type><listen>unix:tmpdir=" + m_directory.path().toUtf8() +
            "</listen>"
            "<policy context='default'><allow send_destination='*'/><allow receive_type='*'/>"
            "<allow own='*'/>"
            "</policy></busconfig>");
        config.close();
        m_daemon.start("dbus-daemon",
                       {"--config-file", config.fileName(), "--nofork", "--print-address"});
        m_daemon.waitForReadyRead(kLimit);
        m_address = QString::fromUtf8(m_daemon.readLine().trimmed());
        m_bus = QDBusConnection::connectToBus(m_address, m_address);
        EXPECT_TRUE(m_bus.isConnected()) << qPrintable(m_bus.lastError().message());
    }
    ~DesktopTest() override
    {
        QDBusConnection::disconnectFromBus(m_address);
        for (QProcess *const process : {&m_service, &m_daemon}) {
            process->kill();
            process->waitForFinished();
        }
    }

    void startService(const QString &mockTemplate, const QString &name, const QString &path)
    {
        m_name = name;
        m_path = path;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DBUS_SESSION_BUS_ADDRESS", m_address);
        environment.insert("DBUS_SYSTEM_BUS_ADDRESS", m_address);
        m_service.setProcessEnvironment(environment);
        m_service.start("/usr/bin/python3", {"-m", "dbusmock", "--template", mockTemplate});
        ASSERT_TRUE(eventually([&] { return ask("GetMethodCalls", {"none"}).isValid(); }));
    }
    // The first value that the mock answers to a call of its own interface, or of another.
    QVariant ask(const QString &method, const QVariantList &arguments,
                 const QString &interface = "org.freedesktop.DBus.Mock")
    {
        QDBusMessage call = QDBusMessage::createMethodCall(m_name, m_path, interface, method);
        call.setArguments(arguments);
        // Waits with the event loop running, as the program would.
        QDBusPendingCall pending = m_bus.asyncCall(call);
        EXPECT_TRUE(eventually([&] { return pending.isFinished(); }));
        return pending.isError() ? QVariant() : pending.reply().arguments().value(0);
    }
    void startLogind()
    {
        startService("logind", "org.freedesktop.login1", "/org/freedesktop/login1");
    }
    // The locks that logind has granted: "mode what by whom: why".
    QStringList locks()
    {
        const QVariant answer = ask("ListInhibitors", {}, kLogindInterface);
        EXPECT_TRUE(answer.isValid());
        QStringList locks;
        const auto list = answer.value<QDBusArgument>();
        for (list.beginArray(); !list.atEnd(); list.endStructure()) {
            list.beginStructure();
            QString what;
            QString who;
            QString why;
            QString mode;
            list >> what >> who >> why >> mode; // leaves out user and process
            locks += mode + ' ' + what + " by " + who + ": " + why;
        }
        list.endArray();
        return locks;
    }

    const QTemporaryDir m_directory;
    QProcess m_daemon;
    QProcess m_service;
    QString m_address;
    QString m_name;
    QString m_path;
    QDBusConnection m_bus{QString()};
};

TEST_F(DesktopTest, EachMessageReachesTheNotificationServiceWithoutSound)
{
    startService("notification_daemon", "org.freedesktop.Notifications",
                 "/org/freedesktop/Notifications");
    DesktopNotifications notifications(m_bus);
    for (const char *text : {"a<b was connected", "c was connected"})
        notifications.deliver("Serial Port Connected", text);
    QByteArray calls; // as the mock writes them
    ASSERT_TRUE(eventually([&] {
        calls += m_service.readAll();
        return calls.count('\n') >= 2;
    }));
    for (const char *text : {"a&lt;b was connected", "c was connected"})
        EXPECT_TRUE(calls.contains(
            R"( Notify "VornUpdaterTests" 0 "VornUpdaterTests" "Serial Port Connected" ")" +
            QByteArray(text) +
            R"(" [] {"desktop-entry": "VornUpdaterTests", "suppress-sound": True} -1)"))
            << calls.toStdString();

    // While the service hangs, a storm of plug-ins queues only a few.
    ASSERT_EQ(::kill(static_cast<pid_t>(m_service.processId()), SIGSTOP), 0);
    for (int i = 0; i < 200; ++i)
        notifications.deliver("Serial Port Connected", "storm");
    ASSERT_EQ(::kill(static_cast<pid_t>(m_service.processId()), SIGCONT), 0);
    ASSERT_TRUE(eventually([&] {
        notifications.deliver("Serial Port Connected", "after it");
        calls += m_service.readAll();
        return calls.contains("after it");
    }));
    EXPECT_LE(calls.count("storm"), 64);
}

TEST_F(DesktopTest, SleepWaitsForTheCallbackAndForWhatItHolds)
{
    startLogind();
    const auto prepareForSleep = [&](bool begins) {
        ask("EmitSignal", {kLogindInterface, "PrepareForSleep", "b", QVariantList{begins}});
    };
    const auto isDelayed = [&] { return locks().join(u'|').startsWith(u"delay sleep by "); };
    QStringList told;
    InhibitorLock hold;
    std::unique_ptr<PowerEvents> events;
    events = std::make_unique<PowerEvents>(
        [&] {
            told += "sleep";
            hold = events->delaySleep();
        },
        [&] { told += "wake"; }, m_bus);
    for (int round = 1; round <= 2; ++round) {
        ASSERT_TRUE(eventually([&] { return isDelayed() && events->delaySleep(); }));
        told.clear();
        prepareForSleep(true);
        EXPECT_TRUE(eventually([&] { return told == QStringList("sleep"); }));
        EXPECT_NE(hold, nullptr);
        EXPECT_TRUE(isDelayed());
        hold.reset();
        EXPECT_TRUE(eventually([&] { return !isDelayed(); }));
        prepareForSleep(false);
        EXPECT_TRUE(eventually([&] { return told == QStringList({"sleep", "wake"}); }));
    }
}

TEST_F(DesktopTest, ABlockHoldsFromTheAnswerToItsEndAndNoLonger)
{
    startLogind();
    auto block = std::make_unique<SleepBlock>("An update runs", m_bus);
    { // ends before it is answered
        const SleepBlock brief("brief", m_bus);
    }
    const QString rest = " by VornUpdaterTests: An update runs";
    const QStringList both{"block sleep:shutdown" + rest, "block handle-lid-switch" + rest};
    ASSERT_TRUE(eventually([&] { return locks() == both; })) << qPrintable(locks().join(u'|'));
    block.reset();
    EXPECT_TRUE(eventually([&] { return locks().isEmpty(); }));
}

TEST_F(DesktopTest, WithoutABusOrServiceOrAnswerNothingHappensAndNobodyWaits)
{
    const auto fail = [] { ADD_FAILURE() << "no sleep was announced"; };
    for (const std::string_view missing : {"service", "bus", "answer"}) {
        const QDBusConnection bus = missing == "bus" ? QDBusConnection("none") : m_bus;
        QElapsedTimer clock;
        clock.start();
        {
            // Made while the bus answers: Qt waits there for the owner of logind's name.
            const PowerEvents events(fail, fail, bus);
            if (missing == "answer") {
                ASSERT_EQ(::kill(static_cast<pid_t>(m_daemon.processId()), SIGSTOP), 0);
            }
            DesktopNotifications notifications(bus);
            notifications.deliver("a", "b");
            const SleepBlock block("reason", bus);
            EXPECT_LT(clock.elapsed(), 1000) << missing;
            runEventLoopFor(std::chrono::milliseconds(100));
            EXPECT_EQ(events.delaySleep(), nullptr);
            notifications.deliver("c", "d"); // unanswered when its sender ends
        }
        EXPECT_LT(clock.elapsed(), 2000) << missing;
    }
}

TEST_F(DesktopTest, ABusThatAcceptsAndNeverAnswersIsLeftOut)
{
    const QByteArrayList variables{"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"};
    const QByteArrayList before{qgetenv(variables[0]), qgetenv(variables[1])};
    QLocalServer silent;
    ASSERT_TRUE(silent.listen(m_directory.filePath("silent")));
    qputenv(variables[0], "unix:path=" + silent.fullServerName().toUtf8() + ",guid=0a");
    qputenv(variables[1], m_address.toUtf8());
    disableSilentBuses(std::chrono::seconds(1));
    EXPECT_EQ(qgetenv(variables[0]), "disabled:");
    EXPECT_EQ(qgetenv(variables[1]), m_address.toUtf8());
    EXPECT_FALSE(
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, "left out").isConnected());
    for (qsizetype i = 0; i < variables.size(); ++i)
        before[i].isNull() ? qunsetenv(variables[i]) : qputenv(variables[i], before[i]);
}

} // namespace
} // namespace vorn

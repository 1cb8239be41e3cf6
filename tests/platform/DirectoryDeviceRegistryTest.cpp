#include "platform/DirectoryDeviceRegistry.h"

#include "platform/CombinedDeviceRegistry.h"
#include "tests/platform/RegistryWatcher.h"
#include "tests/support/TestTerminal.h"

#include <QDir>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace vorn {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DirectoryDeviceRegistryTest : public testing::Test
{
protected:
    QString path(const QString &entry) const { return m_directory.filePath(entry); }
    void link(const TestTerminal &terminal, const QString &entry) const
    {
        EXPECT_TRUE(QFile::link(terminal.path(), path(entry)));
    }
    void rename(const QString &from, const QString &to) const
    {
        EXPECT_EQ(::rename(QFile::encodeName(path(from)), QFile::encodeName(path(to))), 0);
    }

    const QTemporaryDir m_directory;
    const TestTerminal m_terminal;
    const TestTerminal m_other;
};

TEST_F(DirectoryDeviceRegistryTest, EveryEntryThatLeadsToATerminalIsADeviceWithASplitName)
{
    for (const char *entry : {"usbserial-demo-1", "usbmodem-", "left-right-3", "ttyS12",
                              "bad\nna\x1bme", "a", ".hidden"})
        link(m_terminal, entry);
    EXPECT_TRUE(QFile::link("/nowhere", path("dangling")));
    EXPECT_TRUE(QFile(path("plain file")).open(QIODevice::WriteOnly));
    EXPECT_TRUE(QDir(m_directory.path()).mkdir("folder"));
    const auto devices = DirectoryDeviceRegistry(m_directory.path()).devices();
    QStringList halves;
    for (const SerialDeviceHandle &device : devices)
        halves += device->ttyBaseName + '|' + device->ttySuffix;
    ASSERT_THAT(halves, ElementsAre("a|", "bad_na_me|", "left-right-|3", "ttyS|12", "usbmodem-|",
                                    "usbserial-|demo-1"));
    EXPECT_EQ(devices.at(1)->calloutDevice, path("bad\nna\x1bme"));
    EXPECT_EQ(devices.at(5)->dialinDevice, path("usbserial-demo-1"));
}

TEST_F(DirectoryDeviceRegistryTest, EntriesComeAndGoLikeDevices)
{
    DirectoryDeviceRegistry registry(m_directory.path());
    RegistryWatcher watcher(registry);
    link(m_terminal, "one");
    link(m_other, "two");
    EXPECT_EQ(watcher.take(1), Batches({{"+one", "+two"}}));
    const auto told = watcher.last();
    EXPECT_EQ(registry.devices(), told);
    QFile::remove(path("one"));
    QFile::remove(path("two"));
    EXPECT_EQ(watcher.take(1), Batches({{"-one", "-two"}}));
    EXPECT_EQ(watcher.last(), told);

    link(m_terminal, ".new");
    rename(".new", "three"); // put in place at once, as careful programs do
    EXPECT_EQ(watcher.take(1), Batches({{"+three"}}));
    rename("three", "four");
    EXPECT_EQ(watcher.take(2), Batches({{"-three"}, {"+four"}}));
}

TEST_F(DirectoryDeviceRegistryTest, AReplacedEntryIsRemovedAndAdded)
{
    link(m_terminal, "dev");
    DirectoryDeviceRegistry registry(m_directory.path());
    RegistryWatcher watcher(registry);
    link(m_terminal, ".new");
    rename(".new", "dev"); // its terminal may be another one of the same number
    EXPECT_EQ(watcher.take(2), Batches({{"-dev"}, {"+dev"}}));
    EXPECT_TRUE(QDir(m_directory.path()).mkdir(".elsewhere"));
    rename("dev", ".elsewhere/dev"); // the same entry, out and in again
    rename(".elsewhere/dev", "dev");
    EXPECT_EQ(watcher.take(2), Batches({{"-dev"}, {"+dev"}}));
}

TEST_F(DirectoryDeviceRegistryTest, AllDevicesGoWithTheDirectory)
{
    for (const bool moved : {true, false}) {
        EXPECT_TRUE(QDir(m_directory.path()).mkpath("devices"));
        link(m_terminal, "devices/one");
        link(m_other, "devices/two");
        DirectoryDeviceRegistry registry(path("devices"));
        RegistryWatcher watcher(registry);
        if (moved)
            rename("devices", "elsewhere");
        else
            EXPECT_TRUE(QDir(path("devices")).removeRecursively());
        EXPECT_EQ(watcher.take(1), Batches({{"-one", "-two"}}));
        EXPECT_THAT(registry.devices(), IsEmpty());
    }
}

TEST_F(DirectoryDeviceRegistryTest, SeveralRegistriesAreOne)
{
    EXPECT_TRUE(QDir(m_directory.path()).mkdir("a") && QDir(m_directory.path()).mkdir("b"));
    CombinedDeviceRegistry::Registries registries;
    for (const char *name : {"a", "b", "missing"})
        registries.push_back(std::make_unique<DirectoryDeviceRegistry>(path(name)));
    CombinedDeviceRegistry registry(std::move(registries));
    RegistryWatcher watcher(registry); // although one cannot be watched
    link(m_terminal, "b/two");
    EXPECT_EQ(watcher.take(1), Batches({{"+two"}}));
    link(m_other, "a/one");
    EXPECT_EQ(watcher.take(1), Batches({{"+one"}}));
    EXPECT_THAT(namesOf(registry.devices()), ElementsAre("one", "two"));
}

} // namespace
} // namespace vorn

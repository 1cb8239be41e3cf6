#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QMap>

#include <memory>
#include <vector>

// GLib's names collide with Qt's keywords.
#undef signals
#include <umockdev.h>

namespace vorn {

// A mocked /sys with USB adapters and their ports, which udev's own library reads and watches. Only
// in a program that umockdev-wrapper runs.
class MockedUdev
{
public:
    struct Adapter
    {
        QByteArray place;
        QByteArray serialNumber; // empty: it has none
        QByteArray driver = "ftdi_sio";
    };
    struct Port
    {
        QByteArray kernelName;
        int interfaceNumber = 0;
        int portNumber = 0;
    };

    QByteArray add(const char *subsystem, const QByteArray &name, const QByteArray &parent,
                   const QMap<QByteArray, QByteArray> &attributes,
                   const QMap<QByteArray, QByteArray> &properties)
    {
        QByteArrayList texts;
        // Names and values in turn, and a null pointer.
        const auto flat = [&texts](const QMap<QByteArray, QByteArray> &map) {
            std::vector<gchar *> list;
            for (auto it = map.begin(); it != map.end(); ++it) {
                for (const QByteArray &text : {it.key(), it.value()})
                    list.push_back(texts.emplaceBack(text.constData()).data());
            }
            list.push_back(nullptr);
            return list;
        };
        const std::unique_ptr<gchar, decltype(&g_free)> path(
            umockdev_testbed_add_devicev(m_testbed.get(), subsystem, name.constData(),
                                         parent.isEmpty() ? nullptr : parent.constData(),
                                         flat(attributes).data(), flat(properties).data()),
            &g_free);
        m_devices.append(path.get());
        return path.get();
    }

    // Adds a port of an adapter (and the adapter before its first port); its path in /sys.
    QByteArray plug(const Adapter &adapter, const Port &port)
    {
        QByteArray &device = m_adapters[adapter.place];
        if (device.isEmpty())
            device = add("usb", adapter.place, {}, {}, {{"DEVTYPE", "usb_device"}});
        const QByteArray number = QByteArray::number(port.interfaceNumber);
        QByteArray &interface = m_adapters[adapter.place + ':' + number];
        if (interface.isEmpty())
            interface = add("usb", adapter.place + ":1." + number, device, {},
                            {{"DEVTYPE", "usb_interface"}});
        QByteArray parent = interface;
        const QByteArray model = adapter.serialNumber.isEmpty() ? "Maker_Model" : "Maker_Model_";
        const QByteArray inPath = "pci-0000:00:14.0-usb-0:" + adapter.place + ":1." + number;
        QByteArray link = "/dev/serial/by-id/usb-" + model + adapter.serialNumber + "-if0" + number;
        QByteArray pathLink = "/dev/serial/by-path/" + inPath;
        if (adapter.driver != "cdc_acm") {
            const QByteArray portNumber = QByteArray::number(port.portNumber);
            parent = add("usb-serial", port.kernelName, interface, {{"port_number", portNumber}},
                         {{"DRIVER", adapter.driver}});
            link += "-port" + portNumber;
            pathLink += "-port" + portNumber;
        }
        QMap<QByteArray, QByteArray> properties{
            {"DEVNAME", "/dev/" + port.kernelName},      {"ID_BUS", "usb"},
            {"ID_SERIAL", model + adapter.serialNumber}, {"ID_USB_DRIVER", adapter.driver},
            {"ID_USB_INTERFACE_NUM", "0" + number},      {"ID_PATH", inPath},
            {"DEVLINKS", pathLink + ' ' + link}};
        if (!adapter.serialNumber.isEmpty())
            properties["ID_SERIAL_SHORT"] = adapter.serialNumber;
        return add("tty", port.kernelName, parent, {}, properties);
    }

    void unplug(const QByteArray &place, const QList<QByteArray> &ttys)
    {
        for (const QByteArray &tty : ttys)
            umockdev_testbed_uevent(m_testbed.get(), tty.constData(), "remove");
        // Children first: the test bed leaves the links to children behind.
        for (auto it = m_devices.end(); it != m_devices.begin();) {
            if ((--it)->contains('/' + place + '/') || it->endsWith('/' + place)) {
                umockdev_testbed_remove_device(m_testbed.get(), it->constData());
                it = m_devices.erase(it);
            }
        }
        m_adapters.removeIf([&](const auto &entry) { return entry.key().startsWith(place); });
    }

protected:
    const std::unique_ptr<UMockdevTestbed, decltype(&g_object_unref)> m_testbed{
        umockdev_testbed_new(), &g_object_unref};
    QMap<QByteArray, QByteArray> m_adapters;
    QList<QByteArray> m_devices; // in the order of their making
};

} // namespace vorn

#include "app/ConnectionSection.h"

#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"

#include <algorithm>

using std::chrono::duration_cast;
using std::chrono::milliseconds;

namespace vorn {

using texts::Connection;
using Clock = std::chrono::steady_clock;

ConnectionSection::ConnectionSection(MainWindow &window, const TaggedControls &controls,
                                     LogSection &log)
    : m_window(window), m_controls(controls), m_log(log)
{
}

void ConnectionSection::showNoDevice(const ORSSerialPortList &ports)
{
    showStatus(m_controls.connectText, texts::kNoDeviceSelected, StatusTone::Neutral);
    if (m_vanished)
        findOut([gone = *m_vanished] {
            return explainVanishing(gone.name, gone.after,
                                    isProgramRunning(QStringLiteral("brltty")));
        });
    else if (!ports.isEmpty())
        showDetails(explain(Cause::UnsuitableDevice, {ports.constFirst()->name()}));
    else
        showDetails(explain(Cause::NoDevice));
}

void ConnectionSection::showChosen(const ORSSerialPort &port, const ORSSerialPortList &ports)
{
    m_log.setDevice(port.IOKitDevice());
    show(Connection::NotOpened, port, StatusTone::Neutral);
    const bool readsClose = m_controls.openBtn && m_controls.openBtn->text() == texts::kClose;
    const auto other = std::find_if(ports.begin(), ports.end(), [&](const ORSSerialPortPtr &each) {
        return each->name() != port.name() && each->name().startsWith(texts::kDeviceNamePrefix);
    });
    if (readsClose)
        showDetails(explain(Cause::StaleButton));
    else if (other != ports.end())
        showDetails(explain(Cause::SecondDevice, {(*other)->name(), port.name()}));
    else
        showDetails({});
}

void ConnectionSection::showOpened(const ORSSerialPort &port, bool hasItsSpeed, int code)
{
    show(Connection::Opened, port, StatusTone::Good);
    if (hasItsSpeed)
        showDetails({});
    else if (code != 0)
        showDetails(explainPortError(code));
    else
        showDetails(
            explain(Cause::SpeedNotPossible, {port.path(), QString::number(port.baudRate())}));
    m_log.add(tr("%1 (%2): open").arg(port.name(), port.path()));
}

void ConnectionSection::showOpenFailed(const ORSSerialPort &port, int code)
{
    show(Connection::OpenFailed, port, StatusTone::Bad);
    if (code == 0)
        showDetails(explain(Cause::DoesNotClose, {port.path()}));
    else
        findOut([path = port.path(), code] { return explainOpening(path, code); });
}

void ConnectionSection::showClosed(const ORSSerialPort &port, bool onRequest)
{
    show(onRequest ? Connection::Closed : Connection::NotOpened, port, StatusTone::Neutral);
    showDetails(onRequest ? Explanation() : explain(Cause::ClosedByItself, {port.name()}));
    m_log.add(tr("%1: closed").arg(port.name()));
}

void ConnectionSection::showCloseFailed(const ORSSerialPort &port)
{
    show(Connection::CloseFailed, port, StatusTone::Bad);
    showDetails(explain(Cause::DoesNotClose, {port.path()}));
}

void ConnectionSection::showChoiceIgnored(const ORSSerialPort &port)
{
    showDetails(explain(Cause::FixedChoice, {port.name()}));
}

void ConnectionSection::portsWereConnected(const ORSSerialPortList &ports)
{
    m_vanished.reset();
    for (const ORSSerialPortPtr &port : ports) {
        m_pluggedIn.insert(port->name(), Clock::now());
        m_log.add(tr("%1 (%2): plugged in").arg(port->name(), port->path()));
    }
}

void ConnectionSection::portsWereDisconnected(const ORSSerialPortList &ports)
{
    m_vanished.reset();
    for (const ORSSerialPortPtr &port : ports) {
        m_log.add(tr("%1: unplugged").arg(port->name()));
        const auto since = m_pluggedIn.constFind(port->name());
        if (since == m_pluggedIn.constEnd())
            continue;
        const auto after = duration_cast<milliseconds>(Clock::now() - *since);
        m_pluggedIn.erase(since);
        if (after <= kSoon)
            m_vanished = {port->name(), after};
    }
}

void ConnectionSection::show(Connection state, const ORSSerialPort &port, StatusTone tone)
{
    showStatus(m_controls.connectText, texts::ofConnection(state, port.name()), tone);
}

void ConnectionSection::showDetails(const Explanation &why)
{
    ++m_shown;
    m_window.showConnectionDetails(why.text());
    if (why.cause != Cause::None)
        m_log.add(why.text());
}

// Asks the system in the background, and shows the answer unless something else was shown since.
void ConnectionSection::findOut(std::function<Explanation()> facts)
{
    showDetails({});
    GlobalQueue::instance().post(
        [this, facts = std::move(facts), shown = m_shown, token = m_lifetime.token()] {
            MainQueue::instance().post(token, [this, shown, why = facts()] {
                if (shown == m_shown)
                    showDetails(why);
            });
        });
}

} // namespace vorn

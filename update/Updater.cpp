#include "update/Updater.h"

#include "update/UpdateRun.h"
#include "update/VersionQuery.h"

#include "platform/GlobalQueue.h"

namespace vorn {

Updater::Updater(UpdateObserver *observer, const UpdateTimings &timings)
    : m_observer(observer), m_timings(timings)
{
}

Updater::~Updater() { m_buffer->beginSequence(); }

void Updater::getTargetVersion(const ORSSerialPortPtr &port)
{
    if (isUpdating())
        return;
    resetDeviceAndRun(port, [version = m_targetVersion](BootLoaderLink link) {
        VersionQuery(std::move(link), version).run();
    });
}

void Updater::startUpdate(const ORSSerialPortPtr &port, const QString &imagePath)
{
    if (m_updating->exchange(true))
        return;
    resetDeviceAndRun(
        port, [imagePath, version = m_targetVersion, updating = m_updating](BootLoaderLink link) {
            const UpdateResult result = UpdateRun(link, imagePath, version).run();
            link.tell([&](UpdateObserver &observer) {
                *updating = false;
                observer.updateDidEnd(result);
            });
        });
}

void Updater::resetDeviceAndRun(const ORSSerialPortPtr &port, Sequence sequence)
{
    const BootLoaderLink link(port, m_buffer, m_buffer->beginSequence(), m_observer, m_timings);
    port->setRTS(true);
    // One after the other, not side by side on two timers: the device must not see the first byte
    // while it is held in reset.
    GlobalQueue &queue = GlobalQueue::instance();
    queue.postAfter(m_timings.resetPulse, [&queue, port, link, sequence = std::move(sequence),
                                           start = m_timings.bootLoaderStart] {
        port->setRTS(false);
        queue.postAfter(start, [link, sequence] { sequence(link); });
    });
}

} // namespace vorn

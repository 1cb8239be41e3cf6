#include "update/Updater.h"

#include "platform/GlobalQueue.h"
#include "update/UpdateRun.h"
#include "update/VersionQuery.h"

namespace vorn {
namespace {

void showEnd(UpdateObserver &observer, const UpdateResult &result)
{
    if (result.succeeded())
        observer.updateDidProgress(100);
    for (const QString &text : result.texts)
        observer.showUpdateText(text);
}

} // namespace

Updater::Updater(UpdateObserver *observer, const UpdateTimings &timings)
    : m_observer(observer), m_timings(timings)
{
}

Updater::~Updater()
{
    m_buffer->abandonSequence();
}

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
    // Here and not in the run: nothing but the reset may stand between the press and the sync byte,
    // for which a device may not wait long.
    if (UpdateObserver *observer = m_observer.get())
        observer->updateDidBegin();
    resetDeviceAndRun(
        port, [imagePath, version = m_targetVersion, updating = m_updating](BootLoaderLink link) {
            const UpdateResult result = UpdateRun(link, imagePath, version).run();
            // With the end's texts: whoever reads them may press the button again at once.
            link.onMainThread([&](UpdateObserver *observer) {
                if (observer)
                    showEnd(*observer, result);
                *updating = false;
                if (observer)
                    observer->updateDidEnd(result);
            });
            if (result.lowersRts)
                link.scheduleRtsLow();
        });
}

void Updater::resetDeviceAndRun(const ORSSerialPortPtr &port, Sequence sequence)
{
    BootLoaderLink link(port, m_buffer, m_buffer->beginSequence(), m_observer, m_timings);
    if (!port->isOpen())
        m_buffer->linkWasLost();
    link.raiseRts();
    const auto afterwards = [line = m_line](std::chrono::milliseconds delay, SerialQueue::Job job) {
        GlobalQueue::instance().postAfter(delay, [line, job = std::move(job)] { line->post(job); });
    };
    // One after the other, not side by side on two timers: the device must not see the first byte
    // while it is held in reset.
    afterwards(m_timings.resetPulse, [afterwards, link, sequence = std::move(sequence),
                                      start = m_timings.bootLoaderStart]() mutable {
        link.lowerRts();
        afterwards(start, [link, sequence] {
            if (link.isCurrent())
                sequence(link);
        });
    });
}

} // namespace vorn

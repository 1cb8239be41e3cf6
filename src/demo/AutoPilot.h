#pragma once

#include "demo/DemoStage.h"
#include "window/MainWindow.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>

#include <functional>

namespace vorn {

// Operates the real window as a user would: downloads the latest package, opens the device, chooses
// a firmware file and updates the device.
class AutoPilot
{
public:
    AutoPilot(MainWindow &window, const DemoStage &stage);

    // Runs the event loop until the update is done, and saves a picture of the window halfway
    // through it as `screenshot`. Returns false, after a line on standard error, if a step failed
    // or the device does not hold exactly the file.
    bool run(const QString &screenshot);

private:
    bool download();
    bool openDevice();
    bool chooseFirmware();
    bool update(const QString &screenshot);
    bool deviceHoldsTheFile() const;

    void press(QPushButton *button) const;
    static bool waitFor(const char *what, const std::function<bool()> &condition);
    template <typename Control>
    Control *control(const char *name) const;

    MainWindow &m_window;
    const DemoStage &m_stage;
    QLabel *const m_connectText;
    QLabel *const m_perText;
    QLabel *const m_updateText;
    QComboBox *const m_firmwareList;
};

} // namespace vorn

#pragma once

#include "demo/DemoStage.h"
#include "window/MainWindow.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>

namespace vorn {

// Does in the real window what a person would: fetches the latest package, opens the device,
// chooses a firmware file and updates the device, pressing the real controls.
class AutoPilot
{
public:
    AutoPilot(MainWindow &window, const DemoStage &stage);

    // Runs the event loop until all is done. False, after a line on the standard error, when
    // something did not happen or the device does not hold the file.
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

#pragma once

#include <QString>
#include <QWidget>

#include <optional>

namespace vorn {

// Operates the program's window as a user would: downloads the latest package, opens the device,
// chooses a firmware file and updates the device. Runs the event loop until that is done, and saves
// a picture of the window halfway through the update as `screenshot`. Returns the file's name, or
// nothing, after a line on standard error, if a step failed.
std::optional<QString> updateInWindow(QWidget &window, const QString &screenshot);

} // namespace vorn

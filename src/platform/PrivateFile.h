#pragma once

#include <QByteArray>
#include <QString>

namespace vorn {

// Writes a file completely or not at all, for its owner alone (mode 0600, whatever the umask).
// Replaces a file or a symbolic link of that name; a link is not followed. Null when it was
// written, else the system's text of why not. Any thread.
QString writePrivateFile(const QString &path, const QByteArray &bytes);

} // namespace vorn

#pragma once

#include "platform/FileDescriptor.h"
#include "ziparchive/ArchiveFailure.h"

#include <QByteArray>
#include <QByteArrayView>

#include <chrono>
#include <optional>

namespace vorn {

// One file being written. It appears under its name, complete, only when commit() succeeds; until
// then its bytes are in a hidden temporary file in the same folder, which the destructor removes. A
// file already under the name is left alone until commit() replaces it.
class OutputFile
{
public:
    // `folder` is the descriptor of the file's folder; it stays open while this object is used.
    OutputFile(int folder, QByteArray name) : m_folder(folder), m_name(std::move(name)) {}
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;
    ~OutputFile() { discard(); }

    // True when the name is in use, by whatever.
    bool exists() const;
    // Opens the temporary file, or tells why a file may not be written under the name.
    ArchiveFailure open();
    // False, with errno set, when the bytes cannot be written.
    bool write(QByteArrayView bytes);
    // Closes the file and gives it its name; false, with errno set, when that fails. A date that
    // cannot be set is only logged.
    bool commit(const std::optional<std::chrono::system_clock::time_point> &date);

private:
    bool openTemporary();
    bool flush();
    void discard();

    int m_folder;
    QByteArray m_name;
    QByteArray m_temporaryName;
    FileDescriptor m_fd;
    QByteArray m_buffer;
};

} // namespace vorn

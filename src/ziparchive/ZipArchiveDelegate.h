#pragma once

#include <QString>

// Receives a ZipArchive's errors and questions, on the thread that uses the archive. Both
// operations are optional: by default errors are ignored and files replaced.
class ZipArchiveDelegate
{
public:
    ZipArchiveDelegate() = default;
    ZipArchiveDelegate(const ZipArchiveDelegate &) = delete;
    ZipArchiveDelegate &operator=(const ZipArchiveDelegate &) = delete;
    virtual ~ZipArchiveDelegate() = default;

    // Called for each error with one of the fixed texts listed in ZipArchive.h.
    virtual void ErrorMessage(const QString & /*msg*/) {}
    // Whether the existing file at the full path `file` may be replaced.
    virtual bool OverWriteOperation(const QString & /*file*/) { return true; }
};

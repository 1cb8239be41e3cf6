#pragma once

#include <QString>

// What a ZipArchive tells and asks while it works, on the thread that runs the work. Both
// operations may be left out: then errors are dropped and files are replaced.
class ZipArchiveDelegate
{
public:
    ZipArchiveDelegate() = default;
    ZipArchiveDelegate(const ZipArchiveDelegate &) = delete;
    ZipArchiveDelegate &operator=(const ZipArchiveDelegate &) = delete;
    virtual ~ZipArchiveDelegate() = default;

    // Each error, as one of the fixed texts that ZipArchive.h lists.
    virtual void ErrorMessage(const QString & /*msg*/) {}
    // Whether the existing file at the full path `file` may be replaced.
    virtual bool OverWriteOperation(const QString & /*file*/) { return true; }
};

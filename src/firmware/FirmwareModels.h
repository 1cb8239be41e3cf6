#pragma once

#include <QStringList>
#include <QStringView>

namespace vorn {

// Which firmware files a device takes: those whose names begin with the prefix of its model code.
// A model that is not listed takes none.
struct FirmwareModel
{
    qint32 modelCode;
    QStringView prefix;
};

inline constexpr FirmwareModel kFirmwareModels[] = {
    {-1, u""}, // the device has not told its model yet
    {0, u""},  {1, u"VORN_I-"}, {2, u"VORN_I-"}, {8, u"VORN_PLATINA-"},
};

// The names in `files` that a device of this model takes, in their order.
inline QStringList firmwareForModel(QStringList files, qint32 modelCode)
{
    for (const FirmwareModel &model : kFirmwareModels) {
        if (model.modelCode == modelCode) {
            files.removeIf([&](const QString &name) { return !name.startsWith(model.prefix); });
            return files;
        }
    }
    return {};
}

// Whether a device of this model takes every file, whatever its name.
inline bool isForEveryFile(qint32 modelCode)
{
    for (const FirmwareModel &model : kFirmwareModels)
        if (model.modelCode == modelCode)
            return model.prefix.isEmpty();
    return false;
}

// Whether the name says that the file is meant for another model than this one. A name that says
// nothing, and a device that takes every file, suit everything.
inline bool isForOtherModel(QStringView name, qint32 modelCode)
{
    constexpr QStringView kPrefixes[] = {u"VORN_I-", u"VORN-", u"VORN_PLATINA-"};
    for (const FirmwareModel &model : kFirmwareModels)
        if (model.modelCode == modelCode && name.startsWith(model.prefix))
            return false;
    for (const QStringView prefix : kPrefixes)
        if (name.startsWith(prefix))
            return true;
    return false;
}

// The one with the highest version in its name ("VORN_I-1.10.0.bin" above "VORN_I-1.9.3.bin", and
// above "VORN_I-1.10.0-beta.bin"); null for no files.
QString newestFirmware(const QStringList &files);

} // namespace vorn

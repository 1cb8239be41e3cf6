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

} // namespace vorn

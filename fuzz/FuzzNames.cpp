// Names from outside: of firmware files in the folder, of devices on the bus.
//
// The input: a model code, then names, a line each.

#include "firmware/FirmwareModels.h"
#include "fuzz/Fuzzing.h"
#include "platform/SerialDeviceName.h"

namespace {

using vorn::require;

void requirePrintable(const QString &name)
{
    for (const char32_t character : name.toStdU32String())
        require(QChar::isPrint(character) && character != 0x2028 && character != 0x2029);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    vorn::FuzzInput input(data, size);
    const qint32 model = input.byte() - 1;
    const QStringList names = QString::fromUtf8(input.rest()).split(u'\n');

    const QStringList offered = vorn::firmwareForModel(names, model);
    for (const QString &name : names) {
        // A file is never both: offered and said to be another model's.
        require(!offered.contains(name) || model <= 0 || !vorn::isForOtherModel(name, model));
        require(!vorn::isForEveryFile(model) || offered.contains(name));
    }
    QStringList reversed(names.rbegin(), names.rend());
    const QString newest = vorn::newestFirmware(names);
    require(names.contains(newest) && newest == vorn::newestFirmware(reversed));
    for (const QString &name : names)
        require(vorn::newestFirmware({name, newest}) == newest);

    for (const QString &name : names) {
        require(vorn::splitSerialDeviceName(name).full() == name);
        requirePrintable(vorn::printableName(name));
        const QString number = vorn::cleanSerialNumber(name);
        require(number == vorn::cleanSerialNumber(number));
        require(!number.contains(u'/') && !number.contains(u' '));
        requirePrintable(number);
    }
    return 0;
}

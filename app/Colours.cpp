#include "app/Colours.h"

namespace vorn {

QColor blended(const QColor &under, const QColor &over, qreal share)
{
    const auto mix = [share](float from, float to) {
        return from + (to - from) * static_cast<float>(share);
    };
    return QColor::fromRgbF(mix(under.redF(), over.redF()), mix(under.greenF(), over.greenF()),
                            mix(under.blueF(), over.blueF()));
}

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightnessF() <
           palette.color(QPalette::WindowText).lightnessF();
}

QColor cardColour(const QPalette &palette)
{
    // Raised things are lighter than the ground in both worlds; the dark palettes' base is not.
    return isDark(palette)
               ? blended(palette.color(QPalette::Window), palette.color(QPalette::WindowText), 0.06)
               : palette.color(QPalette::Base);
}

} // namespace vorn

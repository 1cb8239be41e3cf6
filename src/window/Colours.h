#pragma once

#include <QColor>
#include <QPalette>

namespace vorn {

// `share` (0 to 1) of `over` laid on `under`: shades that fit every palette, light or dark.
QColor blended(const QColor &under, const QColor &over, qreal share);

// Whether the palette writes light text on a dark ground.
bool isDark(const QPalette &palette);

// The desktop's accent colour, darkened or lightened as far as its own text colour needs to be
// readable on it (a contrast of 4.5 to 1).
QColor accentColour(const QPalette &palette);

// The ground of a card in this palette.
QColor cardColour(const QPalette &palette);

} // namespace vorn

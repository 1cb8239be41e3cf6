#pragma once

#include <QColor>
#include <QPalette>

namespace vorn {

/// `share` (0 to 1) of `over` laid on `under`: shades that fit every palette, light or dark.
QColor blended(const QColor &under, const QColor &over, qreal share);

/// Whether the palette writes light text on a dark ground.
bool isDark(const QPalette &palette);

/// The ground of a card in this palette.
QColor cardColour(const QPalette &palette);

} // namespace vorn

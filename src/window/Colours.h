#pragma once

#include <QColor>
#include <QPalette>

namespace vorn {

// `over` painted on `under` with the opacity `share` (0 to 1).
QColor blended(const QColor &under, const QColor &over, qreal share);

// Whether the palette has light text on a dark background.
bool isDark(const QPalette &palette);

// The palette's highlight colour, darkened or lightened until the highlighted text has a contrast
// of 4.5 to 1 on it.
QColor accentColour(const QPalette &palette);

// The background of the window's cards.
QColor cardColour(const QPalette &palette);

// A text colour for a card that steps back behind the usual one, but has a contrast of 4.5 to 1.
QColor mutedTextColour(const QPalette &palette);

} // namespace vorn

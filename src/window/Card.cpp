#include "window/Card.h"

#include "window/Colours.h"

#include <QPainter>

namespace vorn {

void Card::paintEvent(QPaintEvent *)
{
    constexpr qreal radius = 8;
    const QColor ground = cardColour(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(blended(ground, palette().color(QPalette::WindowText), 0.14));
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

} // namespace vorn

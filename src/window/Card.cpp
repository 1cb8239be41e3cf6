#include "window/Card.h"

#include "window/Colours.h"

#include <QPainter>

namespace vorn {

Card::Card(QWidget *parent) : QFrame(parent)
{
    setContentsMargins(1, 1, 1, 1); // the border
}

void Card::paintEvent(QPaintEvent *)
{
    constexpr qreal kRadius = 8; // pixels
    const QColor card = cardColour(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(blended(card, palette().color(QPalette::WindowText), 0.14));
    painter.setBrush(card);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
}

} // namespace vorn

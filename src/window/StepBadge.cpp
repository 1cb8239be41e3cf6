#include "window/StepBadge.h"

#include "window/Colours.h"

#include <QPainter>

namespace vorn {

QSize StepBadge::sizeHint() const
{
    const int side = fontMetrics().height() + 8;
    return {side, side};
}

QSize StepBadge::minimumSizeHint() const
{
    return sizeHint();
}

void StepBadge::paintEvent(QPaintEvent *)
{
    QRectF disc(QPointF(), sizeHint());
    disc.moveCenter(QRectF(rect()).center());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(blended(cardColour(palette()), palette().color(QPalette::Highlight), 0.22));
    painter.drawEllipse(disc);
    painter.setPen(palette().color(QPalette::WindowText));
    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    painter.drawText(disc, Qt::AlignCenter, text());
}

} // namespace vorn

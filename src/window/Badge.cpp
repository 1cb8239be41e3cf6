#include "window/Badge.h"

#include "window/Colours.h"

#include <QPainter>

namespace vorn {

Badge::Badge(QWidget *parent) : QLabel(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize Badge::sizeHint() const
{
    const int side = (fontMetrics().height() + 8) / 2 * 2;
    return {side, side};
}

void Badge::paintEvent(QPaintEvent *event)
{
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(
            blended(cardColour(palette()), palette().color(QPalette::Highlight), 0.22));
        painter.drawEllipse(rect());
    }
    QLabel::paintEvent(event);
}

} // namespace vorn

#include "window/PrimaryButton.h"

#include "window/Colours.h"

#include <QPainter>
#include <QStyle>

namespace vorn {

PrimaryButton::PrimaryButton(QWidget *parent) : QPushButton(parent)
{
    setAttribute(Qt::WA_Hover);
}

void PrimaryButton::paintEvent(QPaintEvent *event)
{
    if (!isEnabled()) {
        QPushButton::paintEvent(event);
        return;
    }
    constexpr qreal radius = 4;
    const QColor accent = accentColour(palette());
    const qreal shade = isDown() ? 0.22 : underMouse() ? 0.1 : 0.0;
    const QColor text = palette().color(QPalette::HighlightedText);

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(blended(accent, Qt::black, shade));
    painter.drawRoundedRect(rect(), radius, radius);
    if (hasFocus()) {
        painter.setPen(QPen(text, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(3, 3, -3, -3), radius - 1, radius - 1);
    }
    const bool underline = style()->styleHint(QStyle::SH_UnderlineShortcut, nullptr, this) != 0;
    style()->drawItemText(&painter, rect(),
                          Qt::AlignCenter |
                              (underline ? Qt::TextShowMnemonic : Qt::TextHideMnemonic),
                          palette(), true, QPushButton::text(), QPalette::HighlightedText);
}

} // namespace vorn

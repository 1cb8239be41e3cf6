#include "window/AccentButton.h"

#include "window/Colours.h"

#include <QPainter>
#include <QStyleOptionButton>

namespace vorn {

AccentButton::AccentButton(QWidget *parent) : QPushButton(parent)
{
    setAttribute(Qt::WA_Hover);
}

void AccentButton::paintEvent(QPaintEvent *event)
{
    if (!isEnabled()) {
        QPushButton::paintEvent(event);
        return;
    }
    QStyleOptionButton option;
    initStyleOption(&option);
    const QColor text = palette().color(QPalette::HighlightedText);
    option.palette.setColor(QPalette::ButtonText, text);
    const qreal shade = isDown() ? 0.22 : option.state.testFlag(QStyle::State_MouseOver) ? 0.1 : 0;

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(blended(accentColour(palette()), Qt::black, shade));
    painter.drawRoundedRect(rect(), 4, 4);
    style()->drawControl(QStyle::CE_PushButtonLabel, &option, &painter, this);
    if (!hasFocus())
        return;
    painter.setPen(text);
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(4.5, 4.5, -4.5, -4.5), 3, 3);
}

} // namespace vorn

#include "window/StatusLine.h"

#include "window/Colours.h"

#include <QPainter>

namespace vorn {

namespace {

QColor toneColour(StatusTone tone, const QPalette &palette)
{
    const bool dark = isDark(palette);
    switch (tone) {
    case StatusTone::Good:
        return dark ? QColor(0x5f, 0xcf, 0x80) : QColor(0x1a, 0x7f, 0x37);
    case StatusTone::Bad:
        return dark ? QColor(0xff, 0x7b, 0x72) : QColor(0xc6, 0x28, 0x28);
    case StatusTone::Neutral:
        break;
    }
    return blended(cardColour(palette), palette.color(QPalette::WindowText), 0.45);
}

} // namespace

StatusLine::StatusLine(QWidget *parent) : FittedLabel(Qt::ElideLeft, parent) {}

void StatusLine::show(const QString &text, StatusTone tone)
{
    setTone(tone);
    setText(text);
}

void StatusLine::setTone(StatusTone tone)
{
    if (m_tone != tone) {
        m_tone = tone;
        update();
    }
}

void StatusLine::paintEvent(QPaintEvent *event)
{
    FittedLabel::paintEvent(event);
    if (text().isEmpty())
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QRectF area = firstLine();
    area.setWidth(markSide());
    paintMark(painter, area.center());
}

// A dot, a tick or a cross: distinct without colour, too.
void StatusLine::paintMark(QPainter &painter, const QPointF &centre) const
{
    const QColor colour = toneColour(m_tone, palette());
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    if (m_tone == StatusTone::Neutral) {
        painter.drawEllipse(centre, 3, 3);
        return;
    }
    const qreal radius = markSide() / 2.0;
    const auto at = [&](qreal x, qreal y) { return centre + QPointF(x, y) * radius; };
    painter.drawEllipse(centre, radius, radius);
    painter.setPen(
        QPen(cardColour(palette()), radius * 0.22, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (m_tone == StatusTone::Good) {
        painter.drawPolyline(QPolygonF{{at(-0.4, 0.03), at(-0.12, 0.31), at(0.44, -0.31)}});
    } else {
        painter.drawLine(at(-0.31, -0.31), at(0.31, 0.31));
        painter.drawLine(at(-0.31, 0.31), at(0.31, -0.31));
    }
}

} // namespace vorn

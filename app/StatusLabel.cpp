#include "app/StatusLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>
#include <QToolTip>

#include "app/Colours.h"

namespace vorn {

namespace {

constexpr int markSide = 16;
constexpr int gap = 8;
constexpr int lineCount = 2;

QColor toneColour(Tone tone, const QPalette &palette)
{
    const bool dark = isDark(palette);
    switch (tone) {
    case Tone::Good:
        return dark ? QColor(0x5f, 0xcf, 0x80) : QColor(0x1a, 0x7f, 0x37);
    case Tone::Bad:
        return dark ? QColor(0xff, 0x7b, 0x72) : QColor(0xc6, 0x28, 0x28);
    case Tone::Neutral:
        break;
    }
    return blended(cardColour(palette), palette.color(QPalette::WindowText), 0.45);
}

} // namespace

StatusLabel::StatusLabel(QWidget *parent) : QLabel(parent)
{
    // A device's name is shown as it is, whatever markup it looks like.
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void StatusLabel::setTone(Tone tone)
{
    if (m_tone != tone) {
        m_tone = tone;
        update();
    }
}

QSize StatusLabel::sizeHint() const
{
    return {textStart() + 48 * fontMetrics().averageCharWidth(),
            lineCount * fontMetrics().lineSpacing()};
}

QSize StatusLabel::minimumSizeHint() const
{
    return {textStart() + 24 * fontMetrics().averageCharWidth(), sizeHint().height()};
}

int StatusLabel::textStart() const
{
    return markSide + gap;
}

StatusLabel::Arranged StatusLabel::arranged() const
{
    Arranged result;
    const qreal room = width() - textStart();
    QTextOption wrapping;
    wrapping.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QTextLayout layout(text(), font());
    layout.setTextOption(wrapping);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(room);
        if (result.lines.size() == lineCount - 1) {
            const QString rest = text().mid(line.textStart());
            result.lines += fontMetrics().elidedText(rest, Qt::ElideLeft, static_cast<int>(room));
            result.shortened = result.lines.last() != rest;
            break;
        }
        result.lines += text().mid(line.textStart(), line.textLength()).trimmed();
    }
    layout.endLayout();
    return result;
}

bool StatusLabel::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip) {
        return QLabel::event(event);
    }
    if (arranged().shortened) {
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                           QStringLiteral("<p>%1</p>").arg(text().toHtmlEscaped()), this);
    } else {
        QToolTip::hideText();
    }
    return true;
}

void StatusLabel::paintEvent(QPaintEvent *)
{
    const QStringList lines = arranged().lines;
    if (lines.isEmpty()) {
        return;
    }
    const int lineHeight = fontMetrics().lineSpacing();
    const int top = (height() - static_cast<int>(lines.size()) * lineHeight) / 2;
    const auto mirrored = [this](const QRect &area) {
        return QStyle::visualRect(layoutDirection(), rect(), area);
    };

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintMark(painter, QRectF(mirrored({0, top, markSide, lineHeight})).center());
    painter.setPen(palette().color(foregroundRole()));
    QRect area(textStart(), top, width() - textStart(), lineHeight);
    for (const QString &line : lines) {
        painter.drawText(mirrored(area),
                         static_cast<int>(QStyle::visualAlignment(
                             layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter)) |
                             Qt::TextSingleLine,
                         line);
        area.translate(0, lineHeight);
    }
}

// A dot, a tick or a cross: told apart without colour too.
void StatusLabel::paintMark(QPainter &painter, const QPointF &centre) const
{
    const QColor colour = toneColour(m_tone, palette());
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    if (m_tone == Tone::Neutral) {
        painter.drawEllipse(centre, 3, 3);
        return;
    }
    painter.drawEllipse(centre, markSide / 2.0, markSide / 2.0);
    painter.setPen(QPen(cardColour(palette()), 1.75, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (m_tone == Tone::Good) {
        painter.drawPolyline(QPolygonF{{centre + QPointF(-3.25, 0.25), centre + QPointF(-1, 2.5),
                                        centre + QPointF(3.5, -2.5)}});
    } else {
        painter.drawLine(centre + QPointF(-2.5, -2.5), centre + QPointF(2.5, 2.5));
        painter.drawLine(centre + QPointF(-2.5, 2.5), centre + QPointF(2.5, -2.5));
    }
}

} // namespace vorn

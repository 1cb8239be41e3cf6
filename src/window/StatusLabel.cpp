#include "window/StatusLabel.h"

#include "window/Colours.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>

namespace vorn {

namespace {

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
    return {textStart() + 48 * fontMetrics().averageCharWidth(), lineCount * lineHeight()};
}

QSize StatusLabel::minimumSizeHint() const
{
    return {textStart() + 44 * fontMetrics().averageCharWidth(), sizeHint().height()};
}

int StatusLabel::markSide() const
{
    return std::max(16, fontMetrics().ascent() / 2 * 2);
}

int StatusLabel::lineHeight() const
{
    return std::max(markSide(), fontMetrics().lineSpacing());
}

int StatusLabel::textStart() const
{
    return markSide() + gap;
}

StatusLabel::Arranged StatusLabel::arranged() const
{
    Arranged result;
    if (text().isEmpty())
        return result;
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
    if (event->type() != QEvent::ToolTip)
        return QLabel::event(event);
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
    if (lines.isEmpty())
        return;
    const int top = (height() - static_cast<int>(lines.size()) * lineHeight()) / 2;
    const auto mirrored = [this](const QRect &area) {
        return QStyle::visualRect(layoutDirection(), rect(), area);
    };

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintMark(painter, QRectF(mirrored({0, top, markSide(), lineHeight()})).center());
    painter.setPen(palette().color(foregroundRole()));
    QRect area(textStart(), top, width() - textStart(), lineHeight());
    for (const QString &line : lines) {
        painter.drawText(mirrored(area),
                         static_cast<int>(QStyle::visualAlignment(
                             layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter)) |
                             Qt::TextSingleLine,
                         line);
        area.translate(0, lineHeight());
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
    const qreal radius = markSide() / 2.0;
    const auto at = [&](qreal x, qreal y) { return centre + QPointF(x, y) * radius; };
    painter.drawEllipse(centre, radius, radius);
    painter.setPen(
        QPen(cardColour(palette()), radius * 0.22, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (m_tone == Tone::Good) {
        painter.drawPolyline(QPolygonF{{at(-0.4, 0.03), at(-0.12, 0.31), at(0.44, -0.31)}});
    } else {
        painter.drawLine(at(-0.31, -0.31), at(0.31, 0.31));
        painter.drawLine(at(-0.31, 0.31), at(0.31, -0.31));
    }
}

} // namespace vorn

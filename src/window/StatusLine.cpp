#include "window/StatusLine.h"

#include "window/Colours.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>

namespace vorn {

namespace {

constexpr int kGap = 8; // pixels
constexpr int kLineCount = 2;

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

StatusLine::StatusLine(QWidget *parent) : QLabel(parent)
{
    // A device's name may look like markup.
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

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

QSize StatusLine::sizeHint() const
{
    return {textStart() + 44 * fontMetrics().averageCharWidth(), kLineCount * lineHeight()};
}

int StatusLine::markSide() const
{
    return std::max(16, fontMetrics().ascent() / 2 * 2);
}

int StatusLine::lineHeight() const
{
    return std::max(markSide(), fontMetrics().lineSpacing());
}

int StatusLine::textStart() const
{
    return markSide() + kGap;
}

StatusLine::FittedText StatusLine::fittedText() const
{
    FittedText result;
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
        if (result.lines.size() == kLineCount - 1) {
            const QString rest = text().mid(line.textStart());
            result.lines += fontMetrics().elidedText(rest, Qt::ElideLeft, static_cast<int>(room));
            result.elided = result.lines.last() != rest;
            break;
        }
        result.lines += text().mid(line.textStart(), line.textLength()).trimmed();
    }
    layout.endLayout();
    return result;
}

bool StatusLine::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QLabel::event(event);
    if (fittedText().elided) {
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                           QStringLiteral("<p>%1</p>").arg(text().toHtmlEscaped()), this);
    } else {
        QToolTip::hideText();
    }
    return true;
}

void StatusLine::paintEvent(QPaintEvent *)
{
    const QStringList lines = fittedText().lines;
    if (lines.isEmpty())
        return;
    const int top = (height() - static_cast<int>(lines.size()) * lineHeight()) / 2;

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintMark(painter, QRectF(0, top, markSide(), lineHeight()).center());
    painter.setPen(palette().color(foregroundRole()));
    QRect area(textStart(), top, width() - textStart(), lineHeight());
    for (const QString &line : lines) {
        painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, line);
        area.translate(0, lineHeight());
    }
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

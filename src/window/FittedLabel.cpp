#include "window/FittedLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>

namespace vorn {
namespace {

constexpr int kGap = 8; // pixels
constexpr int kLineCount = 2;

} // namespace

FittedLabel::FittedLabel(Qt::TextElideMode elide, QWidget *parent) : QLabel(parent), m_elide(elide)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize FittedLabel::sizeHint() const
{
    return {textStart() + 44 * fontMetrics().averageCharWidth(), kLineCount * lineHeight()};
}

int FittedLabel::markSide() const
{
    return std::max(16, fontMetrics().ascent() / 2 * 2);
}

int FittedLabel::lineHeight() const
{
    return std::max(markSide(), fontMetrics().lineSpacing());
}

int FittedLabel::textStart() const
{
    return markSide() + kGap;
}

FittedLabel::FittedText FittedLabel::fittedText() const
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
            result.lines += fontMetrics().elidedText(rest, m_elide, static_cast<int>(room));
            result.elided = result.lines.last() != rest;
            break;
        }
        result.lines += text().mid(line.textStart(), line.textLength()).trimmed();
    }
    layout.endLayout();
    return result;
}

bool FittedLabel::event(QEvent *event)
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

QRect FittedLabel::firstLine() const
{
    const int free = height() - static_cast<int>(fittedText().lines.size()) * lineHeight();
    const int top = alignment() & Qt::AlignTop      ? 0
                    : alignment() & Qt::AlignBottom ? free
                                                    : free / 2;
    return {0, top, width(), lineHeight()};
}

void FittedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(textColour());
    QRect area = firstLine().adjusted(textStart(), 0, 0, 0);
    for (const QString &line : fittedText().lines) {
        painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, line);
        area.translate(0, lineHeight());
    }
}

} // namespace vorn

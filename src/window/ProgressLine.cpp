#include "window/ProgressLine.h"

#include "window/Colours.h"

#include <QLinearGradient>
#include <QPainter>
#include <QStyle>
#include <QTimerEvent>

#include <algorithm>

namespace vorn {

namespace {

constexpr int kThickness = 6;      // pixels
constexpr int kSpokenStep = 10;    // percent
constexpr int kFrameTime = 50;     // ms
constexpr int kFramesPerPass = 60; // 3 s from end to end

} // namespace

ProgressLine::ProgressLine(QWidget *parent) : QProgressBar(parent)
{
    setTextVisible(false);
    setFixedHeight(kThickness);
    clear();
}

void ProgressLine::showPercent(int percent)
{
    m_timer.stop();
    m_percent = std::max(m_percent, std::clamp(percent, 0, 100));
    setRange(0, 100);
    // A screen reader speaks each value.
    setValue(m_percent / kSpokenStep * kSpokenStep);
    update();
}

void ProgressLine::showBusy()
{
    if (isBusy())
        return;
    // Tells screen readers, too, that the duration is unknown.
    setRange(0, 0);
    // The first frame already shows the glint in the middle. It stays there when the desktop wants
    // no animations.
    m_frame = kFramesPerPass / 2;
    if (style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0)
        m_timer.start(kFrameTime, Qt::CoarseTimer, this);
}

void ProgressLine::clear()
{
    m_percent = 0;
    showPercent(0);
}

void ProgressLine::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timer.timerId()) {
        QProgressBar::timerEvent(event);
        return;
    }
    m_frame = (m_frame + 1) % kFramesPerPass;
    update();
}

void ProgressLine::paintEvent(QPaintEvent *)
{
    const QColor accent = accentColour(palette());
    const QColor track =
        blended(cardColour(palette()), palette().color(QPalette::WindowText), 0.12);
    QRectF bar = rect();
    const qreal radius = bar.height() / 2;

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(track);
    painter.drawRoundedRect(bar, radius, radius);

    if (isBusy()) {
        const qreal half = bar.width() / 4;
        const qreal centre = -half + (bar.width() + 2 * half) * m_frame / kFramesPerPass;
        QLinearGradient glint(centre - half, 0, centre + half, 0);
        glint.setColorAt(0, track);
        glint.setColorAt(0.5, accent);
        glint.setColorAt(1, track);
        painter.setBrush(glint);
    } else if (m_percent > 0) {
        bar.setWidth(std::max(bar.height(), bar.width() * m_percent / 100));
        painter.setBrush(accent);
    }
    painter.drawRoundedRect(bar, radius, radius);
}

} // namespace vorn

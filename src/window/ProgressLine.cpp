#include "window/ProgressLine.h"

#include "window/Colours.h"

#include <QLinearGradient>
#include <QPainter>
#include <QStyle>
#include <QTimerEvent>

#include <algorithm>

namespace vorn {

namespace {

constexpr int thickness = 6;
constexpr int frameTime = 50;  // ms
constexpr int passTime = 3000; // ms

} // namespace

ProgressLine::ProgressLine(QWidget *parent) : QProgressBar(parent)
{
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    clear();
}

void ProgressLine::showPercent(int percent)
{
    m_percent = std::max(m_percent, std::clamp(percent, 0, 100));
    setRange(0, 100);
    setValue(m_percent);
    animateWhileSeen();
}

void ProgressLine::showBusy()
{
    if (isBusy())
        return;
    // An equal minimum and maximum is how a progress bar says "unknown" to screen readers as well.
    setRange(0, 0);
    m_busySince.start();
    animateWhileSeen();
}

void ProgressLine::clear()
{
    m_percent = 0;
    showPercent(0);
}

void ProgressLine::keepPlaceWhenHidden()
{
    QSizePolicy policy = sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    setSizePolicy(policy);
}

QSize ProgressLine::sizeHint() const
{
    return {160, thickness};
}

QSize ProgressLine::minimumSizeHint() const
{
    return {48, thickness};
}

bool ProgressLine::isBusy() const
{
    return maximum() == 0;
}

// The style's own busy animation takes 7 to 11 % of a core for as long as the state lasts; a soft
// glint at a third of its pace takes less than one.
void ProgressLine::animateWhileSeen()
{
    const bool moving = isBusy() && isVisible() &&
                        style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    if (moving != m_frame.isActive())
        moving ? m_frame.start(frameTime, Qt::CoarseTimer, this) : m_frame.stop();
    update();
}

void ProgressLine::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_frame.timerId())
        update();
    else
        QProgressBar::timerEvent(event);
}

void ProgressLine::showEvent(QShowEvent *event)
{
    QProgressBar::showEvent(event);
    animateWhileSeen();
}

void ProgressLine::hideEvent(QHideEvent *event)
{
    QProgressBar::hideEvent(event);
    animateWhileSeen();
}

void ProgressLine::paintEvent(QPaintEvent *)
{
    const QColor accent = accentColour(palette());
    const QColor ground = cardColour(palette());
    const QColor track = blended(ground, palette().color(QPalette::WindowText), 0.12);
    QRectF bar(0, 0, width(), thickness);
    bar.moveCenter(QRectF(rect()).center());
    const qreal radius = bar.height() / 2;

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(track);
    painter.drawRoundedRect(bar, radius, radius);

    if (isBusy()) {
        const qreal half = bar.width() / 4;
        // It starts in the middle, so that the first frame already shows it; without animations it
        // stays there.
        const qint64 time =
            m_frame.isActive() ? m_busySince.elapsed() + passTime / 2 : passTime / 2;
        const qreal pass = qreal(time % passTime) / passTime;
        const qreal centre = -half + pass * (bar.width() + 2 * half);
        QLinearGradient glint(bar.left() + centre - half, 0, bar.left() + centre + half, 0);
        glint.setColorAt(0, track);
        glint.setColorAt(0.5, accent);
        glint.setColorAt(1, track);
        painter.setBrush(glint);
        painter.drawRoundedRect(bar, radius, radius);
    } else if (m_percent > 0) {
        bar.setWidth(std::max(bar.height(), bar.width() * m_percent / 100));
        painter.setBrush(accent);
        painter.drawRoundedRect(bar, radius, radius);
    }
}

} // namespace vorn

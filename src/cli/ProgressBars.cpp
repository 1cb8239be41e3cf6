#include "cli/ProgressBars.h"

#include "app/SharedOptions.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cwchar>

namespace vorn {
namespace {

using namespace std::chrono_literals;

constexpr auto kRedraw = 100ms;
constexpr int kBarWidth = 24;

winsize terminalSize()
{
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        size = {.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    return size;
}

// As much of the text as fits into so many columns: a longer line would wrap, and could not be
// erased.
QString fitted(const QString &text, int columns)
{
    QString result;
    for (const char32_t character : text.toUcs4()) {
        columns -= std::max(::wcwidth(static_cast<wchar_t>(character)), 0);
        if (columns < 0)
            break;
        result += QString::fromUcs4(&character, 1);
    }
    return result;
}

} // namespace

ProgressBars::ProgressBars()
{
    m_redraw.setSingleShot(true);
    m_redraw.setInterval(kRedraw);
    m_redraw.callOnTimeout([this] {
        hide();
        show();
    });
}

ProgressBars::~ProgressBars()
{
    hide();
}

ProgressBars::Bar &ProgressBars::barOf(const QString &device)
{
    if (!m_redraw.isActive())
        m_redraw.start();
    const auto found = std::find_if(m_bars.begin(), m_bars.end(),
                                    [&](const Bar &bar) { return bar.device == device; });
    if (found != m_bars.end())
        return *found;
    return m_bars.emplace_back(Bar{.device = device, .step = {}, .percent = 0});
}

void ProgressBars::setStep(const QString &device, const QString &title)
{
    barOf(device).step = title;
}

void ProgressBars::setPercent(const QString &device, int percent)
{
    barOf(device).percent = percent;
}

void ProgressBars::remove(const QString &device)
{
    std::erase_if(m_bars, [&](const Bar &bar) { return bar.device == device; });
}

void ProgressBars::hide()
{
    if (m_shown > 0)
        print(stdout, QStringLiteral("\033[%1A\r\033[J").arg(m_shown));
    m_shown = 0;
    std::fflush(stdout);
}

void ProgressBars::show()
{
    const winsize size = terminalSize();
    const auto room = static_cast<std::size_t>(std::max(size.ws_row - 1, 1));
    for (const Bar &bar : m_bars) {
        if (static_cast<std::size_t>(m_shown) == room)
            break;
        const int filled = bar.percent * kBarWidth / 100;
        const QString line =
            QStringLiteral("%1 [%2%3] %4 %  %5")
                .arg(bar.device, QString(filled, u'#'), QString(kBarWidth - filled, u'-'))
                .arg(bar.percent, 3)
                .arg(bar.step);
        print(stdout, fitted(line, size.ws_col - 1) + u'\n');
        ++m_shown;
    }
    std::fflush(stdout);
}

} // namespace vorn

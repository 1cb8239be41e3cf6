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
    ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
    if (size.ws_col == 0)
        size.ws_col = 80;
    if (size.ws_row == 0)
        size.ws_row = 24;
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

ProgressBars::ProgressBars(Console &console) : m_console(console)
{
    m_redraw.setSingleShot(true);
    m_redraw.setInterval(kRedraw);
    m_redraw.callOnTimeout([this] {
        if (m_console.isBehind())
            return m_redraw.start();
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
    // In the names' order, so that bars keep their places whichever device is first to show one.
    const auto found =
        std::lower_bound(m_bars.begin(), m_bars.end(), device,
                         [](const Bar &bar, const QString &name) { return bar.device < name; });
    if (found != m_bars.end() && found->device == device)
        return *found;
    return *m_bars.insert(found, Bar{.device = device, .step = {}, .percent = 0});
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
        m_console.write(stdout, QStringLiteral("\033[%1A\r\033[J").arg(m_shown));
    m_shown = 0;
}

void ProgressBars::show()
{
    const winsize size = terminalSize();
    const auto room = static_cast<std::size_t>(std::max(size.ws_row - 1, 1));
    for (const Bar &bar : m_bars) {
        if (static_cast<std::size_t>(m_shown) == room)
            break;
        const int filled = bar.percent * kBarWidth / 100;
        // On a narrow terminal only the end is missing.
        const QString line = QStringLiteral("%1 % %2 [%3%4] %5")
                                 .arg(bar.percent, 3)
                                 .arg(bar.device, QString(filled, u'#'),
                                      QString(kBarWidth - filled, u'-'), bar.step);
        m_console.write(stdout, QString(fitted(line, size.ws_col - 1) + u'\n'));
        ++m_shown;
    }
}

} // namespace vorn

// Preloaded into the real programs by hostile.py: measures how long the main thread keeps its event
// loop waiting, presses the window's controls, and gives pseudo-terminals modem lines. The driver
// passes a socket in VORN_PROBE, for commands and their answers, a line each, and a file in
// VORN_PROBE_LINES, whose bytes are RTS (as '0' or '1') and whether a hung close() was asked for.
// Reads and writes by calls that Faults.cpp leaves alone.
#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <ctime>

namespace {

constexpr int kTickMs = 5;

std::atomic<int> modemLines = 0;

// How long the calling thread was ready to run and did not get a processor: other programs' doing.
qint64 waitedForProcessor()
{
    static const int file = ::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC);
    char text[96] = {};
    if (::pread(file, text, sizeof text - 1, 0) <= 0)
        return 0;
    return QByteArray(text).split(' ').value(1).toLongLong();
}

class Probe
{
public:
    explicit Probe(int descriptor) : m_descriptor(descriptor)
    {
        m_tick.setTimerType(Qt::PreciseTimer);
        m_tick.callOnTimeout([this] { measure(); });
        m_tick.start(kTickMs);
        m_sinceTick.start();
        m_waited = waitedForProcessor();
        QObject::connect(&m_commands, &QSocketNotifier::activated, [this] { receive(); });
    }

private:
    void measure()
    {
        const qint64 waited = waitedForProcessor();
        const qint64 stall = m_sinceTick.nsecsElapsed() - kTickMs * qint64{1'000'000};
        m_stall = std::max(m_stall, stall);
        m_ownStall = std::max(m_ownStall, stall - (waited - m_waited));
        m_sinceTick.start();
        m_waited = waited;
    }

    void receive()
    {
        char text[4096];
        const ssize_t count = ::recv(m_descriptor, text, sizeof text, 0);
        if (count <= 0)
            return m_commands.setEnabled(false);
        m_text.append(text, count);
        for (qsizetype end = 0; (end = m_text.indexOf('\n')) >= 0; m_text.remove(0, end + 1)) {
            const QByteArray answer = obey(m_text.left(end)) + '\n';
            if (::send(m_descriptor, answer.constData(), static_cast<size_t>(answer.size()), 0) < 0)
                return;
        }
    }

    QByteArray obey(const QByteArray &line)
    {
        const QList<QByteArray> words = line.split(' ');
        if (words[0] == "stall") {
            measure();
            return QByteArray::number(std::exchange(m_ownStall, 0) / 1000) + ' ' +
                   QByteArray::number(std::exchange(m_stall, 0) / 1000);
        }
        if (words[0] == "quit") {
            QCoreApplication::quit();
            return "ok";
        }
        if (words[0] == "count") {
            m_tick.stop();
            const auto begin = reinterpret_cast<void (*)()>(::dlsym(RTLD_DEFAULT, "vornCount"));
            return begin ? begin(), "ok" : "no faults";
        }
        QWidget *const control = find(QString::fromUtf8(words.value(1)));
        if (!control)
            return "no control";
        if (words[0] == "text")
            return control->property("text").toByteArray().replace('\n', ' ');
        if (auto *const button = qobject_cast<QAbstractButton *>(control); words[0] == "press") {
            const bool isEnabled = button && button->isEnabled();
            QTimer::singleShot(0, button, &QAbstractButton::click);
            return isEnabled ? "ok" : "disabled";
        }
        if (words[0] == "close")
            return control->window()->close() ? "ok" : "refused";
        auto *const list = qobject_cast<QComboBox *>(control);
        if (!list)
            return "no list";
        if (words[0] == "popup")
            list->showPopup();
        if (words[0] == "hide")
            list->hidePopup();
        if (words[0] == "pick") {
            const int at = list->findText(QString::fromUtf8(words.mid(2).join(' ')));
            list->setCurrentIndex(at);
            emit list->activated(at);
        }
        return QByteArray::number(list->count());
    }

    static QWidget *find(const QString &name)
    {
        for (QWidget *window : QApplication::topLevelWidgets())
            if (auto *const control = window->findChild<QWidget *>(name))
                return control;
        return nullptr;
    }

    const int m_descriptor;
    QSocketNotifier m_commands{m_descriptor, QSocketNotifier::Read};
    QByteArray m_text;
    QTimer m_tick;
    QElapsedTimer m_sinceTick;
    qint64 m_waited = 0;
    qint64 m_stall = 0;
    qint64 m_ownStall = 0;
};

int linesFile()
{
    static const int file = ::open(qgetenv("VORN_PROBE_LINES").constData(), O_RDWR | O_CLOEXEC);
    return file;
}

void startProbe()
{
    linesFile();
    static auto probe = std::make_unique<Probe>(qEnvironmentVariableIntValue("VORN_PROBE"));
    // A notifier and a timer must not outlive the event dispatcher.
    QObject::connect(QCoreApplication::instance(), &QObject::destroyed, [] { probe.reset(); });
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(startProbe)

// The modem lines that a pseudo-terminal lacks.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    using Call = int (*)(int, unsigned long, void *);
    static const auto original = reinterpret_cast<Call>(::dlsym(RTLD_NEXT, "ioctl"));
    const bool isModem = request == TIOCMGET || request == TIOCMSET || request == TIOCMBIC;
    if (!isModem || ::isatty(descriptor) == 0)
        return original(descriptor, request, argument);
    int &lines = *static_cast<int *>(argument);
    if (request == TIOCMGET) {
        lines = modemLines;
        return 0;
    }
    modemLines = request == TIOCMSET ? lines : modemLines & ~lines;
    const char rts = (modemLines & TIOCM_RTS) != 0 ? '1' : '0';
    return ::pwrite(linesFile(), &rts, 1, 0) == 1 ? 0 : -1;
}

// A driver that hangs while the line is restored, for as long as the file says so.
extern "C" int tcsetattr(int descriptor, int actions, const termios *attributes) noexcept
{
    using Call = int (*)(int, int, const termios *);
    static const auto original = reinterpret_cast<Call>(::dlsym(RTLD_NEXT, "tcsetattr"));
    char hangs = '0';
    while (::syscall(SYS_pread64, linesFile(), &hangs, 1, 1) == 1 && hangs == '1')
        ::usleep(1000);
    return original(descriptor, actions, attributes);
}

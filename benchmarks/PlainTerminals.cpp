#include "benchmarks/PlainTerminals.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <libserialport.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstdarg>

// Takes the C library's place for the libraries in this process: a terminal without modem lines
// answers that they are low and takes what they are set to, instead of refusing.
extern "C" int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    const long result = ::syscall(SYS_ioctl, fd, request, argument);
    if (result < 0 && errno == ENOTTY) {
        if (request == TIOCMGET)
            *static_cast<int *>(argument) = 0;
        if (request == TIOCMGET || request == TIOCMBIS || request == TIOCMBIC)
            return 0;
    }
    return static_cast<int>(result);
}

namespace vorn {
namespace {

// A node that exists both in /dev and in the kernel's list of serial devices.
QString standIn()
{
    const QStringList names =
        QDir(QStringLiteral("/sys/class/tty")).entryList({QStringLiteral("ttyS*")});
    for (const QString &name : names)
        if (QFile::exists(QStringLiteral("/dev/") + name))
            return QStringLiteral("/dev/") + name;
    return {};
}

bool hasOwnMounts()
{
    static const bool has = ::unshare(CLONE_NEWNS) == 0 &&
                            ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return has;
}

} // namespace

FileDescriptor openPlainTerminal(const QString &path)
{
    return FileDescriptor(
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC));
}

LibserialportTerminal::LibserialportTerminal(const QString &path)
{
    const QByteArray node = QFile::encodeName(standIn());
    if (node.isEmpty() || !hasOwnMounts() ||
        ::mount(QFile::encodeName(path).constData(), node.constData(), nullptr, MS_BIND, nullptr) !=
            0)
        return;
    if (sp_get_port_by_name(node.constData(), &m_port) != SP_OK)
        m_port = nullptr;
    else if (sp_open(m_port, SP_MODE_READ_WRITE) != SP_OK) {
        sp_free_port(m_port);
        m_port = nullptr;
    }
    ::umount2(node.constData(), MNT_DETACH);
}

LibserialportTerminal::~LibserialportTerminal()
{
    if (!m_port)
        return;
    sp_close(m_port);
    sp_free_port(m_port);
}

} // namespace vorn

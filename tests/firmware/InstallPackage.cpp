// install_package FILENAME ARCHIVE [exchange|no-exchange]: saves and installs the archive under
// that name, to be starved and killed by tests. With a third word it stops itself (SIGSTOP) when it
// is about to begin; with "no-exchange" the system has no exchange of two names. Exits with the
// kind of the problem, if any.

#include "firmware/PackageStore.h"
#include "firmware/ResponseHeaders.h"

#include <QFile>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <string_view>

using namespace std::string_view_literals;

namespace {

bool forbidExchange()
{
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EINVAL),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program{std::size(rules), rules};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

} // namespace

int main(int argc, char **argv)
{
    constexpr int usageError = 100;
    const bool isTraced = argc == 4;
    if (argc < 3 || (isTraced && argv[3] == "no-exchange"sv && !forbidExchange()))
        return usageError;
    const QString filename = argv[1];
    QFile archive(argv[2]);
    if (!archive.open(QIODevice::ReadOnly))
        return usageError;
    const QByteArray data = archive.readAll();

    if (isTraced)
        std::raise(SIGSTOP);
    vorn::PackageProblem problem;
    {
        vorn::PackageStore store(filename, vorn::folderNameFor(filename));
        problem = store.save(data);
        if (!problem)
            problem = store.install();
    }
    std::fprintf(stderr, "%s: %d\n", qUtf8Printable(problem.text), problem.code);
    ::_exit(static_cast<int>(problem.kind)); // a leak check cannot run in a traced process
}

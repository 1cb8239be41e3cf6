#include "simulator/ServerCertificate.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>
#include <vector>

namespace vorn {

namespace {

using namespace Qt::StringLiterals;

// A configuration of our own: the system's may say anything.
constexpr const char *Configuration = R"([req]
distinguished_name = name
prompt = no
[name]
CN = Vorn package server
[authority]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign
subjectKeyIdentifier = hash
[good]
basicConstraints = critical, CA:FALSE
subjectAltName = IP:127.0.0.1, IP:::1, DNS:localhost
[elsewhere]
basicConstraints = critical, CA:FALSE
subjectAltName = DNS:packages.example
[ca]
default_ca = signing
[signing]
database = index
rand_serial = yes
new_certs_dir = .
default_md = sha256
policy = any
[any]
commonName = supplied
)";

constexpr const char *LogName = "log";

// A posix_spawn(3) of `openssl ARGUMENTS` in the directory, what it says going to the log there.
// Zero, or the errno of what failed; then *exitStatus is as waitpid(2) has it.
int spawnOpenssl(const QByteArray &directory, const QStringList &arguments, int *exitStatus)
{
    std::vector<QByteArray> words{"openssl"};
    for (const QString &argument : arguments)
        words.push_back(argument.toLocal8Bit());
    std::vector<char *> argv;
    argv.reserve(words.size() + 1);
    for (QByteArray &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawnattr_init(&attributes);
    ::posix_spawn_file_actions_addchdir_np(&actions, directory.constData());
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, LogName,
                                       O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    sigset_t none;
    ::sigemptyset(&none); // this process may have blocked signals; openssl is to hear them
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    pid_t pid = 0;
    int error = ::posix_spawnp(&pid, "openssl", &actions, &attributes, argv.data(), environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    while (error == 0 && ::waitpid(pid, exitStatus, 0) < 0)
        error = errno == EINTR ? 0 : errno;
    return error;
}

// Runs openssl in a directory of its own, until a step fails.
class Openssl
{
public:
    Openssl(const QString &directory, QString *problem)
        : m_directory(directory), m_problem(problem),
          m_good(write("openssl.cnf", Configuration) && write("index", QByteArray()))
    {
        if (!m_good)
            *m_problem = u"no temporary files to be had"_s;
    }

    bool good() const { return m_good; }

    void run(const QStringList &arguments)
    {
        if (!m_good)
            return;
        int status = 0;
        const int error = spawnOpenssl(QFile::encodeName(m_directory), arguments, &status);
        m_good = error == 0 && status == 0;
        if (m_good)
            return;
        const QString said = QString::fromStdString(
            error != 0 ? std::generic_category().message(error) : read(LogName).toStdString());
        *m_problem = u"openssl %1: %2"_s.arg(arguments.first(), said.trimmed());
    }

    QByteArray read(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QString path(const char *name) const { return m_directory + u'/' + QLatin1String(name); }
    bool write(const char *name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }

    QString m_directory;
    QString *m_problem;
    bool m_good;
};

QStringList request(const QString &name, const QStringList &more)
{
    return QStringList{u"req"_s,
                       u"-config"_s,
                       u"openssl.cnf"_s,
                       u"-newkey"_s,
                       u"ec"_s,
                       u"-pkeyopt"_s,
                       u"ec_paramgen_curve:prime256v1"_s,
                       u"-nodes"_s,
                       u"-keyout"_s,
                       name + u".key"_s,
                       u"-out"_s,
                       name + u".pem"_s} +
           more;
}

} // namespace

std::optional<ServerCertificate> makeServerCertificate(CertificateKind kind, QString *problem)
{
    const QTemporaryDir directory;
    Openssl openssl(directory.path(), problem);
    const QStringList selfSigned{u"-x509"_s,
                                 u"-extensions"_s,
                                 u"authority"_s,
                                 u"-days"_s,
                                 u"3650"_s,
                                 u"-subj"_s,
                                 u"/CN=Vorn test authority"_s};
    openssl.run(request(u"authority"_s, selfSigned));
    QString signer = u"authority"_s;
    if (kind == CertificateKind::OtherAuthority) {
        signer = u"other"_s;
        openssl.run(request(signer, selfSigned));
    }
    openssl.run(request(u"request"_s, {}));
    const bool expired = kind == CertificateKind::Expired;
    openssl.run({u"ca"_s, u"-config"_s, u"openssl.cnf"_s, u"-batch"_s, u"-notext"_s, u"-cert"_s,
                 signer + u".pem"_s, u"-keyfile"_s, signer + u".key"_s, u"-in"_s, u"request.pem"_s,
                 u"-out"_s, u"server.pem"_s, u"-extensions"_s,
                 kind == CertificateKind::WrongName ? u"elsewhere"_s : u"good"_s, u"-startdate"_s,
                 u"20200101000000Z"_s, u"-enddate"_s,
                 expired ? u"20210101000000Z"_s : u"20491231000000Z"_s});
    if (!openssl.good())
        return std::nullopt;
    return ServerCertificate{openssl.read("authority.pem"), openssl.read("server.pem"),
                             openssl.read("request.key")};
}

} // namespace vorn

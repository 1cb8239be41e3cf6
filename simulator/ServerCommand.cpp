#include "simulator/ServerCommand.h"

#include "simulator/CommandSupport.h"
#include "simulator/PackageServer.h"
#include "simulator/StoredZip.h"

#include <QFile>
#include <QHash>

#include <limits>

namespace vorn {
namespace {

const QString kDescription = QStringLiteral(
    "An HTTPS server for firmware packages on this machine, with a certificate made at its start. "
    "Prints a line of JSON with its host and the certificate file when it is ready, and a report "
    "of "
    "the requests when it ends.\n\n"
    "Examples:\n"
    "  vornsim package-server\n"
    "  vornsim package-server --package latest.zip --last-modified \"Sat, 14 Nov 2026 09:30:00 "
    "GMT\"\n"
    "  vornsim package-server --cut-at 20000");

void addOptions(QCommandLineParser &parser)
{
    const auto option = [&](const char *name, const char *description, const char *value,
                            const char *standard = "") {
        parser.addOption({QString::fromLatin1(name), QString::fromLatin1(description),
                          QString::fromLatin1(value), QString::fromLatin1(standard)});
    };
    const auto flag = [&](const char *name, const char *description) {
        parser.addOption({QString::fromLatin1(name), QString::fromLatin1(description)});
    };
    option("port", "listen here; 0: on a free port", "N", "0");
    option("package", "the zip archive to serve; without it, a sample package", "FILE");
    option("last-modified", "the Last-Modified header; without it, none is sent", "TEXT");
    option("status", "HTTP status; any but 200 comes with a page of text", "N", "200");
    option("framing", "length, chunked or until-close", "HOW", "length");
    option("declared-length", "say this Content-Length, whatever the body's is", "BYTES");
    option("truncate-at", "end the body after so many bytes", "BYTES");
    option("cut-at", "break the connection after so many bytes", "BYTES");
    flag("endless", "send the package again and again");
    option("bytes-per-second", "slow the body down; 0: as fast as it goes", "N", "0");
    option("pause-ms", "wait between headers and body", "MS", "0");
    option("suggested-name", "the file name in a Content-Disposition header", "NAME");
    option("redirect", "http, https, loop, or an address", "WHERE");
    option("header", "a further header line, sent as it stands; may be given again", "LINE");
    flag("garbage-headers", "send lines that are no headers");
    option("silence", "none, handshake or request", "WHEN", "none");
    option("certificate", "good, wrong-name, other-authority or expired", "KIND", "good");
    option("report", "write the report here instead of to the standard output", "FILE");
}

// One of several words; sets the problem when it is none of them.
template <typename Value>
Value choice(const QCommandLineParser &parser, const char *option,
             const QHash<QString, Value> &values, QString &problem)
{
    const QString word = parser.value(QString::fromLatin1(option));
    if (!values.contains(word))
        problem =
            QStringLiteral("--%1 does not know \"%2\"").arg(QString::fromLatin1(option), word);
    return values.value(word);
}

bool readPackage(const QString &file, QByteArray &package, QString &problem)
{
    if (file.isEmpty()) {
        package = samplePackage();
        return true;
    }
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly)) {
        problem = file + QStringLiteral(": ") + in.errorString();
        return false;
    }
    package = in.readAll();
    return true;
}

PackageAnswer readAnswer(const QCommandLineParser &parser, QString &problem)
{
    PackageAnswer answer;
    const auto size = [&](const char *option) -> std::optional<qint64> {
        const QString name = QString::fromLatin1(option);
        if (!parser.isSet(name))
            return std::nullopt;
        return number(parser, name, 0, std::numeric_limits<qint64>::max(), problem);
    };
    const auto text = [&](const char *option) -> std::optional<QByteArray> {
        const QString name = QString::fromLatin1(option);
        return parser.isSet(name) ? std::optional(parser.value(name).toUtf8()) : std::nullopt;
    };
    answer.lastModified = text("last-modified");
    answer.status =
        static_cast<int>(number(parser, QStringLiteral("status"), 100, 599, problem).value_or(200));
    answer.framing = choice<BodyFraming>(parser, "framing",
                                         {{QStringLiteral("length"), BodyFraming::Length},
                                          {QStringLiteral("chunked"), BodyFraming::Chunked},
                                          {QStringLiteral("until-close"), BodyFraming::UntilClose}},
                                         problem);
    answer.declaredLength = size("declared-length");
    answer.truncateAt = size("truncate-at");
    answer.cutAt = size("cut-at");
    answer.endless = parser.isSet(QStringLiteral("endless"));
    answer.bytesPerSecond = size("bytes-per-second").value_or(0);
    answer.bodyPause = std::chrono::milliseconds(size("pause-ms").value_or(0));
    answer.suggestedName = text("suggested-name");
    answer.redirectTo = text("redirect").value_or(QByteArray());
    const QStringList headers = parser.values(QStringLiteral("header"));
    for (const QString &header : headers)
        answer.extraHeaders.append(header.toUtf8());
    answer.garbageHeaders = parser.isSet(QStringLiteral("garbage-headers"));
    answer.silence = choice<ServerSilence>(parser, "silence",
                                           {{QStringLiteral("none"), ServerSilence::None},
                                            {QStringLiteral("handshake"), ServerSilence::Handshake},
                                            {QStringLiteral("request"), ServerSilence::Request}},
                                           problem);
    return answer;
}

} // namespace

int runServerCommand(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(kDescription);
    addOptions(parser);
    if (const auto exitCode = parse(parser, arguments))
        return *exitCode;
    QString problem;
    PackageAnswer answer = readAnswer(parser, problem);
    const auto certificate = choice<CertificateKind>(
        parser, "certificate",
        {{QStringLiteral("good"), CertificateKind::Good},
         {QStringLiteral("wrong-name"), CertificateKind::WrongName},
         {QStringLiteral("other-authority"), CertificateKind::OtherAuthority},
         {QStringLiteral("expired"), CertificateKind::Expired}},
        problem);
    const auto port = number(parser, QStringLiteral("port"), 0, 65535, problem).value_or(0);
    if (problem.isEmpty())
        problem = packageAnswerProblem(answer);
    if (!problem.isEmpty())
        return complainAboutUsage(problem);
    if (!parser.positionalArguments().isEmpty())
        return complainAboutUsage(QStringLiteral("Unexpected argument: ") +
                                  parser.positionalArguments().constFirst());
    if (!readPackage(parser.value(QStringLiteral("package")), answer.package, problem))
        return complain(problem);

    PackageServer server(answer, certificate);
    if (!server.start(&problem, static_cast<quint16>(port)))
        return complain(problem);
    printLine({{QStringLiteral("host"), server.host()},
               {QStringLiteral("ca"), server.authorityFile()},
               {QStringLiteral("plainPort"), server.plainPort()}});
    runUntilInterrupted([] { return false; });
    return writeJson(server.report().toJson(), parser.value(QStringLiteral("report")), problem)
               ? 0
               : complain(problem);
}

} // namespace vorn

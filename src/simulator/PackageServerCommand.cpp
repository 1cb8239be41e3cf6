#include "simulator/Command.h"
#include "simulator/PackageServer.h"
#include "simulator/StopEvents.h"
#include "simulator/StoredZip.h"

#include <QFile>
#include <QJsonDocument>

#include <algorithm>
#include <utility>

namespace vorn {

namespace {

constexpr const char *Description =
    "A package server: HTTPS on 127.0.0.1, with a certificate made at its start. Prints one line "
    "of\n"
    "JSON with its host and its authority's file when it is ready, and one, the report, when it\n"
    "ends (SIGTERM or SIGINT). The package is at /software/VornUpdate2.zip.";

constexpr const char *Examples =
    "Examples:\n"
    "  vornsim package-server --port 8443 --ca-file /tmp/ca.pem\n"
    "      then: vornupdater --package-host 127.0.0.1:8443 --package-ca /tmp/ca.pem\n"
    "  vornsim package-server --package latest.zip --last-modified \"Sat, 14 Nov 2026 09:30:00 "
    "GMT\"\n"
    "  vornsim package-server --bytes-per-second 100000\n"
    "      a slow server\n"
    "  vornsim package-server --cut-at 20000\n"
    "      the connection breaks after 20,000 bytes of body\n"
    "  vornsim package-server --certificate expired\n"
    "  vornsim package-server --suggested-name ../../x.zip\n"
    "  vornsim package-server --redirect http\n"
    "  vornsim package-server --endless --declared-length 100000000000\n"
    "  vornsim package-server --status 404\n";

template <typename Value>
using Choice = std::pair<const char *, Value>;

// The value that the option names; the first one when it is not given.
template <typename Value, std::size_t N>
Value choice(CommandLine &line, const char *option, const Choice<Value> (&choices)[N])
{
    QStringList names;
    for (const auto &[name, value] : choices) {
        if (!line.isSet(option) || line.text(option) == QLatin1String(name))
            return value;
        names.append(QLatin1String(name));
    }
    line.fail(QStringLiteral("--%1: \"%2\" is none of %3")
                  .arg(QLatin1String(option), line.text(option), names.join(QStringLiteral(", "))));
    return choices[0].second;
}

void addOptions(CommandLine &line)
{
    line.addOption("package", "Serve this file.", "FILE");
    line.addOption("sample-package", "Serve a package of sample firmware (the default).");
    line.addOption("port", "Port to listen on (default: a free one).", "N");
    line.addOption("ca-file", "Write the authority to trust into this file.", "FILE");
    line.addOption("report", "Write the report into a file as well.", "FILE");
    line.addOption("certificate", "good, wrong-name, other-authority or expired.", "KIND");
    line.addOption("last-modified", "Send this Last-Modified (default: none).", "TEXT");
    line.addOption("status", "Answer with this status and a page instead of the package.", "N");
    line.addOption("framing",
                   "length, chunked, or until-close (no length; it ends with the "
                   "connection).",
                   "HOW");
    line.addOption("declared-length", "Say this Content-Length, whatever the body's is.", "BYTES");
    line.addOption("truncate-at", "End the body after so many bytes, in good order.", "BYTES");
    line.addOption("cut-at", "Break the connection after so many bytes of body.", "BYTES");
    line.addOption("endless", "Send the package again and again.");
    line.addOption("bytes-per-second", "Slow the body down.", "N");
    line.addOption("pause-ms", "Pause between the headers and the body.", "MS");
    line.addOption("suggested-name", "Suggest this file name (Content-Disposition).", "NAME");
    line.addOption("redirect", "Redirect to http, https, loop or an address.", "WHERE");
    line.addOption("header", "Send this header line too; may be given several times.", "LINE");
    line.addOption("garbage-headers", "Send lines that are no headers among the headers.");
    line.addOption("silence", "Never answer: request (after it) or handshake (before it).", "WHEN");
}

QByteArray readPackage(CommandLine &line)
{
    if (!line.isSet("package"))
        return samplePackage();
    if (line.isSet("sample-package"))
        line.fail(QStringLiteral("--package and --sample-package exclude each other"));
    QFile file(line.text("package"));
    if (!file.open(QIODevice::ReadOnly)) {
        line.fail(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
        return {};
    }
    return file.readAll();
}

std::optional<qint64> optionalNumber(CommandLine &line, const char *name)
{
    return line.isSet(name) ? std::optional(line.number(name, 0)) : std::nullopt;
}

PackageAnswer readAnswer(CommandLine &line)
{
    PackageAnswer answer;
    answer.package = readPackage(line);
    answer.status = static_cast<int>(std::min(line.number("status", answer.status), qint64{1000}));
    answer.lastModified = line.bytes("last-modified");
    answer.framing = choice<BodyFraming>(line, "framing",
                                         {{"length", BodyFraming::Length},
                                          {"chunked", BodyFraming::Chunked},
                                          {"until-close", BodyFraming::UntilClose}});
    answer.declaredLength = optionalNumber(line, "declared-length");
    answer.truncateAt = optionalNumber(line, "truncate-at");
    answer.cutAt = optionalNumber(line, "cut-at");
    answer.endless = line.isSet("endless");
    answer.bytesPerSecond = line.number("bytes-per-second", 0);
    answer.bodyPause = line.milliseconds("pause-ms", {});
    answer.suggestedName = line.bytes("suggested-name");
    answer.redirectTo = line.text("redirect").toUtf8();
    for (const QString &header : line.texts("header"))
        answer.extraHeaders.append(header.toUtf8());
    answer.garbageHeaders = line.isSet("garbage-headers");
    if (line.isSet("silence")) {
        answer.silence = choice<ServerSilence>(
            line, "silence",
            {{"request", ServerSilence::Request}, {"handshake", ServerSilence::Handshake}});
    }
    line.fail(packageAnswerProblem(answer));
    return answer;
}

} // namespace

int runPackageServer(const QStringList &arguments)
{
    CommandLine line(QStringLiteral("package-server"), QLatin1String(Description),
                     QLatin1String(Examples));
    addOptions(line);
    if (!line.parse(arguments))
        return Success;
    const PackageAnswer answer = readAnswer(line);
    const auto certificate =
        choice<CertificateKind>(line, "certificate",
                                {{"good", CertificateKind::Good},
                                 {"wrong-name", CertificateKind::WrongName},
                                 {"other-authority", CertificateKind::OtherAuthority},
                                 {"expired", CertificateKind::Expired}});
    const qint64 port = line.number("port", 0);
    if (port > 65535)
        line.fail(QStringLiteral("--port: a port lies below 65536"));
    if (line.failed())
        return line.complain();

    const StopEvents stop;
    PackageServer server(answer, certificate);
    QString problem = QStringLiteral("signals cannot be waited for");
    if (!stop.isValid() || !server.start(&problem, static_cast<quint16>(port))) {
        printNote(problem);
        return Failure;
    }
    QString authority = server.authorityFile();
    if (line.isSet("ca-file")) {
        authority = line.text("ca-file");
        if (!writeFile(authority, server.authority()))
            return Failure;
    }
    printEvent("ready", {{QStringLiteral("host"), server.host()},
                         {QStringLiteral("plainPort"), server.plainPort()},
                         {QStringLiteral("ca"), authority}});
    stop.wait();
    const QJsonObject report = server.report().toJson();
    const bool written =
        !line.isSet("report") || writeFile(line.text("report"), QJsonDocument(report).toJson());
    printEvent("report", report);
    return written ? Success : Failure;
}

} // namespace vorn

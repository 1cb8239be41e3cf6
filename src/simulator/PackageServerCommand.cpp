#include "platform/QuitSignals.h"
#include "simulator/CommandOptions.h"
#include "simulator/PackageServer.h"
#include "simulator/SampleFirmware.h"

#include <QCoreApplication>
#include <QFile>

namespace vorn {

namespace {

constexpr const char *kDescription =
    "A package server: HTTPS on 127.0.0.1, with a certificate made at its start. Prints one line "
    "of\n"
    "JSON with its host and its authority's file when it is ready, and one, the report, when it\n"
    "ends (SIGTERM or SIGINT). The package is at /software/VornUpdate2.zip.";

constexpr const char *kExamples =
    "Examples:\n"
    "  vornsim package-server --port 8443 --ca-file /tmp/ca.pem\n"
    "      then: vornupdater --package-host 127.0.0.1:8443 --package-ca /tmp/ca.pem\n"
    "  vornsim package-server --package latest.zip --last-modified \"Sat, 14 Nov 2026 09:30:00 "
    "GMT\"\n"
    "  vornsim package-server --cut-at 20000\n"
    "      the connection breaks after 20,000 bytes of body\n"
    "  vornsim package-server --endless --declared-length 100000000000\n";

CommandOptions packageServerCommand()
{
    return {"package-server",
            kDescription,
            kExamples,
            {{"package", "FILE", "Serve this file."},
             {"sample-package", nullptr, "Serve a package of sample firmware (the default)."},
             {"port", "N", "Port to listen on (default: a free one)."},
             {"ca-file", "FILE", "Write the authority to trust to this file."},
             {"report", "FILE", "Write the report to a file as well."},
             {"certificate", "KIND", "good, wrong-name, other-authority or expired."},
             {"last-modified", "TEXT", "Send this Last-Modified (default: none)."},
             {"status", "N", "Answer with this status and a page instead of the package."},
             {"framing", "HOW", "length, chunked, or until-close (the end of the connection)."},
             {"declared-length", "BYTES", "Send this Content-Length, whatever the body's is."},
             {"truncate-at", "BYTES", "End the body after this many bytes, in good order."},
             {"cut-at", "BYTES", "Break the connection after this many bytes of body."},
             {"endless", nullptr, "Send the package again and again."},
             {"bytes-per-second", "N", "Slow the body down."},
             {"pause-ms", "MS", "Pause between the headers and the body."},
             {"suggested-name", "NAME", "Suggest this file name (Content-Disposition)."},
             {"redirect", "WHERE", "Redirect to http, https, loop or an address."},
             {"header", "LINE", "Send this header line too; may be given several times."},
             {"garbage-headers", nullptr, "Send malformed lines among the headers."},
             {"silence", "WHEN", "Never answer: request (after it) or handshake (before it)."}}};
}

QByteArray packageToServe(const CommandOptions &line)
{
    if (!line.isSet("package"))
        return samplePackage();
    if (line.isSet("sample-package"))
        line.fail(QStringLiteral("--package and --sample-package exclude each other"));
    QFile file(line.text("package"));
    if (!file.open(QIODevice::ReadOnly))
        line.fail(QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    return file.readAll();
}

std::optional<qint64> optionalSize(const CommandOptions &line, const char *name)
{
    return line.isSet(name) ? std::optional(line.number(name, 0, kAnyNumber)) : std::nullopt;
}

PackageAnswer packageAnswer(const CommandOptions &line)
{
    PackageAnswer answer;
    answer.package = packageToServe(line);
    answer.status = static_cast<int>(line.number("status", answer.status, 599, 200));
    answer.lastModified = line.bytes("last-modified");
    answer.framing =
        line.choice<BodyFraming>("framing", {{"length", BodyFraming::Length},
                                             {"chunked", BodyFraming::Chunked},
                                             {"until-close", BodyFraming::UntilClose}});
    answer.declaredLength = optionalSize(line, "declared-length");
    answer.truncateAt = optionalSize(line, "truncate-at");
    answer.cutAt = optionalSize(line, "cut-at");
    answer.endless = line.isSet("endless");
    answer.bytesPerSecond = line.number("bytes-per-second", 0, kAnyNumber);
    answer.bodyPause = line.milliseconds("pause-ms", {});
    answer.suggestedName = line.bytes("suggested-name");
    answer.redirectTo = line.text("redirect").toUtf8();
    for (const QString &header : line.texts("header"))
        answer.extraHeaders.append(header.toUtf8());
    answer.garbageHeaders = line.isSet("garbage-headers");
    if (line.isSet("silence")) {
        answer.silence =
            line.choice<ServerSilence>("silence", {{"request", ServerSilence::Request},
                                                   {"handshake", ServerSilence::Handshake}});
    }
    if (answer.truncateAt && answer.cutAt)
        line.fail(QStringLiteral("a body is either truncated or cut"));
    if (answer.endless && answer.package.isEmpty())
        line.fail(QStringLiteral("an endless body needs a package to repeat"));
    if (answer.declaredLength && answer.framing != BodyFraming::Length)
        line.fail(QStringLiteral("a declared length needs the framing by length"));
    return answer;
}

} // namespace

int runPackageServer(const QStringList &arguments)
{
    CommandOptions line = packageServerCommand();
    if (!line.parse(arguments))
        return kExitSuccess;
    const auto certificate = line.choice<CertificateKind>(
        "certificate", {{"good", CertificateKind::Good},
                        {"wrong-name", CertificateKind::WrongName},
                        {"other-authority", CertificateKind::OtherAuthority},
                        {"expired", CertificateKind::Expired}});
    const auto port = static_cast<quint16>(line.number("port", 0, 65535));
    PackageServer server(packageAnswer(line), certificate);

    QuitSignals quitSignals;
    quitSignals.watch();
    QString problem;
    if (!server.start(&problem, port))
        throw CommandFailure{kExitFailure, problem};
    QString authority = server.authorityFile();
    if (line.isSet("ca-file")) {
        authority = line.text("ca-file");
        if (!writeFile(authority, server.authority()))
            return kExitFailure;
    }
    printEvent("ready", {{QStringLiteral("host"), server.host()},
                         {QStringLiteral("plainPort"), server.plainPort()},
                         {QStringLiteral("ca"), authority}});
    QCoreApplication::exec();
    return giveReport(line, server.report().toJson()) ? kExitSuccess : kExitFailure;
}

} // namespace vorn

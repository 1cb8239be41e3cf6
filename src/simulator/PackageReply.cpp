#include "simulator/PackageReply.h"

namespace vorn {

namespace {

constexpr const char *kPackagePath = "/software/VornUpdate2.zip";
constexpr const char *kMovedPath = "/moved/VornUpdate2.zip";

constexpr int kNotFound = 404;
constexpr int kMethodNotAllowed = 405;

// What a broken or hostile server might send among its headers.
constexpr const char *kGarbageHeaders = "this line has no colon\r\n"
                                        ": a value without a name\r\n"
                                        "X-Name with spaces : 1\r\n"
                                        "X-Bytes: \x01\x7F\xFF\xFE\r\n"
                                        "Content-Length: not a number\r\n"
                                        "  folded onto the line before\r\n";

QByteArray reason(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 302:
        return "Found";
    case kNotFound:
        return "Not Found";
    case kMethodNotAllowed:
        return "Method Not Allowed";
    default:
        return "Status " + QByteArray::number(status);
    }
}

QByteArray startOfHead(int status, const char *type)
{
    return "HTTP/1.1 " + QByteArray::number(status) + ' ' + reason(status) +
           "\r\nServer: vornsim\r\nConnection: close\r\nContent-Type: " + type + "\r\n";
}

PackageReply page(int status, const QByteArray &more = {})
{
    PackageReply reply;
    reply.status = status;
    reply.body = "<html><body><h1>" + QByteArray::number(status) + ' ' + reason(status) +
                 "</h1></body></html>\n";
    reply.head = startOfHead(status, "text/html") + more +
                 "Content-Length: " + QByteArray::number(reply.body.size()) + "\r\n\r\n";
    return reply;
}

QByteArray redirectTarget(const QByteArray &to, const PackageRequest &request, quint16 plainPort)
{
    if (to == "http") {
        const QByteArray name = request.host.left(request.host.lastIndexOf(':'));
        return "http://" + name + ':' + QByteArray::number(plainPort) + request.target;
    }
    if (to == "https")
        return "https://" + request.host + kMovedPath;
    if (to == "loop")
        return "https://" + request.host + request.target;
    return to;
}

} // namespace

QString packageAnswerProblem(const PackageAnswer &answer)
{
    if (answer.status < 200 || answer.status > 599)
        return QStringLiteral("the status must be between 200 and 599");
    for (const std::optional<qint64> &number :
         {answer.declaredLength, answer.truncateAt, answer.cutAt})
        if (number && *number < 0)
            return QStringLiteral("lengths must not be negative");
    if (answer.bytesPerSecond < 0 || answer.bodyPause < std::chrono::milliseconds::zero())
        return QStringLiteral("rates and pauses must not be negative");
    if (answer.truncateAt && answer.cutAt)
        return QStringLiteral("a body is either truncated or cut");
    if (answer.endless && answer.package.isEmpty())
        return QStringLiteral("an endless body needs a package to repeat");
    if (answer.declaredLength && answer.framing != BodyFraming::Length)
        return QStringLiteral("a declared length needs the framing by length");
    return {};
}

std::optional<PackageRequest> parseRequest(const QByteArray &block)
{
    const QList<QByteArray> lines = block.split('\n');
    const QList<QByteArray> words = lines.first().trimmed().split(' ');
    if (words.size() != 3 || !words.last().startsWith("HTTP/1."))
        return std::nullopt;
    PackageRequest request{words[0], words[1], {}};
    for (const QByteArray &line : lines)
        if (line.toLower().startsWith("host:"))
            request.host = line.mid(5).trimmed();
    return request;
}

PackageReply makeReply(const PackageAnswer &answer, const PackageRequest &request, bool secure,
                       quint16 plainPort)
{
    if (request.method != "GET")
        return page(kMethodNotAllowed);
    if (request.target != kPackagePath && request.target != kMovedPath)
        return page(kNotFound);
    if (secure && request.target == kPackagePath && !answer.redirectTo.isEmpty())
        return page(302,
                    "Location: " + redirectTarget(answer.redirectTo, request, plainPort) + "\r\n");

    PackageReply reply;
    reply.status = answer.status;
    reply.body = answer.package;
    QByteArray head = startOfHead(answer.status, "application/zip");
    if (answer.status != 200) {
        const PackageReply error = page(answer.status);
        reply.body = error.body;
        head = startOfHead(answer.status, "text/html");
    }
    if (answer.garbageHeaders)
        head += kGarbageHeaders;
    for (const QByteArray &line : answer.extraHeaders)
        head += line + "\r\n";
    if (answer.lastModified)
        head += "Last-Modified: " + *answer.lastModified + "\r\n";
    if (answer.suggestedName)
        head += "Content-Disposition: attachment; filename=\"" + *answer.suggestedName + "\"\r\n";
    if (answer.framing == BodyFraming::Chunked) {
        head += "Transfer-Encoding: chunked\r\n";
        reply.chunked = true;
    } else if (answer.declaredLength) {
        head += "Content-Length: " + QByteArray::number(*answer.declaredLength) + "\r\n";
    } else if (answer.framing == BodyFraming::Length && !answer.endless) {
        head += "Content-Length: " + QByteArray::number(reply.body.size()) + "\r\n";
    }
    reply.head = head + "\r\n";
    reply.endless = answer.endless;
    reply.stopAfter = answer.cutAt ? answer.cutAt : answer.truncateAt;
    reply.cut = answer.cutAt.has_value();
    reply.bytesPerSecond = answer.bytesPerSecond;
    reply.bodyPause = answer.bodyPause;
    return reply;
}

} // namespace vorn

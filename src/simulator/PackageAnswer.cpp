#include "simulator/PackageAnswer.h"

namespace vorn {

namespace {

constexpr const char *kPackagePath = "/software/VornUpdate2.zip";
constexpr const char *kMovedPath = "/moved/VornUpdate2.zip";

constexpr int kOk = 200;
constexpr int kFound = 302;
constexpr int kNotFound = 404;
constexpr int kMethodNotAllowed = 405;

// What a broken or hostile server might send among its headers.
constexpr const char *kGarbageHeaders = "this line has no colon\r\n"
                                        ": a value without a name\r\n"
                                        "X-Name with spaces : 1\r\n"
                                        "X-Bytes: \x01\x7F\xFF\xFE\r\n"
                                        "Content-Length: not a number\r\n"
                                        "  folded onto the line before\r\n";

QByteArray startOfHead(int status, const char *type)
{
    return "HTTP/1.1 " + QByteArray::number(status) + (status == kOk ? " OK" : " Status") +
           "\r\nServer: vornsim\r\nConnection: close\r\nContent-Type: " + type + "\r\n";
}

PackageReply page(int status, const QByteArray &more = {})
{
    PackageReply reply{status};
    reply.body = "<html><body><h1>" + QByteArray::number(status) + "</h1></body></html>\n";
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
    if (secure && request.target == kPackagePath && !answer.redirectTo.isEmpty()) {
        const QByteArray target = redirectTarget(answer.redirectTo, request, plainPort);
        return page(kFound, "Location: " + target + "\r\n");
    }

    const bool isOk = answer.status == kOk;
    PackageReply reply{answer.status};
    reply.how = answer;
    reply.body = isOk ? answer.package : page(answer.status).body;
    reply.head = startOfHead(answer.status, isOk ? "application/zip" : "text/html");
    if (answer.garbageHeaders)
        reply.head += kGarbageHeaders;
    for (const QByteArray &line : answer.extraHeaders)
        reply.head += line + "\r\n";
    if (answer.lastModified)
        reply.head += "Last-Modified: " + *answer.lastModified + "\r\n";
    if (answer.suggestedName)
        reply.head +=
            "Content-Disposition: attachment; filename=\"" + *answer.suggestedName + "\"\r\n";
    if (answer.framing == BodyFraming::Chunked)
        reply.head += "Transfer-Encoding: chunked\r\n";
    else if (answer.framing == BodyFraming::Length && (answer.declaredLength || !answer.endless))
        reply.head += "Content-Length: " +
                      QByteArray::number(answer.declaredLength.value_or(reply.body.size())) +
                      "\r\n";
    reply.head += "\r\n";
    return reply;
}

} // namespace vorn

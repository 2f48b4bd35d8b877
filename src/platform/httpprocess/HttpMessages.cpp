#include "platform/httpprocess/HttpMessages.h"

#include <QDataStream>
#include <QIODevice>

#include <utility>

namespace orbitledge {

namespace {

using Milliseconds = std::chrono::milliseconds;

template <typename Write> QByteArray written(Write write)
{
    QByteArray head;
    QDataStream stream(&head, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_4);
    write(stream);
    return head;
}

/// Whether `read` found what it looked for, and nothing after it.
template <typename Read> bool isReadWhole(const QByteArray &head, Read read)
{
    QDataStream stream(head);
    stream.setVersion(QDataStream::Qt_6_4);
    read(stream);
    return stream.status() == QDataStream::Ok && stream.atEnd();
}

Milliseconds readMilliseconds(QDataStream &stream)
{
    qint64 count = 0;
    stream >> count;
    return Milliseconds(count);
}

qint64 number(Milliseconds duration)
{
    return duration.count();
}

void write(QDataStream &stream, const QList<HttpHeader> &headers)
{
    stream << static_cast<qint64>(headers.size());
    for (const HttpHeader &header : headers)
        stream << header.name << header.value;
}

QList<HttpHeader> readHeaders(QDataStream &stream)
{
    qint64 count = 0;
    stream >> count;
    QList<HttpHeader> headers;
    while (stream.status() == QDataStream::Ok && headers.size() < count) {
        HttpHeader header;
        stream >> header.name >> header.value;
        headers.append(std::move(header));
    }
    return headers;
}

/// The last of the kinds.
constexpr auto lastKind = TransportFailure::Kind::Other;

} // namespace

HttpFrame encoded(const HttpSetup &setup)
{
    const HttpSessionConfiguration &configuration = setup.configuration;
    return {.head = written([&](QDataStream &stream) {
                stream << setup.userAgent << number(configuration.requestTimeout)
                       << number(configuration.resourceTimeout) << configuration.largestBody
                       << configuration.waitsForConnectivity << configuration.certificateAuthorities;
            }),
        .body = {}};
}

std::optional<HttpSetup> decodedSetup(const HttpFrame &frame)
{
    HttpSetup setup;
    const bool isWhole = isReadWhole(frame.head, [&](QDataStream &stream) {
        HttpSessionConfiguration &configuration = setup.configuration;
        stream >> setup.userAgent;
        configuration.requestTimeout = readMilliseconds(stream);
        configuration.resourceTimeout = readMilliseconds(stream);
        stream >> configuration.largestBody >> configuration.waitsForConnectivity
            >> configuration.certificateAuthorities;
    });
    return isWhole ? std::optional(std::move(setup)) : std::nullopt;
}

HttpFrame encoded(const HttpOrder &order)
{
    const HttpRequest &request = order.request;
    return {.head = written([&](QDataStream &stream) {
                stream << order.number << request.method << request.url << number(request.idleTimeout)
                       << request.body.has_value();
                write(stream, request.headers);
            }),
        .body = request.body.value_or(QByteArray())};
}

std::optional<HttpOrder> decodedOrder(const HttpFrame &frame)
{
    HttpOrder order;
    bool hasBody = false;
    const bool isWhole = isReadWhole(frame.head, [&](QDataStream &stream) {
        stream >> order.number >> order.request.method >> order.request.url;
        order.request.idleTimeout = readMilliseconds(stream);
        stream >> hasBody;
        order.request.headers = readHeaders(stream);
    });
    if (!isWhole)
        return std::nullopt;
    if (hasBody)
        order.request.body = frame.body;
    return order;
}

HttpFrame encoded(const HttpReport &report)
{
    HttpFrame frame;
    frame.head = written([&](QDataStream &stream) {
        stream << report.number << report.outcome.has_value();
        if (!report.outcome) {
            stream << static_cast<quint8>(report.outcome.error().kind);
            return;
        }
        const std::optional<int> status = report.outcome->statusCode;
        stream << status.has_value() << static_cast<qint32>(status.value_or(0));
        write(stream, report.outcome->headers);
    });
    if (report.outcome)
        frame.body = report.outcome->body;
    return frame;
}

std::optional<HttpReport> decodedReport(HttpFrame frame)
{
    HttpReport report;
    bool isKnown = true;
    const bool isWhole = isReadWhole(frame.head, [&](QDataStream &stream) {
        bool isAnswer = false;
        stream >> report.number >> isAnswer;
        if (!isAnswer) {
            quint8 kind = 0;
            stream >> kind;
            isKnown = kind <= static_cast<quint8>(lastKind);
            const auto told
                = isKnown ? static_cast<TransportFailure::Kind>(kind) : TransportFailure::Kind::Other;
            report.outcome = tl::make_unexpected(TransportFailure{told});
            return;
        }
        bool hasStatus = false;
        qint32 status = 0;
        stream >> hasStatus >> status;
        HttpResponse response;
        if (hasStatus)
            response.statusCode = status;
        response.headers = readHeaders(stream);
        response.body = std::move(frame.body);
        report.outcome = std::move(response);
    });
    return isWhole && isKnown ? std::optional(std::move(report)) : std::nullopt;
}

} // namespace orbitledge

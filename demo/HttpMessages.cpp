#include "demo/HttpMessages.h"

#include "model/json/JsonWriter.h"

#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

QString decoded(QByteArrayView encoded)
{
    QByteArray bytes = encoded.toByteArray();
    bytes.replace('+', ' ');
    return QString::fromUtf8(QByteArray::fromPercentEncoding(bytes));
}

bool sameName(QByteArrayView left, QByteArrayView right)
{
    return left.compare(right, Qt::CaseInsensitive) == 0;
}

} // namespace

FormFields FormFields::parse(QByteArrayView encoded)
{
    FormFields result;
    for (const QByteArray &pair : encoded.toByteArray().split('&')) {
        if (pair.isEmpty())
            continue;
        const auto equals = pair.indexOf('=');
        const QByteArrayView view(pair);
        result.m_fields.append({decoded(equals < 0 ? view : view.first(equals)),
            equals < 0 ? QString() : decoded(view.sliced(equals + 1))});
    }
    return result;
}

std::optional<QString> FormFields::find(QLatin1StringView name) const
{
    const auto found = std::ranges::find(m_fields, name, &std::pair<QString, QString>::first);
    return found == m_fields.end() ? std::nullopt : std::optional(found->second);
}

QByteArray Request::header(QByteArrayView name) const
{
    const auto found
        = std::ranges::find_if(headers, [name](const Header &header) { return sameName(header.name, name); });
    return found == headers.end() ? QByteArray() : found->value.trimmed();
}

qsizetype Request::headerCount(QByteArrayView name) const
{
    return std::ranges::count_if(
        headers, [name](const Header &header) { return sameName(header.name, name); });
}

QByteArray Request::contentType() const
{
    return header("Content-Type").split(';').first().trimmed().toLower();
}

std::optional<QByteArray> Request::cookie(QByteArrayView name) const
{
    for (const Header &header : headers) {
        if (!sameName(header.name, "Cookie"))
            continue;
        for (const QByteArray &pair : header.value.split(';')) {
            const QByteArray trimmed = pair.trimmed();
            const auto equals = trimmed.indexOf('=');
            if (equals >= 0 && QByteArrayView(trimmed).first(equals) == name)
                return trimmed.mid(equals + 1);
        }
    }
    return std::nullopt;
}

bool Request::prefersHtml() const
{
    const QByteArray accepted = header("Accept").toLower();
    const auto html = accepted.indexOf("text/html");
    const auto json = accepted.indexOf("application/json");
    return html >= 0 && (json < 0 || html < json);
}

Response jsonResponse(QByteArray json, int status)
{
    Response response;
    response.status = status;
    response.body = std::move(json);
    response.with("Content-Type", "application/json; charset=utf-8");
    return response;
}

QByteArray encodeError(const ErrorBody &body)
{
    json::JsonWriter writer;
    writer.beginObject();
    const auto write = [&writer](std::string_view key, const QString &text) {
        if (text.isEmpty())
            return;
        writer.key(key);
        writer.string(text);
    };
    write("error", body.error);
    write("message", body.message);
    write("details", body.details);
    write("error_code", body.code);
    writer.endObject();
    return writer.take();
}

Response errorResponse(int status, const ErrorBody &body)
{
    return jsonResponse(encodeError(body), status);
}

Response redirectTo(const QByteArray &localPath)
{
    Response response;
    response.status = 303;
    response.with("Location", localPath);
    return response;
}

QByteArray localPathOrRoot(const QString &path)
{
    const bool local = path.startsWith(u'/') && !path.startsWith(u"//"_s) && path.size() <= 1'000
        && std::ranges::none_of(path, [](QChar c) { return c == u'\\' || c < u' ' || c == QChar(0x7F); });
    if (!local)
        return "/"_ba;
    const QUrl url(path, QUrl::StrictMode);
    if (!url.isValid() || !url.scheme().isEmpty() || !url.authority().isEmpty())
        return "/"_ba;
    return url.toEncoded();
}

} // namespace orbitledge::demo

#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

namespace orbitledge::demo {

enum class Method { Get, Head, Post, Other };

struct Header {
    QByteArray name;
    QByteArray value;
};

/// The fields of a form, or of a query: application/x-www-form-urlencoded.
class FormFields {
public:
    static FormFields parse(QByteArrayView encoded);

    /// The first field of that name.
    [[nodiscard]] std::optional<QString> find(QLatin1StringView name) const;
    /// As `find`, with the empty text for what is not there.
    [[nodiscard]] QString value(QLatin1StringView name) const { return find(name).value_or(QString()); }

private:
    QList<std::pair<QString, QString>> m_fields;
};

/// One request, whole: nothing in it refers to the connection on which it came.
struct Request {
    Method method = Method::Other;
    /// As it was sent, percent-encoded and without the query.
    QByteArray path;
    FormFields query;
    QList<Header> headers;
    QByteArray body;

    /// The first header of that name, in any case; empty where there is none.
    [[nodiscard]] QByteArray header(QByteArrayView name) const;
    [[nodiscard]] qsizetype headerCount(QByteArrayView name) const;
    /// The media type without its parameters, in lower case.
    [[nodiscard]] QByteArray contentType() const;
    [[nodiscard]] std::optional<QByteArray> cookie(QByteArrayView name) const;
    /// Whether whoever asks would rather read a page than JSON.
    [[nodiscard]] bool prefersHtml() const;
};

struct Response {
    int status = 200;
    QList<Header> headers;
    QByteArray body;

    Response &with(QByteArray name, QByteArray value)
    {
        headers.append({std::move(name), std::move(value)});
        return *this;
    }
};

Response jsonResponse(QByteArray json, int status = 200);

/// What the service says where it refuses: all of it texts for people but the code.
struct ErrorBody {
    /// What is wrong, in one sentence.
    QString error;
    /// What to do about it.
    QString message;
    /// Where it is wrong, where there is more than one place.
    QString details;
    /// For programs.
    QLatin1StringView code;
};

QByteArray encodeError(const ErrorBody &body);

Response errorResponse(int status, const ErrorBody &body);

/// To another page of this service, with GET.
Response redirectTo(const QByteArray &localPath);

/// The path if it can be nothing but a place on this service, or else "/". Refused are other sites in every
/// disguise: a scheme, two slashes, backslashes, control characters.
QByteArray localPathOrRoot(const QString &path);

} // namespace orbitledge::demo

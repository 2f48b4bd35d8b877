#pragma once

#include "platform/HttpSession.h"

#include <QByteArray>

#include <memory>
#include <optional>

namespace orbitledge {

/// Takes the content coding off an answer's body (RFC 9110, section 8.4) while it comes. Knows "gzip" in one
/// or more members (RFC 1952), the one coding that is asked for. libcurl's own decoder takes a stream that
/// ends too early, or never, for a whole one.
class BodyDecoder {
public:
    /// `largest` is the most bytes of the decoded body.
    explicit BodyDecoder(qint64 largest);
    BodyDecoder(const BodyDecoder &) = delete;
    BodyDecoder &operator=(const BodyDecoder &) = delete;
    ~BodyDecoder();

    /// Before the first piece, with the value of Content-Encoding, empty where there is none.
    std::optional<TransportFailure> setCoding(QByteArrayView coding);

    std::optional<TransportFailure> add(QByteArrayView piece);

    /// The whole body, once nothing more comes.
    tl::expected<QByteArray, TransportFailure> finish();

private:
    class Inflater;

    std::optional<TransportFailure> append(QByteArrayView decoded);

    qint64 m_largest;
    QByteArray m_body;
    std::unique_ptr<Inflater> m_inflater;
};

} // namespace orbitledge

#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace orbitledge {

/// What goes through a pipe between a program and the one that sends its requests: a body, and apart from it,
/// so that it is never copied, what belongs to it.
struct HttpFrame {
    QByteArray head;
    QByteArray body;

    /// Two lengths of 8 bytes, little-endian, then the head and the body.
    [[nodiscard]] QByteArray lengths() const;

    friend bool operator==(const HttpFrame &, const HttpFrame &) = default;
};

/// Puts frames together again from the pieces in which they come.
class HttpFrameReader {
public:
    /// Bytes of the largest head and body that are taken.
    HttpFrameReader(qint64 largestHead, qint64 largestBody);

    /// Takes from the front of `bytes` what belongs to the next frame. False where a frame is larger than
    /// agreed; nothing more can be made of what comes then.
    [[nodiscard]] bool feed(QByteArrayView &bytes);

    /// The frame that is whole, once.
    std::optional<HttpFrame> take();

private:
    [[nodiscard]] bool readLengths();

    qint64 m_largestHead;
    qint64 m_largestBody;
    QByteArray m_lengths;
    qint64 m_headLength = 0;
    qint64 m_bodyLength = 0;
    HttpFrame m_frame;
};

} // namespace orbitledge

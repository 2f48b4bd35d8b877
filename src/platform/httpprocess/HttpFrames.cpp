#include "platform/httpprocess/HttpFrames.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <utility>

namespace orbitledge {

namespace {

constexpr qsizetype lengthSize = sizeof(quint64);

/// What parsers may read behind the end of an answer.
constexpr qsizetype roomBehindBody = 64;

void moveFront(QByteArrayView &from, QByteArray &to, qsizetype length)
{
    const QByteArrayView front = from.first(std::min(from.size(), length - to.size()));
    to.append(front);
    from = from.sliced(front.size());
}

} // namespace

QByteArray HttpFrame::lengths() const
{
    std::array<char, 2 * lengthSize> bytes{};
    qToLittleEndian<quint64>(static_cast<quint64>(head.size()), bytes.data());
    qToLittleEndian<quint64>(static_cast<quint64>(body.size()), bytes.data() + lengthSize);
    return {bytes.data(), static_cast<qsizetype>(bytes.size())};
}

HttpFrameReader::HttpFrameReader(qint64 largestHead, qint64 largestBody)
    : m_largestHead(largestHead)
    , m_largestBody(largestBody)
{
}

bool HttpFrameReader::readLengths()
{
    const auto head = qFromLittleEndian<quint64>(m_lengths.constData());
    const auto body = qFromLittleEndian<quint64>(m_lengths.constData() + lengthSize);
    if (std::cmp_greater(head, m_largestHead) || std::cmp_greater(body, m_largestBody))
        return false;
    m_headLength = static_cast<qint64>(head);
    m_bodyLength = static_cast<qint64>(body);
    m_frame.head.reserve(m_headLength);
    m_frame.body.reserve(m_bodyLength + roomBehindBody);
    return true;
}

bool HttpFrameReader::feed(QByteArrayView &bytes)
{
    if (m_lengths.size() < 2 * lengthSize) {
        moveFront(bytes, m_lengths, 2 * lengthSize);
        if (m_lengths.size() == 2 * lengthSize && !readLengths())
            return false;
    }
    if (m_lengths.size() == 2 * lengthSize) {
        moveFront(bytes, m_frame.head, m_headLength);
        moveFront(bytes, m_frame.body, m_bodyLength);
    }
    return true;
}

std::optional<HttpFrame> HttpFrameReader::take()
{
    if (m_lengths.size() < 2 * lengthSize || m_frame.head.size() < m_headLength
        || m_frame.body.size() < m_bodyLength)
        return std::nullopt;
    m_lengths.clear();
    return std::exchange(m_frame, {});
}

} // namespace orbitledge

#include "platform/curl/BodyDecoder.h"

#define ZLIB_CONST // input is const then
#include <zlib.h>

#include <array>

namespace orbitledge {

namespace {

using Kind = TransportFailure::Kind;

constexpr qsizetype parserPadding = 64;

} // namespace

/// zlib's state of one gzip stream.
class BodyDecoder::Inflater {
public:
    Inflater()
    {
        constexpr int gzipOnly = 16;
        // Fails for lack of memory only, and then the first call says so.
        (void)inflateInit2(&m_stream, MAX_WBITS + gzipOnly);
    }
    Inflater(const Inflater &) = delete;
    Inflater &operator=(const Inflater &) = delete;
    ~Inflater() { inflateEnd(&m_stream); }

    /// Between members, where the stream may end.
    [[nodiscard]] bool isComplete() const { return m_isComplete; }

    template <typename Sink> std::optional<TransportFailure> add(QByteArrayView piece, Sink sink)
    {
        std::array<char, std::size_t{64} << 10> buffer; // NOLINT(*-member-init): inflate fills it
        m_stream.next_in = reinterpret_cast<const Bytef *>(piece.data());
        m_stream.avail_in = static_cast<uInt>(piece.size());
        bool hasMore = !piece.isEmpty();
        while (hasMore) {
            if (m_isComplete && inflateReset(&m_stream) != Z_OK)
                return TransportFailure{Kind::BadAnswer};
            m_isComplete = false;
            m_stream.next_out = reinterpret_cast<Bytef *>(buffer.data());
            m_stream.avail_out = static_cast<uInt>(buffer.size());
            const int result = inflate(&m_stream, Z_NO_FLUSH);
            // First what came before a fault, or the pieces would decide which of two faults is named.
            const auto decoded = static_cast<qsizetype>(buffer.size() - m_stream.avail_out);
            if (auto failure = sink(QByteArrayView(buffer.data(), decoded)))
                return failure;
            if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
                return TransportFailure{Kind::BadAnswer};
            m_isComplete = result == Z_STREAM_END;
            // A full buffer may leave output behind even where all input was taken.
            hasMore = m_stream.avail_in > 0 || (m_stream.avail_out == 0 && !m_isComplete);
        }
        return std::nullopt;
    }

private:
    z_stream m_stream{};
    bool m_isComplete = false;
};

BodyDecoder::BodyDecoder(qint64 largest)
    : m_largest(largest)
{
}

BodyDecoder::~BodyDecoder() = default;

std::optional<TransportFailure> BodyDecoder::setCoding(QByteArrayView coding)
{
    const QByteArrayView name = coding.trimmed();
    const auto is = [name](const char *known) { return name.compare(known, Qt::CaseInsensitive) == 0; };
    if (name.isEmpty() || is("identity"))
        return std::nullopt;
    if (!is("gzip") && !is("x-gzip"))
        return TransportFailure{Kind::BadAnswer};
    m_inflater = std::make_unique<Inflater>();
    return std::nullopt;
}

std::optional<TransportFailure> BodyDecoder::add(QByteArrayView piece)
{
    if (!m_inflater)
        return append(piece);
    return m_inflater->add(piece, [this](QByteArrayView decoded) { return append(decoded); });
}

tl::expected<QByteArray, TransportFailure> BodyDecoder::finish()
{
    if (m_inflater && !m_inflater->isComplete())
        return tl::make_unexpected(TransportFailure{Kind::BadAnswer});
    m_body.reserve(m_body.size() + parserPadding);
    return std::move(m_body);
}

std::optional<TransportFailure> BodyDecoder::append(QByteArrayView decoded)
{
    if (m_body.size() + decoded.size() > m_largest)
        return TransportFailure{Kind::TooLarge};
    m_body.append(decoded);
    return std::nullopt;
}

} // namespace orbitledge

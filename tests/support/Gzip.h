#pragma once

#include <QByteArray>

#include <zlib.h>

namespace orbitledge::testing {

/// One gzip member (RFC 1952).
inline QByteArray gzip(const QByteArray &text)
{
    z_stream stream{};
    constexpr int gzipOnly = 16;
    if (deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, MAX_WBITS + gzipOnly, 8, Z_DEFAULT_STRATEGY)
        != Z_OK)
        qFatal("no memory for zlib");
    QByteArray result(qsizetype(deflateBound(&stream, uLong(text.size()))), Qt::Uninitialized);
    QByteArray input = text;
    stream.next_in = reinterpret_cast<Bytef *>(input.data());
    stream.avail_in = uInt(input.size());
    stream.next_out = reinterpret_cast<Bytef *>(result.data());
    stream.avail_out = uInt(result.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END)
        qFatal("zlib did not finish");
    result.truncate(qsizetype(stream.total_out));
    deflateEnd(&stream);
    return result;
}

} // namespace orbitledge::testing

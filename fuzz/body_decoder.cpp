#include "Require.h"
#include "platform/curl/BodyDecoder.h"
#include "support/Gzip.h"

#include <algorithm>

using namespace orbitledge;

namespace {

using Result = tl::expected<QByteArray, TransportFailure>;

/// What becomes of the input when it comes in pieces of at most these sizes, in turn.
Result decoded(QByteArrayView coding, QByteArrayView input, qint64 limit, const QList<qsizetype> &pieceSizes)
{
    BodyDecoder decoder(limit);
    if (const auto failure = decoder.setCoding(coding))
        return tl::make_unexpected(*failure);
    for (qsizetype turn = 0; !input.isEmpty(); ++turn) {
        const qsizetype size = std::min(pieceSizes[turn % pieceSizes.size()], input.size());
        if (const auto failure = decoder.add(input.first(size)))
            return tl::make_unexpected(*failure);
        input = input.sliced(size);
    }
    return decoder.finish();
}

} // namespace

// A byte of choices, two of the limit, three of piece sizes; the rest is a body, plain or as it travels.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr std::size_t header = 6;
    if (size < header)
        return 0;
    const bool isPlain = (data[0] & 1) != 0;
    const bool isPacked = (data[0] & 2) != 0;
    const qint64 limit = (data[1] * 256 + data[2]) * ((data[0] & 4) != 0 ? 8 : 1);
    const QList<qsizetype> sizes{data[3] + 1, data[4] + 1, data[5] + 1};
    const QByteArrayView rest(data + header, static_cast<qsizetype>(size - header));

    QByteArray input = rest.toByteArray();
    if (isPlain && isPacked) {
        // In two members, cut anywhere.
        const qsizetype cut = rest.isEmpty() ? 0 : data[4] % rest.size();
        input = testing::gzip(rest.first(cut).toByteArray()) + testing::gzip(rest.sliced(cut).toByteArray());
    }
    const QByteArray coding = isPacked ? "gzip" : "";
    const Result whole = decoded(coding, input, limit, {std::max<qsizetype>(input.size(), 1)});
    fuzz::require(!whole || whole->size() <= limit, "no body is larger than the limit");
    fuzz::require(whole == decoded(coding, input, limit, {1}), "bytes one by one are the same body");
    fuzz::require(whole == decoded(coding, input, limit, sizes), "pieces are the same body");

    if (isPlain || !isPacked) {
        if (rest.size() <= limit)
            fuzz::require(whole == rest.toByteArray(), "what was packed can be unpacked");
        else
            fuzz::require(whole == tl::make_unexpected(TransportFailure{TransportFailure::Kind::TooLarge}),
                "what is too large is refused");
    }
    if (whole)
        fuzz::require(whole->capacity() >= whole->size() + 64, "a parser has room behind the end");
    return 0;
}

#include "Require.h"
#include "platform/httpprocess/HttpMessages.h"

#include <algorithm>

using namespace orbitledge;

namespace {

bool isSame(const HttpFrame &left, const HttpFrame &right)
{
    return left.head == right.head && left.body == right.body;
}

/// A message that was read is written as it was.
template <typename Decode> void checkMessage(const HttpFrame &frame, Decode decode)
{
    const auto message = decode(frame);
    if (!message)
        return;
    const HttpFrame written = encoded(*message);
    const auto again = decode(written);
    fuzz::require(again.has_value(), "what was written can be read");
    fuzz::require(isSame(encoded(*again), written), "the same message is written the same way");
}

void checkFrames(const QByteArray &bytes, qsizetype piece)
{
    constexpr qint64 largest = 1 << 16;
    HttpFrameReader reader(largest, largest);
    for (qsizetype at = 0; at < bytes.size(); at += piece) {
        QByteArrayView rest = QByteArrayView(bytes).sliced(at, std::min(piece, bytes.size() - at));
        while (!rest.isEmpty()) {
            const qsizetype before = rest.size();
            if (!reader.feed(rest))
                return;
            fuzz::require(rest.size() < before, "what is fed is taken");
            const auto frame = reader.take();
            if (!frame)
                continue;
            fuzz::require(frame->head.size() <= largest && frame->body.size() <= largest,
                "a frame is not larger than agreed");
            checkMessage(*frame, decodedSetup);
            checkMessage(*frame, decodedOrder);
            checkMessage(*frame, decodedReport);
        }
    }
}

} // namespace

// What one end of the pipe between the program and the one that sends its requests may say to the other. The
// first byte is the size of the pieces in which the rest comes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char *>(data) + 1, static_cast<qsizetype>(size) - 1);
    checkFrames(bytes, data[0] + 1);
    for (const HttpFrame &frame :
        {HttpFrame{.head = bytes, .body = {}}, HttpFrame{.head = {}, .body = bytes}}) {
        checkMessage(frame, decodedSetup);
        checkMessage(frame, decodedOrder);
        checkMessage(frame, decodedReport);
    }
    return 0;
}

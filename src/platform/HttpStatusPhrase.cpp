#include "platform/HttpStatusPhrase.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace orbitledge {

namespace {

struct Phrase {
    int statusCode = 0;
    std::string_view text;
};

constexpr std::array phrases{
    Phrase{200, "no error"},
    Phrase{201, "created"},
    Phrase{202, "accepted"},
    Phrase{204, "no content"},
    Phrase{300, "multiple choices"},
    Phrase{301, "moved permanently"},
    Phrase{302, "found"},
    Phrase{303, "see other"},
    Phrase{304, "not modified"},
    Phrase{305, "needs proxy"},
    Phrase{307, "temporarily redirected"},
    Phrase{400, "bad request"},
    Phrase{401, "unauthorized"},
    Phrase{402, "payment required"},
    Phrase{403, "forbidden"},
    Phrase{404, "not found"},
    Phrase{405, "method not allowed"},
    Phrase{406, "unacceptable"},
    Phrase{407, "proxy authentication required"},
    Phrase{408, "request timed out"},
    Phrase{409, "conflict"},
    Phrase{410, "no longer exists"},
    Phrase{411, "length required"},
    Phrase{412, "precondition failed"},
    Phrase{413, "request too large"},
    Phrase{414, "requested URL too long"},
    Phrase{415, "unsupported media type"},
    Phrase{416, "requested range not satisfiable"},
    Phrase{417, "expectation failed"},
    Phrase{500, "internal server error"},
    Phrase{501, "unimplemented"},
    Phrase{502, "bad gateway"},
    Phrase{503, "service unavailable"},
    Phrase{504, "gateway timed out"},
    Phrase{505, "unsupported version"},
};

std::string_view phraseOfClass(int statusCode)
{
    constexpr std::array<std::string_view, 6> classes{
        "server error", "informational", "success", "redirected", "client error", "server error"};
    constexpr int classSize = 100;
    const auto index = static_cast<std::size_t>(std::max(statusCode, 0) / classSize);
    return classes.at(std::min(index, classes.size() - 1));
}

} // namespace

QString httpStatusPhrase(int statusCode)
{
    const auto *const found = std::ranges::find(phrases, statusCode, &Phrase::statusCode);
    const std::string_view text = found == phrases.end() ? phraseOfClass(statusCode) : found->text;
    return QString::fromLatin1(text);
}

} // namespace orbitledge

#include "service/APIError.h"

#include <algorithm>
#include <cmath>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

struct Describe {
    QString operator()(const APIError::Unauthorized &error) const { return error.message; }
    QString operator()(const APIError::Forbidden &error) const { return error.message; }
    QString operator()(const APIError::RateLimited &error) const
    {
        if (!error.retryAfter)
            return error.message;
        // Beyond this a double no longer holds every whole number; nobody waits that long.
        constexpr double longest = 9007199254740992.0;
        const auto seconds = static_cast<qint64>(std::clamp(std::ceil(*error.retryAfter), -longest, longest));
        return error.message + u" Try again in "_s + QString::number(seconds) + u" seconds."_s;
    }
    QString operator()(const APIError::RequestFailed &error) const { return error.message; }
    QString operator()(const APIError::Decoding &error) const
    {
        return u"The server response could not be read: "_s + error.message;
    }
    QString operator()(const APIError::Transport &error) const { return error.message; }
    QString operator()(const APIError::SessionStorage &error) const
    {
        return u"The session could not be stored securely: "_s + error.message;
    }
    QString operator()(const APIError::InvalidResponse & /*error*/) const
    {
        return u"The server returned an invalid response."_s;
    }
};

} // namespace

QString APIError::errorDescription() const
{
    return std::visit(Describe{}, m_case);
}

} // namespace orbitledge

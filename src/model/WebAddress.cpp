#include "model/WebAddress.h"

namespace orbitledge {

std::optional<QUrl> absoluteUrlFromText(const QString &text)
{
    QUrl url(text, QUrl::TolerantMode);
    if (!url.isValid() || url.isRelative())
        return std::nullopt;
    return url;
}

} // namespace orbitledge

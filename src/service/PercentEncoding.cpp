#include "service/PercentEncoding.h"

namespace orbitledge {

QByteArray percentEncodedQueryValue(const QString &text)
{
    // Beyond the letters, digits and "-._~", which are never encoded.
    return text.toUtf8().toPercentEncoding("!$'()*+,/:;?@");
}

} // namespace orbitledge

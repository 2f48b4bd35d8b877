#pragma once

#include <QString>

namespace orbitledge {

/// Of the library as it runs, with what it takes for TLS: "7.88.1 (OpenSSL/3.0.17)".
QString curlVersion();

} // namespace orbitledge

#pragma once

#include "model/DecodingError.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace orbitledge {

/// What the service says with a status that is no success. Each may be missing.
struct ErrorBody {
    std::optional<QString> error;
    std::optional<QString> message;
    std::optional<QString> details;
    /// For programs; never shown.
    std::optional<QString> errorCode;

    friend bool operator==(const ErrorBody &, const ErrorBody &) = default;
};

/// Safe to call from any thread.
Decoded<ErrorBody> decodeErrorBody(QByteArray json);

} // namespace orbitledge

#pragma once

#include <QString>

#include <tl/expected.hpp>

#include <variant>
#include <vector>

namespace orbitledge {

/// Why data from outside was not accepted, and where in the document the reason lies.
struct DecodingError {
    enum class Kind {
        /// A required key is missing; the path ends with that key.
        KeyNotFound,
        /// A required value is null.
        ValueNotFound,
        /// A value has another JSON type than the field.
        TypeMismatch,
        /// A value has the right JSON type but not a valid content, or the text is not valid JSON.
        DataCorrupted,
    };

    /// An object's key, or an array's index from 0.
    using PathElement = std::variant<QString, qsizetype>;

    Kind kind = Kind::DataCorrupted;
    /// From the document's root to the value; empty where the document itself is at fault.
    std::vector<PathElement> codingPath;
    /// For developers and error reports: one sentence without a full stop.
    QString debugDescription;

    /// "subscriptions[3].cost"; empty for the root.
    [[nodiscard]] QString pathText() const;

    /// A sentence for the person who uses the program.
    [[nodiscard]] QString errorDescription() const;

    friend bool operator==(const DecodingError &, const DecodingError &) = default;
};

template <typename T> using Decoded = tl::expected<T, DecodingError>;

} // namespace orbitledge

#pragma once

#include <QCoroTask>
#include <QString>

#include <tl/expected.hpp>

#include <optional>
#include <variant>

namespace orbitledge {

/// Why an operation of the service failed. Every case has a sentence for people, and tells whoever shows
/// it what follows: `Unauthorized` ends the session, `Transport` means offline, all others are news only.
class APIError {
public:
    /// The service does not know the session, or the e-mail and password.
    struct Unauthorized {
        QString message;
        friend bool operator==(const Unauthorized &, const Unauthorized &) = default;
    };
    struct Forbidden {
        QString message;
        friend bool operator==(const Forbidden &, const Forbidden &) = default;
    };
    struct RateLimited {
        /// Seconds; absent where the service does not say, or not in seconds.
        std::optional<double> retryAfter;
        QString message;
        friend bool operator==(const RateLimited &, const RateLimited &) = default;
    };
    /// Every other status that is not from 200 to 299.
    struct RequestFailed {
        int statusCode = 0;
        QString message;
        friend bool operator==(const RequestFailed &, const RequestFailed &) = default;
    };
    /// The answer is not what was asked for.
    struct Decoding {
        QString message;
        friend bool operator==(const Decoding &, const Decoding &) = default;
    };
    /// There is no answer.
    struct Transport {
        QString message;
        friend bool operator==(const Transport &, const Transport &) = default;
    };
    /// The secure store failed.
    struct SessionStorage {
        QString message;
        friend bool operator==(const SessionStorage &, const SessionStorage &) = default;
    };
    struct InvalidResponse {
        friend bool operator==(const InvalidResponse &, const InvalidResponse &) = default;
    };

    using Case = std::variant<Unauthorized, Forbidden, RateLimited, RequestFailed, Decoding, Transport,
        SessionStorage, InvalidResponse>;

    // NOLINTNEXTLINE(google-explicit-constructor,hicpp-explicit-conversions): a case is an error
    template <typename C>
        requires std::constructible_from<Case, C> && (!std::same_as<std::remove_cvref_t<C>, APIError>)
    APIError(C &&value)
        : m_case(std::forward<C>(value))
    {
    }

    /// The case's payload, or null where it is another case.
    template <typename C> [[nodiscard]] const C *as() const { return std::get_if<C>(&m_case); }
    template <typename C> [[nodiscard]] bool is() const { return as<C>() != nullptr; }

    [[nodiscard]] const Case &kind() const { return m_case; }

    /// What people are told. Empty only where the service sent an empty message.
    [[nodiscard]] QString errorDescription() const;

    friend bool operator==(const APIError &, const APIError &) = default;

private:
    Case m_case;
};

/// What an operation of the service gives, later.
template <typename T> using APITask = QCoro::Task<tl::expected<T, APIError>>;

} // namespace orbitledge

#pragma once

#include "model/UserProfile.h"

namespace orbitledge {

/// The service's answer to a sign-in that it accepted.
struct AuthenticationResponse {
    UserProfile user;

    friend bool operator==(const AuthenticationResponse &, const AuthenticationResponse &) = default;
};

} // namespace orbitledge

#pragma once

#include "demo/PageFrame.h"

namespace orbitledge::demo {

struct LoginForm {
    QString email;
    /// Where to go after.
    QByteArray next = "/";
    /// What went wrong.
    QString problem;
    /// What to know before.
    QString notice;
};

Response loginPage(const Viewer &viewer, const LoginForm &form, int status = 200);

} // namespace orbitledge::demo

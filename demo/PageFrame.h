#pragma once

#include "demo/Html.h"
#include "demo/HttpMessages.h"
#include "model/LocalDate.h"
#include "model/UserProfile.h"

#include <optional>

namespace orbitledge::demo {

/// For whom a page is made.
struct Viewer {
    std::optional<UserProfile> profile;
    /// What this viewer's forms must carry.
    QByteArray formToken;
};

/// What all pages have in common: head, navigation, sign-out, footer, and the headers that keep scripts and
/// frames out.
Response page(const QString &title, const Viewer &viewer, const Html &content, int status = 200);

/// The hidden field that each form needs.
Html formTokenField(const Viewer &viewer);

/// A friendly page for what went wrong.
Response errorPage(const Viewer &viewer, int status, const ErrorBody &body);

Response styleSheet();
Response icon();

/// The square with a subscription's initials, in its colour.
Html logo(const QString &name);
/// The class that carries the colour of a name.
QString tintClass(const QString &name);

/// "Wednesday, 18 March"
QString dayText(const LocalDate &date);
/// "March 2026"
QString monthText(const LocalDate &date);

} // namespace orbitledge::demo

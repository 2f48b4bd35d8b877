#pragma once

#include <QString>

namespace orbitledge {

/// The first letter of each word in upper case, the others in lower case. A word is a run of letters with
/// their marks; an apostrophe belongs to it, while digits, "_" and "-" end it: "foo_bar" becomes "Foo_Bar"
/// and "can’t" "Can’t".
QString capitalised(const QString &text);

} // namespace orbitledge

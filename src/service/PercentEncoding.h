#pragma once

#include <QByteArray>
#include <QString>

namespace orbitledge {

/// A text as the name or value of a query item (RFC 3986, section 3.4), in UTF-8 and upper-case hexadecimal.
/// Letters, digits and ! $ ' ( ) * + , - . / : ; ? @ _ ~ stay as they are; "&", "=", "#" and blanks do not.
QByteArray percentEncodedQueryValue(const QString &text);

} // namespace orbitledge

#pragma once

#include "locale/Locale.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace orbitledge {

/// The order of names in a locale, with upper and lower case alike and accents told apart (secondary
/// strength of the Unicode collation algorithm, UTS #10). Not for use by two threads at once.
class Collation {
public:
    explicit Collation(const Locale &locale);
    Collation(Collation &&) noexcept;
    Collation &operator=(Collation &&) noexcept;
    ~Collation();

    /// Bytes that compare as the texts do; to sort many, make each text's key once.
    [[nodiscard]] QByteArray sortKey(const QString &text) const;

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace orbitledge

#include "locale/Collation.h"

#include "locale/IcuText.h"

#include <unicode/coll.h>

namespace orbitledge {

class Collation::Private {
public:
    explicit Private(const Locale &locale)
    {
        UErrorCode status = U_ZERO_ERROR;
        m_collator.reset(icu::Collator::createInstance(icu::Locale(locale.collation.constData()), status));
        if (U_FAILURE(status))
            m_collator.reset();
        else
            m_collator->setStrength(icu::Collator::SECONDARY);
    }

    QByteArray sortKey(const QString &text) const
    {
        if (!m_collator)
            return text.toCaseFolded().toUtf8();
        constexpr int32_t usualLength = 128;
        QByteArray key(usualLength, Qt::Uninitialized);
        const icu::UnicodeString source = fromQString(text);
        const auto fill = [&] {
            return m_collator->getSortKey(
                source, reinterpret_cast<uint8_t *>(key.data()), static_cast<int32_t>(key.size()));
        };
        const int32_t length = fill();
        if (length > key.size()) {
            key.resize(length);
            fill();
        }
        key.resize(length);
        return key;
    }

private:
    std::unique_ptr<icu::Collator> m_collator;
};

Collation::Collation(const Locale &locale)
    : m_private(std::make_unique<Private>(locale))
{
}

Collation::Collation(Collation &&) noexcept = default;
Collation &Collation::operator=(Collation &&) noexcept = default;
Collation::~Collation() = default;

QByteArray Collation::sortKey(const QString &text) const
{
    return m_private->sortKey(text);
}

} // namespace orbitledge

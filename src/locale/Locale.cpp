#include "locale/Locale.h"

#include <unicode/locid.h>
#include <unicode/region.h>

#include <algorithm>
#include <span>

namespace orbitledge {

namespace {

constexpr const char *fallback = "en_US";

bool isKnownLanguage(const char *language)
{
    int32_t count = 0;
    const icu::Locale *const all = icu::Locale::getAvailableLocales(count);
    return std::ranges::any_of(std::span(all, static_cast<std::size_t>(count)),
        [language](const icu::Locale &locale) { return qstrcmp(locale.getLanguage(), language) == 0; });
}

bool isKnownRegion(const char *region)
{
    UErrorCode status = U_ZERO_ERROR;
    if (*region == '\0')
        return true;
    const icu::Region *const known = icu::Region::getInstance(region, status);
    // "ZZ" is what CLDR calls the region that is not known.
    return U_SUCCESS(status) && known != nullptr && known->getType() != URGN_UNKNOWN;
}

/// The C library names a script by a modifier where ICU has a subtag: "sr_RS@latin" is "sr_Latn_RS". Its
/// other modifiers ("@euro") say nothing about texts, while keywords ("@collation=phonebook") are ICU's own.
QByteArray withoutModifier(QByteArray name)
{
    const auto at = name.indexOf('@');
    if (at < 0 || name.indexOf('=', at) >= 0)
        return name;
    const QByteArray modifier = name.mid(at + 1);
    name.truncate(at);
    struct Script {
        QByteArrayView modifier;
        const char *subtag = nullptr;
    };
    for (const Script &script : {Script{"latin", "_Latn"}, Script{"iqtelif", "_Latn"},
             Script{"cyrillic", "_Cyrl"}, Script{"devanagari", "_Deva"}}) {
        if (modifier == script.modifier) {
            const auto languageEnd = name.indexOf('_');
            return name.insert(languageEnd < 0 ? name.size() : languageEnd, script.subtag);
        }
    }
    return name;
}

std::optional<QByteArray> icuIdentifier(QByteArray name)
{
    if (name == "C" || name == "POSIX" || name.startsWith("C."))
        return fallback;
    // "de_DE.UTF-8@euro": the encoding says nothing about conventions.
    if (const auto dot = name.indexOf('.'); dot >= 0) {
        const auto modifier = name.indexOf('@', dot);
        name.remove(dot, modifier < 0 ? name.size() - dot : modifier - dot);
    }
    name = withoutModifier(std::move(name));
    UErrorCode status = U_ZERO_ERROR;
    const bool isTag = name.contains('-') && !name.contains('_');
    const icu::Locale locale = isTag ? icu::Locale::forLanguageTag(name.constData(), status)
                                     : icu::Locale::createCanonical(name.constData());
    if (U_FAILURE(status) || locale.isBogus() || !isKnownLanguage(locale.getLanguage())
        || !isKnownRegion(locale.getCountry()))
        return std::nullopt;
    return QByteArray(locale.getName());
}

} // namespace

std::optional<Locale> Locale::named(const QByteArray &name)
{
    const auto identifier = icuIdentifier(name);
    if (!identifier)
        return std::nullopt;
    return Locale{.dates = *identifier, .money = *identifier, .collation = *identifier};
}

Locale Locale::fromEnvironment(const std::function<QByteArray(const char *)> &variable)
{
    const auto choose = [&variable](const char *category) -> QByteArray {
        for (const char *name : {"LC_ALL", category, "LANG"}) {
            const QByteArray value = variable(name);
            if (value.isEmpty())
                continue;
            if (auto identifier = icuIdentifier(value))
                return *std::move(identifier);
        }
        return fallback;
    };
    return {.dates = choose("LC_TIME"), .money = choose("LC_MONETARY"), .collation = choose("LC_COLLATE")};
}

} // namespace orbitledge

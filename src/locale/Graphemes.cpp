#include "locale/Graphemes.h"

#include "locale/IcuText.h"

#include <unicode/brkiter.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <memory>

namespace orbitledge {

namespace {

int columnsOf(const icu::UnicodeString &cluster)
{
    constexpr UChar32 emojiPresentation = 0xFE0F;
    if (cluster.indexOf(emojiPresentation) >= 0)
        return 2;
    int columns = 0;
    for (int32_t i = 0; i < cluster.length(); i = cluster.moveIndex32(i, 1)) {
        const UChar32 c = cluster.char32At(i);
        const auto width = static_cast<UEastAsianWidth>(u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH));
        if (width == U_EA_WIDE || width == U_EA_FULLWIDTH || u_hasBinaryProperty(c, UCHAR_REGIONAL_INDICATOR))
            return 2;
        const bool takesRoom = (U_GET_GC_MASK(c) & (U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK)) == 0;
        columns = std::max(columns, takesRoom ? 1 : 0);
    }
    return columns;
}

} // namespace

QList<Grapheme> graphemesOf(const QString &text)
{
    QList<Grapheme> graphemes;
    graphemes.reserve(text.size());
    // In printable ASCII every character is a cluster.
    if (std::ranges::all_of(text, [](QChar c) { return c.unicode() >= 0x20 && c.unicode() < 0x7F; })) {
        for (const QChar c : text)
            graphemes.append({QString(c), 1});
        return graphemes;
    }
    UErrorCode status = U_ZERO_ERROR;
    // Its rules take far longer to load than a text to go through.
    thread_local const std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    const icu::UnicodeString source = fromQString(text);
    if (!breaks)
        return {{text, static_cast<int>(text.size())}};
    breaks->setText(source);
    int32_t start = breaks->first();
    for (int32_t end = breaks->next(); end != icu::BreakIterator::DONE; end = breaks->next()) {
        const icu::UnicodeString cluster(source, start, end - start);
        graphemes.append({toQString(cluster), columnsOf(cluster)});
        start = end;
    }
    return graphemes;
}

} // namespace orbitledge

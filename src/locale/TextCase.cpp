#include "locale/TextCase.h"

#include "locale/IcuText.h"

#include <unicode/locid.h>
#include <unicode/stringoptions.h>
#include <unicode/uchar.h>

namespace orbitledge {

namespace {

bool isMark(UChar32 c)
{
    return (U_GET_GC_MASK(c) & U_GC_M_MASK) != 0;
}

bool isApostrophe(UChar32 c)
{
    return c == U'\'' || c == U'’';
}

} // namespace

QString capitalised(const QString &text)
{
    const icu::UnicodeString source = fromQString(text);
    icu::UnicodeString result;
    int32_t at = 0;
    while (at < source.length()) {
        int32_t end = at;
        while (end < source.length()) {
            const UChar32 c = source.char32At(end);
            const bool continues = end > at && (isMark(c) || isApostrophe(c));
            if (!u_isalpha(c) && !continues)
                break;
            end = source.moveIndex32(end, 1);
        }
        if (end == at) {
            end = source.moveIndex32(at, 1);
            result.append(source, at, end - at);
        } else {
            icu::UnicodeString word(source, at, end - at);
            result.append(word.toTitle(nullptr, icu::Locale::getRoot(), U_TITLECASE_WHOLE_STRING));
        }
        at = end;
    }
    return toQString(result);
}

} // namespace orbitledge

#include "Require.h"
#include "model/UuidText.h"

using namespace orbitledge;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text = fuzz::textOf(data, size);
    const auto uuid = uuidFromText(text);
    const QString asText = QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
    // The toolkit reads a few other forms too; of the canonical one it must think the same.
    const bool hasPlainForm = text.size() == 36 && text[8] == '-' && text[13] == '-' && text[18] == '-'
        && text[23] == '-' && text.find_first_not_of("0123456789abcdefABCDEF-") == std::string_view::npos
        && asText.count(u'-') == 4;
    fuzz::require(uuid.has_value() == hasPlainForm, "an identifier is read exactly if its form is canonical");
    if (!uuid)
        return 0;
    fuzz::require(*uuid == QUuid::fromString(asText), "an identifier is read like everywhere");
    const QString printed = uuidText(*uuid);
    fuzz::require(printed == asText.toUpper(), "an identifier is printed in upper case");
    fuzz::require(uuidFromText(printed.toStdString()) == uuid, "what was printed can be read");
    return 0;
}

#include "Require.h"
#include "model/LocalDate.h"

#include <QDate>

using namespace orbitledge;

namespace {

/// "dddd-dd-dd" without a sign.
bool hasPlainForm(std::string_view text)
{
    if (text.size() != 10)
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isHyphen = i == 4 || i == 7;
        if (isHyphen ? text[i] != '-' : (text[i] < '0' || text[i] > '9'))
            return false;
    }
    return true;
}

int number(std::string_view digits)
{
    int value = 0;
    for (const char c : digits)
        value = value * 10 + (c - '0');
    return value;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text = fuzz::textOf(data, size);
    const auto date = LocalDate::fromText(text);
    if (hasPlainForm(text)) {
        const bool exists
            = QDate::isValid(number(text.substr(0, 4)), number(text.substr(5, 2)), number(text.substr(8, 2)));
        fuzz::require(date.has_value() == exists, "a day is read exactly if it exists");
    }
    if (!date)
        return 0;
    fuzz::require(date->isValid(), "what was read exists");
    const std::string printed = date->text().toStdString();
    fuzz::require(hasPlainForm(printed), "a day is printed without a sign");
    fuzz::require(LocalDate::fromText(printed) == date, "what was printed can be read");
    fuzz::require(LocalDate::fromDaysSinceEpoch(date->daysSinceEpoch()) == *date, "days can be counted");
    fuzz::require(
        QDate(static_cast<int>(date->year), static_cast<int>(date->month), static_cast<int>(date->day))
                    .toJulianDay()
                - QDate(1970, 1, 1).toJulianDay()
            == date->daysSinceEpoch(),
        "days are counted like everywhere");
    fuzz::require(!hasPlainForm(text) || printed == text, "the plain form is printed as it was read");
    return 0;
}

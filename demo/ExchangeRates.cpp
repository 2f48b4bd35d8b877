#include "demo/ExchangeRates.h"

#include "demo/Money.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

constexpr std::array table{
    Currency{"AED"_L1, "UAE dirham"_L1, 2, 39'912, 4},
    Currency{"AUD"_L1, "Australian dollar"_L1, 2, 16'485, 4},
    Currency{"BGN"_L1, "Bulgarian lev"_L1, 2, 195'583, 5},
    Currency{"BHD"_L1, "Bahraini dinar"_L1, 3, 40'968, 5},
    Currency{"BRL"_L1, "Brazilian real"_L1, 2, 59'120, 4},
    Currency{"CAD"_L1, "Canadian dollar"_L1, 2, 14'840, 4},
    Currency{"CHF"_L1, "Swiss franc"_L1, 2, 9'445, 4},
    Currency{"CLP"_L1, "Chilean peso"_L1, 0, 10'312, 1},
    Currency{"CNY"_L1, "Chinese yuan"_L1, 2, 78'240, 4},
    Currency{"CZK"_L1, "Czech koruna"_L1, 2, 25'115, 3},
    Currency{"DKK"_L1, "Danish krone"_L1, 2, 74'604, 4},
    Currency{"EUR"_L1, "Euro"_L1, 2, 1, 0},
    Currency{"GBP"_L1, "Pound sterling"_L1, 2, 8'432, 4},
    Currency{"HKD"_L1, "Hong Kong dollar"_L1, 2, 84'655, 4},
    Currency{"HUF"_L1, "Hungarian forint"_L1, 2, 39'480, 2},
    Currency{"IDR"_L1, "Indonesian rupiah"_L1, 2, 17'312, 0},
    Currency{"ILS"_L1, "Israeli shekel"_L1, 2, 40'210, 4},
    Currency{"INR"_L1, "Indian rupee"_L1, 2, 91'075, 3},
    Currency{"ISK"_L1, "Icelandic krona"_L1, 0, 14'930, 2},
    Currency{"JPY"_L1, "Japanese yen"_L1, 0, 16'340, 2},
    Currency{"KRW"_L1, "South Korean won"_L1, 0, 148'720, 2},
    Currency{"KWD"_L1, "Kuwaiti dinar"_L1, 3, 33'405, 5},
    Currency{"MXN"_L1, "Mexican peso"_L1, 2, 20'155, 3},
    Currency{"MYR"_L1, "Malaysian ringgit"_L1, 2, 48'210, 4},
    Currency{"NOK"_L1, "Norwegian krone"_L1, 2, 117'420, 4},
    Currency{"NZD"_L1, "New Zealand dollar"_L1, 2, 17'925, 4},
    Currency{"PHP"_L1, "Philippine peso"_L1, 2, 62'340, 3},
    Currency{"PLN"_L1, "Polish zloty"_L1, 2, 42'815, 4},
    Currency{"RON"_L1, "Romanian leu"_L1, 2, 49'760, 4},
    Currency{"SEK"_L1, "Swedish krona"_L1, 2, 113'905, 4},
    Currency{"SGD"_L1, "Singapore dollar"_L1, 2, 14'560, 4},
    Currency{"THB"_L1, "Thai baht"_L1, 2, 38'215, 3},
    Currency{"TND"_L1, "Tunisian dinar"_L1, 3, 33'870, 4},
    Currency{"TRY"_L1, "Turkish lira"_L1, 2, 37'245, 3},
    Currency{"UAH"_L1, "Ukrainian hryvnia"_L1, 2, 44'980, 3},
    Currency{"USD"_L1, "US dollar"_L1, 2, 10'868, 4},
    Currency{"VND"_L1, "Vietnamese dong"_L1, 0, 27'540, 0},
    Currency{"ZAR"_L1, "South African rand"_L1, 2, 197'310, 4},
};

Decimal powerOfTen(int exponent)
{
    return Decimal::fromText("1e" + std::to_string(exponent)).value_or(Decimal());
}

} // namespace

std::span<const Currency> currencies()
{
    return table;
}

const Currency *findCurrency(QStringView code)
{
    const auto *const found = std::ranges::find_if(table,
        [code](const Currency &currency) { return code.compare(currency.code, Qt::CaseInsensitive) == 0; });
    return found == table.end() ? nullptr : found;
}

Decimal converted(const Decimal &amount, const Currency &from, const Currency &to)
{
    // Products first: they are exact, so that there is one division and one rounding.
    const Decimal product = amount * Decimal(to.rate) * powerOfTen(from.rateScale - to.rateScale);
    return roundedHalfEven(product.dividedBy(from.rate), to.digits);
}

} // namespace orbitledge::demo

#pragma once

#include "locale/DateFormatter.h"
#include "locale/MoneyFormatter.h"
#include "locale/NumberFormatter.h"

namespace orbitledge::ui {

/// How the panel writes things, for one region. The formatters are slow to make, so everybody shares these.
struct PanelTexts {
    explicit PanelTexts(const Locale &locale)
        : dates(locale)
        , money(locale)
        , numbers(locale)
    {
    }

    DateFormatter dates;
    MoneyFormatter money;
    NumberFormatter numbers;
};

} // namespace orbitledge::ui

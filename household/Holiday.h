#pragma once

#include <string>

#include "household/Date.h"

// A national holiday of Japan, a substitute holiday (振替休日) or a
// citizens' holiday (休日), with its name as the Cabinet Office writes it.
struct Holiday {
    Date date;
    std::string name;

    bool operator==(const Holiday&) const = default;
};

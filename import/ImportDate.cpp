#include "import/ImportDate.h"

#include <chrono>
#include <cstdio>

std::string ImportDate::hizuke() const
{
    char buf[16];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", nen(), tuki(), hi());
    return buf;
}

int64_t ImportDate::dayNumber() const
{
    using namespace std::chrono;
    const sys_days days{year{nen()} / month{static_cast<unsigned>(tuki())} / day{static_cast<unsigned>(hi())}};
    return days.time_since_epoch().count();
}

ImportDate ImportDate::fromDayNumber(int64_t days)
{
    using namespace std::chrono;
    const year_month_day ymd{sys_days{std::chrono::days{days}}};
    return ImportDate(static_cast<int>(ymd.year()), static_cast<int>(static_cast<unsigned>(ymd.month())),
                      static_cast<int>(static_cast<unsigned>(ymd.day())));
}

ImportDate ImportDate::fromHizuke(const std::string& hizuke)
{
    int nen = 0, tuki = 0, hi = 0;
    char tail = 0;
    if (std::sscanf(hizuke.c_str(), "%4d-%2d-%2d%c", &nen, &tuki, &hi, &tail) != 3 || !isValidDay(nen, tuki, hi))
        return {};
    return ImportDate(nen, tuki, hi);
}

bool ImportDate::isValidDay(int nen, int tuki, int hi)
{
    using namespace std::chrono;
    if (nen < 1 || nen > 9999 || tuki < 1 || tuki > 12 || hi < 1 || hi > 31) return false;
    return year_month_day{year{nen} / month{static_cast<unsigned>(tuki)} / day{static_cast<unsigned>(hi)}}.ok();
}

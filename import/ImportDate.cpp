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

bool ImportDate::isValidDay(int nen, int tuki, int hi)
{
    using namespace std::chrono;
    if (nen < 1 || nen > 9999 || tuki < 1 || tuki > 12 || hi < 1 || hi > 31) return false;
    return year_month_day{year{nen} / month{static_cast<unsigned>(tuki)} / day{static_cast<unsigned>(hi)}}.ok();
}

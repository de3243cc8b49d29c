#include "ui/Clock.h"

#include "store/History.h"

namespace {

std::function<QDateTime()>& clockInUse()
{
    static std::function<QDateTime()> clock;
    return clock;
}

}  // namespace

QDateTime currentDateTime()
{
    const auto& clock = clockInUse();
    return clock ? clock() : QDateTime::currentDateTime();
}

void setClock(std::function<QDateTime()> clock)
{
    // The history records its steps by the same clock.
    if (clock)
        setHistoryClock([clock] { return clock().toMSecsSinceEpoch(); });
    else
        setHistoryClock(nullptr);
    clockInUse() = std::move(clock);
}

QString dateStamp(const QDate& date)
{
    // "yyyy" is the calendar year: 30 and 31 December stay in their year.
    return date.toString(QStringLiteral("yyyy年MM月dd日"));
}

QString fileDateStamp(const QDate& date)
{
    return date.toString(QStringLiteral("yyyyMMdd"));
}

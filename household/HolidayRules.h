#pragma once

#include <vector>

#include "household/Holiday.h"

// The holidays of `year` as the law on national holidays (国民の祝日に関する
// 法律, in force since 1948-07-20) and its amendments make them, with the
// one-off holidays the special laws added; in date order. None before the
// law. The equinox days come from the usual formula of the equinox; the
// government fixes them each February for the following year, and the
// formula gives every equinox day of the published table.
std::vector<Holiday> holidaysByLaw(int year);

// The day in March of the vernal equinox and in September of the autumnal one.
int vernalEquinoxDay(int year);
int autumnalEquinoxDay(int year);

#pragma once

#include <span>

// One line of the Cabinet Office's published table of national holidays,
// compiled into the program from household/holidays/holidays-jp.csv.
struct PublishedHoliday {
    short year;
    signed char month;
    signed char day;
    const char* name;
};

// The years the table covers, each in full.
struct PublishedYears {
    int first;
    int last;
};

// Every published holiday, in date order.
std::span<const PublishedHoliday> publishedHolidays();
PublishedYears publishedYears();

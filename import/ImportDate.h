#pragma once

#include <cstdint>
#include <string>

// A calendar date of a statement row, packed as yyyymmdd (0 = no date).
class ImportDate {
public:
    ImportDate() = default;
    // The caller has checked that the day exists (see isValidDay).
    ImportDate(int nen, int tuki, int hi) : ymd_(static_cast<uint32_t>(nen * 10000 + tuki * 100 + hi)) {}

    bool isNull() const { return ymd_ == 0; }
    int nen() const { return static_cast<int>(ymd_ / 10000); }
    int tuki() const { return static_cast<int>(ymd_ / 100 % 100); }
    int hi() const { return static_cast<int>(ymd_ % 100); }
    uint32_t packed() const { return ymd_; }

    // "yyyy-MM-dd", the form the ledger stores in Hizuke.
    std::string hizuke() const;
    // Days since 1970-01-01, for distances between dates.
    int64_t dayNumber() const;
    // The date of a day number.
    static ImportDate fromDayNumber(int64_t days);
    // The date of a "yyyy-MM-dd" text; a null date when it is none.
    static ImportDate fromHizuke(const std::string& hizuke);

    friend bool operator==(ImportDate a, ImportDate b) { return a.ymd_ == b.ymd_; }
    friend bool operator<(ImportDate a, ImportDate b) { return a.ymd_ < b.ymd_; }

    // True when the day exists in the Gregorian calendar (leap years included).
    static bool isValidDay(int nen, int tuki, int hi);

private:
    uint32_t ymd_ = 0;
};

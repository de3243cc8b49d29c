# Writes the C++ table of the published holidays from holidays-jp.csv, so that
# the program reads nothing from disk for them at run time.
# Usage: cmake -DINPUT=holidays-jp.csv -DOUTPUT=PublishedHolidays.cpp -P GeneratePublishedHolidays.cmake
# A line that is not "yyyy-MM-dd,name", or a date out of order, fails the build.
file(STRINGS "${INPUT}" lines ENCODING UTF-8)
list(POP_FRONT lines header)
if(NOT header STREQUAL "date,name")
  message(FATAL_ERROR "${INPUT}: the first line must be 'date,name', not '${header}'")
endif()

set(rows "")
set(previous "")
set(first_year "")
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^([0-9][0-9][0-9][0-9])-([0-9][0-9])-([0-9][0-9]),([^\",\\\\]+)$")
    message(FATAL_ERROR "${INPUT}: not a 'yyyy-MM-dd,name' line: '${line}'")
  endif()
  set(year ${CMAKE_MATCH_1})
  set(month ${CMAKE_MATCH_2})
  set(day ${CMAKE_MATCH_3})
  set(name "${CMAKE_MATCH_4}")
  # No leading zero: 08 would be an octal literal in C++.
  string(REGEX REPLACE "^0" "" month "${month}")
  string(REGEX REPLACE "^0" "" day "${day}")
  string(SUBSTRING "${line}" 0 10 date)
  if(NOT previous STREQUAL "" AND NOT previous STRLESS date)
    message(FATAL_ERROR "${INPUT}: ${date} is not after ${previous}")
  endif()
  set(previous ${date})
  if(first_year STREQUAL "")
    set(first_year ${year})
  endif()
  set(last_year ${year})
  string(APPEND rows "    {${year}, ${month}, ${day}, \"${name}\"},\n")
endforeach()

file(WRITE "${OUTPUT}"
"// Generated from household/holidays/holidays-jp.csv by GeneratePublishedHolidays.cmake.
// The data: Copyright (c) 2016 holiday-jp, MIT License; see household/holidays/NOTICE.md.
#include \"household/PublishedHolidays.h\"

namespace {

constexpr PublishedHoliday kPublished[] = {
${rows}};

}  // namespace

std::span<const PublishedHoliday> publishedHolidays()
{
    return kPublished;
}

PublishedYears publishedYears()
{
    return {${first_year}, ${last_year}};
}
")

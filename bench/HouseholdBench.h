#pragma once

#include <string>

class DataModel;
class Floor;

// Times the household calendar's figures against the floor running the
// same statements:
//   annual_year_payday   the annual report of a household year whose
//                        months start on the 25th (the business day before);
//   budget_month_1m      the budget-and-actual table of one household month;
//   card_next_withdrawal where a card of 100,000 entries stands today (its
//                        due settlements, next withdrawal and open period),
//                        in a book of its own written into dir.
// The setting is put back to calendar months afterwards.
void benchHousehold(DataModel& dm, Floor& floor, int nen, const std::string& dir, int runs);

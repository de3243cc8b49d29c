#pragma once

#include <cstdint>

class DataModel;

// Times the main window on the offscreen platform against the store alone:
//   select_asset_largest  selecting the largest asset until its list is
//                         painted, against the store's read of that ledger;
//   sort_zankin_largest   one click on the balance header until the list is
//                         painted, against std::sort of the same list;
//   restore_backup        このバックアップに戻す in the restore dialog until the
//                         reopened window is painted, once: its time, and the
//                         longest stretch the window took no events.
void benchMainWindow(DataModel& dm, int64_t largestSisanId, int64_t otherSisanId, int runs, int argc, char** argv);

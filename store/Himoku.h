#pragma once

#include <cstdint>
#include <string>

// One row of the two-level category tree. A category row has Ucount > 0 and
// Hno == Id; a sub-item row has Ucount 0, Hno == its category's Id and the
// stored name "category/sub-item".
struct Himoku {
    int64_t Id;
    int64_t SyubetuNo;  // 1 expense, 2 income
    std::string Namae;
    int64_t Hno;
    int64_t Ucount;

    Himoku(int64_t Id, int64_t SyubetuNo, std::string Namae, int64_t Hno, int64_t Ucount)
        : Id(Id), SyubetuNo(SyubetuNo), Namae(std::move(Namae)), Hno(Hno), Ucount(Ucount) {}
};

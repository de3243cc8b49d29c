#pragma once

#include <cstdint>
#include <string>

// Entry kinds (Items::SyubetuNo).
enum : int64_t {
    kSyubetuSisyutu = 1,   // expense, amount in Syukkin
    kSyubetuSyuunyuu = 2,  // income, amount in Nyuukin
    kSyubetuIdouMoto = 3,  // transfer, source row (money leaves), amount in Syukkin
    kSyubetuIdouSaki = 4,  // transfer, destination row (money enters), amount in Nyuukin
};

// Kinds whose amount enters the asset's balance (Nyuukin) or leaves it (Syukkin).
inline bool isNyuukinKind(int64_t kind) { return kind == kSyubetuSyuunyuu || kind == kSyubetuIdouSaki; }
inline bool isSyukkinKind(int64_t kind) { return kind == kSyubetuSisyutu || kind == kSyubetuIdouMoto; }

// One ledger entry. The first thirteen fields are the columns of the Items
// table in order (a NULL column reads as 0); the last four are filled by the
// ledger read for display.
struct Items {
    int64_t Id;
    std::string Hizuke;  // "yyyy-MM-dd"
    int64_t Nen;
    int64_t Tuki;
    int64_t Hi;
    int64_t SisanNo;      // Id of the asset whose ledger holds the row
    int64_t SyubetuNo;    // kind, see above
    int64_t HimokuNo;     // kinds 1, 2: Id of the sub-item row
    int64_t IdouSisanNo;  // kinds 3, 4: Id of the other asset
    int64_t IdouId;       // kinds 3, 4: Id of the linked row; -1 otherwise
    int64_t Nyuukin;
    int64_t Syukkin;
    std::string Bikou;
    std::string strHimoku;   // category or partner asset name
    std::string strNyuukin;  // Nyuukin with digit grouping, or ""
    std::string strSyukkin;  // Syukkin with digit grouping, or ""
    int64_t Zankin;          // running balance of the asset after this row

    Items(int64_t Id, std::string Hizuke, int64_t Nen, int64_t Tuki, int64_t Hi, int64_t SisanNo,
          int64_t SyubetuNo, int64_t HimokuNo, int64_t IdouSisanNo, int64_t IdouId, int64_t Nyuukin,
          int64_t Syukkin, std::string Bikou, std::string strHimoku, std::string strNyuukin,
          std::string strSyukkin, int64_t Zankin)
        : Id(Id), Hizuke(std::move(Hizuke)), Nen(Nen), Tuki(Tuki), Hi(Hi), SisanNo(SisanNo),
          SyubetuNo(SyubetuNo), HimokuNo(HimokuNo), IdouSisanNo(IdouSisanNo), IdouId(IdouId),
          Nyuukin(Nyuukin), Syukkin(Syukkin), Bikou(std::move(Bikou)), strHimoku(std::move(strHimoku)),
          strNyuukin(std::move(strNyuukin)), strSyukkin(std::move(strSyukkin)), Zankin(Zankin) {}
};

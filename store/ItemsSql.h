#pragma once

// The inserts of ledger rows, shared by the entry operations and the import:
// an expense (amount in Syukkin), an income (Nyuukin), and the two rows of a
// transfer. Parameters: Id, Hizuke, Nen, Tuki, Hi, SisanNo, SyubetuNo,
// HimokuNo or IdouSisanNo, IdouId, the amount, Bikou. The Id comes first:
// NULL lets SQLite pick it, as a book that never syncs always had it; a book
// that syncs binds the device's Id (DeviceIds.h).
inline constexpr const char* kInsertSyukkin =
    "INSERT INTO Items (Id,Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,HimokuNo,IdouId,Syukkin,Bikou) "
    "VALUES (?,?,?,?,?,?,?,?,?,?,?)";
inline constexpr const char* kInsertNyuukin =
    "INSERT INTO Items (Id,Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,HimokuNo,IdouId,Nyuukin,Bikou) "
    "VALUES (?,?,?,?,?,?,?,?,?,?,?)";
inline constexpr const char* kInsertIdouMoto =
    "INSERT INTO Items (Id,Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,IdousisanNo,IdouId,Syukkin,Bikou) "
    "VALUES (?,?,?,?,?,?,?,?,?,?,?)";
inline constexpr const char* kInsertIdouSaki =
    "INSERT INTO Items (Id,Hizuke,Nen,Tuki,Hi,SisanNo,SyubetuNo,IdousisanNo,IdouId,Nyuukin,Bikou) "
    "VALUES (?,?,?,?,?,?,?,?,?,?,?)";

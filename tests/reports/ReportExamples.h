#pragma once

#include <fstream>
#include <sstream>
#include <string>

// The two reports' worked examples, written on 15 January 2019: the annual
// report of 2019 with one income sub-item 給与/その他 of 300000 in January,
// and the asset report of 現金 (12000) and 普通預金 (-3000).
inline const std::string kAnnualExample = "2019 年度 ,\u30002019年01月15日\n"
                                          "名 称 ,1月,2月,3月,4月,5月,6月,7月,8月,9月,10月,11月,12月, 金　額 \n"
                                          "給与/その他,300000,0,0,0,0,0,0,0,0,0,0,0,300000 \n"
                                          "収　入　計,300000,0,0,0,0,0,0,0,0,0,0,0,300000 \n"
                                          "支　出　計,0,0,0,0,0,0,0,0,0,0,0,0,0 \n"
                                          "差　引　合　計,300000,0,0,0,0,0,0,0,0,0,0,0,300000 \n";
inline const std::string kSisanExample = "資産レポート ,\u30002019年01月15日\n"
                                         "名 称 , 金　額 \n"
                                         "現金,12000 \n"
                                         "普通預金,-3000 \n"
                                         "合計 , 9000 \n";

inline std::string contentOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

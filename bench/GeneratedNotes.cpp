#include "bench/GeneratedNotes.h"

#include <iterator>

namespace {

// The usual notes of each generated category, the most frequent first;
// {m} is the month, {y} the year, {who} a person, {where} a place.
const std::vector<std::vector<const char*>> kUsualNotes = {
    // 食費
    {"スーパー", "スーパー ライフ", "イオン", "ｽｰﾊﾟｰ", "西友", "業務スーパー", "ランチ", "コンビニ", "ｺﾝﾋﾞﾆ",
     "セブンイレブン", "まいばすけっと", "ローソン", "ファミリーマート", "パン屋", "外食 {who}と", "生協 {m}月分",
     "コンビニ 弁当", "マクドナルド", "サイゼリヤ", "スターバックス", "米 5kg", "まとめ買い", "ケーキ 誕生日",
     "居酒屋", "お惣菜"},
    // 日用品
    {"ドラッグストア", "ダイソー", "Amazon", "マツモトキヨシ", "ティッシュ・洗剤", "ニトリ", "ｱﾏｿﾞﾝ", "無印良品",
     "楽天市場", "ホームセンター", "100円ショップ", "コンビニ 電池"},
    // 住居費
    {"家賃 {m}月分", "管理費 {m}月分", "住宅ローン {y}年{m}月", "修繕積立金", "火災保険 更新", "エアコン修理"},
    // 水道光熱費
    {"電気代 {m}月分", "ガス代 {m}月分", "水道代 {m}月分", "東京電力 {y}年{m}月", "灯油", "電気代（コンビニ払い）"},
    // 通信費
    {"携帯 docomo", "スマホ代 {m}月", "ネット回線 {m}月分", "NHK受信料", "ｿﾌﾄﾊﾞﾝｸ", "切手・はがき"},
    // 交通費
    {"Suica チャージ", "ガソリン", "ガソリン ENEOS", "駐車場", "定期券 {m}月", "タクシー", "高速道路 ETC",
     "新幹線 帰省"},
    // 医療費
    {"歯医者", "薬局", "内科 {who}", "整骨院", "小児科", "眼科 コンタクト", "健康診断", "インフルエンザ予防接種"},
    // 教育費
    {"給食費 {m}月", "塾 {m}月分", "学童保育", "習い事 スイミング", "ピアノ教室", "教科書・参考書", "修学旅行 積立",
     "ランドセル"},
    // 娯楽費
    {"本", "映画", "Netflix", "旅行 {where}", "カラオケ", "ゲーム", "温泉 {where}", "動物園", "キャンプ用品"},
    // 衣服費
    {"ユニクロ", "しまむら", "GU", "靴", "クリーニング", "子供服", "ｽｰﾂ"},
    // 交際費
    {"飲み会 会社", "{who} 誕生日プレゼント", "手土産", "ランチ {who}と", "お中元", "お歳暮", "結婚祝い {who}",
     "香典", "同窓会", "コンビニ 差し入れ", "お年玉", "出産祝い"},
    // 保険料
    {"生命保険 {m}月分", "医療保険 {m}月", "自動車保険", "学資保険"},
    // 給与
    {"給与 {m}月分", "{y}年{m}月 給料", "残業代"},
    // 賞与
    {"冬の賞与", "夏の賞与", "決算賞与"},
    // 副収入
    {"メルカリ 売上", "ポイント交換", "配当金", "ﾒﾙｶﾘ", "原稿料"},
    // 臨時収入
    {"児童手当 {m}月", "還付金", "お祝い 頂き物", "保険金", "懸賞"},
    // transfers
    {"ATM 引き出し", "カード引き落とし {m}月分", "Suica チャージ", "積立 {m}月", "口座振替", "コンビニATM"},
};

const char* const kPeople[] = {"母", "妻", "夫", "父", "長男", "長女", "田中さん", "佐藤さん",
                               "鈴木さん", "高橋さん", "義母", "友人"};
const char* const kPlaces[] = {"箱根", "京都", "沖縄", "北海道", "熱海", "軽井沢", "日光"};

// The k-th most usual of n is chosen about 1/(k+1) as often as the first.
std::discrete_distribution<int> zipf(size_t n)
{
    std::vector<double> weights;
    for (size_t k = 0; k < n; ++k) weights.push_back(1.0 / static_cast<double>(k + 1));
    return {weights.begin(), weights.end()};
}

void replaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

}  // namespace

GeneratedNotes::GeneratedNotes(uint64_t seed)
    : rng_(seed), pickPerson_(zipf(std::size(kPeople))), pickPlace_(zipf(std::size(kPlaces)))
{
    for (const auto& notes : kUsualNotes) pick_.push_back(zipf(notes.size()));
}

std::string GeneratedNotes::note(int category, int year, int month)
{
    const size_t list = category == kTransfer ? kUsualNotes.size() - 1 : static_cast<size_t>(category);
    std::string text = kUsualNotes[list][static_cast<size_t>(pick_[list](rng_))];
    replaceAll(text, "{m}", std::to_string(month));
    replaceAll(text, "{y}", std::to_string(year));
    if (text.find("{who}") != std::string::npos) replaceAll(text, "{who}", kPeople[pickPerson_(rng_)]);
    if (text.find("{where}") != std::string::npos) replaceAll(text, "{where}", kPlaces[pickPlace_(rng_)]);
    return text;
}

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The labels of recorded steps, as the 編集 menu and the history show them:
// 元に戻す「食費/外食 1,200円の削除」, 元に戻す「資産『普通預金』の削除」.

// An expense or income: "食費/外食 1,200円の" + verb.
std::string entryStepLabel(const std::string& himokuNamae, int64_t kingaku, const char* verb);
// A transfer: "移動 現金→普通預金 1,200円の" + verb.
std::string idouStepLabel(const std::string& from, const std::string& to, int64_t kingaku, const char* verb);
// An asset: "資産『普通預金』の" + verb.
std::string sisanStepLabel(const std::string& namae, const char* verb);
// A category: "費目『食費』の" + verb; a sub-item: "内訳『食費/外食』の" + verb.
std::string himokuStepLabel(const std::string& namae, const char* verb);
std::string utiwakeStepLabel(const std::string& namae, const char* verb);
// A recurring entry's rule: "定期的な支出入『家賃』の" + verb.
std::string teikiStepLabel(const std::string& namae, const char* verb);
// Due occurrences dealt with: "定期的な支出入 3件の記帳", with "・1件の見送り"
// when some were skipped (or only "定期的な支出入 1件の見送り").
std::string teikiKityouStepLabel(size_t posted, size_t skipped);

// The household's own: "家計の設定の変更", "予算『食費』の変更",
// "カード『楽天カード』の引落 45,600円の記録".
std::string settingsStepLabel();
std::string yosanStepLabel(const std::string& namae);
std::string cardStepLabel(const std::string& namae, int64_t kingaku, const char* verb);
// A statement's import: "明細『rakuten.csv』12件の取り込み"; a layout the
// user mapped: "明細の形式『…』の保存".
std::string importStepLabel(const std::string& fileName, size_t count);
std::string importProfileStepLabel(const std::string& namae);

// The steps that act on another step labelled `label`.
std::string undoStepLabel(const std::string& label);    // 「…」を元に戻す
std::string redoStepLabel(const std::string& label);    // 「…」をやり直す
std::string revertStepLabel(const std::string& label);  // 「…」の取り消し

#include "store/StepLabels.h"

#include "store/Money.h"

std::string entryStepLabel(const std::string& himokuNamae, int64_t kingaku, const char* verb)
{
    return himokuNamae + " " + formatWithGrouping(kingaku) + "円の" + verb;
}

std::string idouStepLabel(const std::string& from, const std::string& to, int64_t kingaku, const char* verb)
{
    return "移動 " + from + "→" + to + " " + formatWithGrouping(kingaku) + "円の" + verb;
}

std::string sisanStepLabel(const std::string& namae, const char* verb)
{
    return "資産『" + namae + "』の" + verb;
}

std::string himokuStepLabel(const std::string& namae, const char* verb)
{
    return "費目『" + namae + "』の" + verb;
}

std::string utiwakeStepLabel(const std::string& namae, const char* verb)
{
    return "内訳『" + namae + "』の" + verb;
}

std::string settingsStepLabel()
{
    return "家計の設定の変更";
}

std::string yosanStepLabel(const std::string& namae)
{
    return "予算『" + namae + "』の変更";
}

std::string cardStepLabel(const std::string& namae, int64_t kingaku, const char* verb)
{
    return "カード『" + namae + "』の引落 " + formatWithGrouping(kingaku) + "円の" + verb;
}

std::string teikiStepLabel(const std::string& namae, const char* verb)
{
    return "定期的な支出入『" + namae + "』の" + verb;
}

std::string teikiKityouStepLabel(size_t posted, size_t skipped)
{
    std::string label = "定期的な支出入 ";
    if (posted) label += std::to_string(posted) + "件の記帳";
    if (posted && skipped) label += "・";
    if (skipped) label += std::to_string(skipped) + "件の見送り";
    return label;
}

std::string importStepLabel(const std::string& fileName, size_t count)
{
    return "明細『" + fileName + "』" + std::to_string(count) + "件の取り込み";
}

std::string importProfileStepLabel(const std::string& namae)
{
    return "明細の形式『" + namae + "』の保存";
}

std::string undoStepLabel(const std::string& label)
{
    return "「" + label + "」を元に戻す";
}

std::string redoStepLabel(const std::string& label)
{
    return "「" + label + "」をやり直す";
}

std::string revertStepLabel(const std::string& label)
{
    return "「" + label + "」の取り消し";
}

#include "import/ImportPlan.h"

#include <algorithm>
#include <map>

#include "import/AssetChoice.h"
#include "import/DuplicateKeys.h"
#include "store/Items.h"
#include "store/Money.h"

namespace {

std::string quoted(const std::string& text)
{
    return "「" + text + "」";
}

const char* hintText(TransferHint hint)
{
    switch (hint) {
    case TransferHint::CardSettlement: return "カードの引き落とし";
    case TransferHint::CashWithdrawal: return "ATMの引き出し";
    case TransferHint::EmoneyCharge: return "チャージ";
    case TransferHint::CashAdvance: return "キャッシング";
    case TransferHint::CardFunded: return "カード払い: カードの明細に含まれるため取り込みません";
    case TransferHint::MarkedTransfer: return "振替";
    case TransferHint::None: break;
    }
    return "";
}

// The place of a kind (1 expense, 2 income) in the per-kind arrays.
size_t slot(int64_t syubetuNo)
{
    return syubetuNo == kSyubetuSyuunyuu ? 1 : 0;
}

}  // namespace

const char* statusName(MatchStatus status)
{
    switch (status) {
    case MatchStatus::New: return "新規";
    case MatchStatus::AlreadyImported: return "取込済み";
    case MatchStatus::PossibleDuplicate: return "重複の可能性";
    case MatchStatus::TransferCandidate: return "振替候補";
    case MatchStatus::Unreadable: return "読めない行";
    case MatchStatus::Skipped: break;
    }
    return "";
}

ImportPlan::ImportPlan(std::shared_ptr<const StatementFile> statement, ImportContext context)
    : statement_(std::move(statement)), context_(std::move(context))
{
    for (const auto* rows : {&context_.sameAsset, &context_.otherAssets})
        for (const ImportBookRow& r : *rows) byId_.emplace(r.id, &r);
    indexAssignments();

    std::vector<BookEntry> same, other;
    same.reserve(context_.sameAsset.size());
    for (const ImportBookRow& r : context_.sameAsset) same.push_back(bookEntryOf(r));
    for (const ImportBookRow& r : context_.otherAssets) other.push_back(bookEntryOf(r));
    const std::vector<RowMatch> matches = matchStatement(*statement_, same, other);
    const std::vector<StatementRow>& rows = statement_->rows;
    rows_.reserve(rows.size());
    for (uint32_t i = 0; i < rows.size(); ++i) {
        if (rows[i].kind == RowKind::Skipped) continue;
        PlannedRow& p = rows_.emplace_back();
        p.row = i;
        propose(p, matches[i]);
    }
}

void ImportPlan::indexAssignments()
{
    for (const ContextHimoku& h : context_.himokus) named_[slot(h.syubetuNo)].emplace(h.namae, h.id);
    const std::string& layout = statement_->layout.profile.id;
    for (const ImportAssignment& a : context_.assignments) {
        const ContextHimoku* h = context_.himoku(a.himokuNo);
        if (!h || h->syubetuNo != a.syubetuNo) continue;  // a sub-item deleted or moved since
        if (a.layout.empty())
            learned_[slot(a.syubetuNo)][a.matchKey] = a.himokuNo;
        else if (a.layout == layout && a.matchKey.empty())
            default_[slot(a.syubetuNo)] = a.himokuNo;
    }
}

int64_t ImportPlan::lookUp(const std::array<TextMap, 2>& maps, int64_t syubetuNo, std::string_view text)
{
    const TextMap& map = maps[slot(syubetuNo)];
    const auto hit = map.find(text);
    return hit == map.end() ? 0 : hit->second;
}

int64_t ImportPlan::syubetuOf(size_t i) const
{
    return source(i).kingaku < 0 ? kSyubetuSisyutu : kSyubetuSyuunyuu;
}

bool ImportPlan::writable(const StatementRow& r)
{
    return r.kingaku != 0 && fitsInt32(r.kingaku) && fitsInt32(-r.kingaku);
}

void ImportPlan::propose(PlannedRow& p, const RowMatch& match)
{
    const StatementRow& r = statement_->rows[p.row];
    p.status = match.status;
    p.checkable = match.status != MatchStatus::Unreadable && match.status != MatchStatus::AlreadyImported &&
                  writable(r);
    if (match.status == MatchStatus::AlreadyImported || match.status == MatchStatus::PossibleDuplicate)
        p.matchedItemId = match.entryId;
    if (!p.checkable) return;
    p.checked = match.status == MatchStatus::New || match.status == MatchStatus::TransferCandidate;
    if (match.status == MatchStatus::TransferCandidate) {
        if (r.transfer == TransferHint::CardFunded) {
            p.checked = false;  // the card's statement carries the expense
            return;
        }
        if (match.entryId != 0) {
            p.partnerSisanId = match.partnerSisanId;
            p.pairedItemId = match.entryId;
            return;
        }
        if ((p.partnerSisanId = partnerSisan(statement_->text(r.partner), context_))) return;
    }
    const int64_t kind = r.kingaku < 0 ? kSyubetuSisyutu : kSyubetuSyuunyuu;
    p.himokuNo = lookUp(learned_, kind, statement_->text(r.matchKey));
    if (!p.himokuNo && !r.category.empty()) p.himokuNo = lookUp(named_, kind, statement_->text(r.category));
    if (!p.himokuNo) p.himokuNo = default_[slot(kind)];
}

const ImportBookRow* ImportPlan::bookRow(int64_t id) const
{
    const auto hit = byId_.find(id);
    return hit == byId_.end() ? nullptr : hit->second;
}

std::string ImportPlan::nothingToImport() const
{
    const std::string file = quoted(statement_->fileName);
    const ImportSummary s = summary();
    if (s.read == 0) return file + "には取り込める行がありません。";
    const bool nothingNew = std::none_of(rows_.begin(), rows_.end(), [](const PlannedRow& p) { return p.checkable; });
    if (s.already == 0 || !nothingNew) return {};
    const ImportRecordRow& same = context_.sameFile;
    if (same.id == 0) return file + "の行はすべて家計簿に取り込み済みです。";
    const ContextSisan* sisan = context_.sisan(same.sisanId);
    return file + "はすでに取り込み済みです（" + same.importedAt + "、資産「" + (sisan ? sisan->namae : "?") + "」、" +
           std::to_string(same.rowsImported) + "行）。";
}

std::string ImportPlan::accountProblem() const
{
    const std::string account = statementAccount(*statement_);
    const std::string other = otherAccountOf(context_.sisanId, statement_->layout.profile.id, account, context_.accounts);
    if (other.empty()) return {};
    const ContextSisan* sisan = context_.sisan(context_.sisanId);
    return quoted(statement_->fileName) + "は口座・カード番号 " + account + " の明細です。資産「" +
           (sisan ? sisan->namae : "") + "」にはこれまで " + other + " の明細を取り込んでいます。別の資産を選んでください。";
}

std::string ImportPlan::refusal() const
{
    const std::string nothing = nothingToImport();
    return nothing.empty() ? accountProblem() : nothing;
}

ImportSummary ImportPlan::summary() const
{
    ImportSummary s;
    for (size_t i = 0; i < rows_.size(); ++i) {
        const PlannedRow& p = rows_[i];
        ++s.read;
        switch (p.status) {
        case MatchStatus::AlreadyImported: ++s.already; break;
        case MatchStatus::PossibleDuplicate: ++s.possibleDuplicates; break;
        case MatchStatus::TransferCandidate: ++s.transfers; break;
        case MatchStatus::Unreadable: ++s.refused; break;
        default: break;
        }
        if (!p.checked) continue;
        ++s.imported;
        if (!p.assigned()) ++s.unassigned;
        if (p.partnerSisanId != 0) continue;
        const int64_t kingaku = source(i).kingaku;
        (kingaku < 0 ? s.expense : s.income) += kingaku < 0 ? -kingaku : kingaku;
    }
    return s;
}

size_t ImportPlan::setChecked(const std::vector<size_t>& rows, bool checked)
{
    size_t changed = 0;
    for (const size_t i : rows) {
        PlannedRow& p = rows_[i];
        if (!p.checkable || p.checked == checked) continue;
        p.checked = checked;
        ++changed;
    }
    return changed;
}

bool ImportPlan::fits(size_t i, int64_t himokuNo) const
{
    const ContextHimoku* h = context_.himoku(himokuNo);
    return rows_[i].checkable && h && h->syubetuNo == syubetuOf(i);
}

size_t ImportPlan::setHimoku(const std::vector<size_t>& rows, int64_t himokuNo)
{
    size_t changed = 0;
    for (const size_t i : rows) {
        if (!fits(i, himokuNo)) continue;
        PlannedRow& p = rows_[i];
        p.himokuNo = himokuNo;
        p.partnerSisanId = 0;
        p.pairedItemId = 0;
        ++changed;
    }
    return changed;
}

std::vector<size_t> ImportPlan::sameText(size_t i) const
{
    const std::string_view key = statement_->text(source(i).matchKey);
    std::vector<size_t> same;
    for (size_t j = 0; j < rows_.size(); ++j)
        if (statement_->text(source(j).matchKey) == key) same.push_back(j);
    return same;
}

size_t ImportPlan::setLayoutDefault(int64_t himokuNo)
{
    const ContextHimoku* h = context_.himoku(himokuNo);
    if (!h) return 0;
    std::erase_if(layoutDefaults_, [&](const ImportAssignment& a) { return a.syubetuNo == h->syubetuNo; });
    layoutDefaults_.push_back({statement_->layout.profile.id, "", h->syubetuNo, himokuNo});
    default_[slot(h->syubetuNo)] = himokuNo;
    std::vector<size_t> open;
    for (size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].checked && !rows_[i].assigned()) open.push_back(i);
    return setHimoku(open, himokuNo);
}

size_t ImportPlan::setTransfer(const std::vector<size_t>& rows, int64_t sisanId)
{
    if (sisanId == context_.sisanId || !context_.sisan(sisanId)) return 0;
    size_t changed = 0;
    for (const size_t i : rows) {
        PlannedRow& p = rows_[i];
        if (!p.checkable) continue;
        if (p.partnerSisanId != sisanId) p.pairedItemId = 0;  // a pair found in the book stays with its asset
        p.partnerSisanId = sisanId;
        p.himokuNo = 0;
        ++changed;
    }
    return changed;
}

size_t ImportPlan::firstUnassigned() const
{
    for (size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].checked && !rows_[i].assigned()) return i;
    return rows_.size();
}

std::string ImportPlan::describe(const ImportBookRow& b) const
{
    std::string what;
    if (b.syubetuNo == kSyubetuIdouMoto || b.syubetuNo == kSyubetuIdouSaki) {
        const ContextSisan* s = context_.sisan(b.idouSisanNo);
        what = "振替: " + (s ? s->namae : std::string("????"));
    } else if (const ContextHimoku* h = context_.himoku(b.himokuNo)) {
        what = h->namae;
    }
    const std::string text = b.text.empty() ? b.bikou : b.text;
    return b.hizuke + " " + (b.kingaku < 0 ? "支出 " : "収入 ") + formatWithGrouping(b.kingaku < 0 ? -b.kingaku : b.kingaku) +
           "円 " + what + (text.empty() ? "" : " " + quoted(text));
}

std::string ImportPlan::matchText(size_t i) const
{
    const PlannedRow& p = rows_[i];
    const StatementRow& r = source(i);
    if (p.status == MatchStatus::Unreadable) return std::string(statement_->text(r.reason));
    if (!writable(r)) return r.kingaku == 0 ? "金額が0円の行です" : "金額が大きすぎます";
    if (p.matchedItemId != 0) {
        const ImportBookRow* b = bookRow(p.matchedItemId);
        return b ? describe(*b) : std::string();
    }
    if (p.status != MatchStatus::TransferCandidate) return {};
    if (p.pairedItemId != 0) {
        const ImportBookRow* b = bookRow(p.pairedItemId);
        const ContextSisan* s = b ? context_.sisan(b->sisanId) : nullptr;
        return b && s ? s->namae + "の " + describe(*b) + " と組にします" : std::string();
    }
    const std::string partner(statement_->text(r.partner));
    std::string text = hintText(r.transfer);
    if (!partner.empty() && p.partnerSisanId == 0 && r.transfer != TransferHint::CardFunded)
        text += "（相手: " + partner + "）";
    return text;
}

std::string ImportPlan::assignmentText(size_t i) const
{
    const PlannedRow& p = rows_[i];
    if (p.partnerSisanId != 0) {
        const ContextSisan* s = context_.sisan(p.partnerSisanId);
        return "振替: " + (s ? s->namae : std::string("????"));
    }
    const ContextHimoku* h = context_.himoku(p.himokuNo);
    return h ? h->namae : std::string();
}

ImportBatch ImportPlan::batch(const std::string& importedAt) const
{
    const StatementFile& s = *statement_;
    const ImportSummary sum = summary();
    ImportBatch b;
    b.record = {0,         s.fileName,     s.sha256,  s.layout.profile.id, s.displayName, statementAccount(s),
                importedAt, context_.sisanId, sum.read, 0,               sum.already,   sum.refused};
    std::map<std::string, ImportAssignment> learned;
    for (size_t i = 0; i < rows_.size(); ++i) {
        const PlannedRow& p = rows_[i];
        if (!p.checked || !p.assigned()) continue;
        const StatementRow& r = source(i);
        ImportEntry& e = b.entries.emplace_back();
        e.hizuke = r.date.hizuke();
        e.nen = r.date.nen();
        e.tuki = r.date.tuki();
        e.hi = r.date.hi();
        e.kingaku = r.kingaku;
        e.himokuNo = p.himokuNo;
        e.partnerSisanId = p.partnerSisanId;
        e.pairedItemId = p.pairedItemId;
        e.text = std::string(s.text(r.text));
        const std::string_view note = s.text(r.note);
        e.bikou = note.empty() || note == e.text ? e.text : e.text + " " + std::string(note);
        e.idKey = idKey(r, s.pool);
        e.contentKey = contentKey(r, s.pool);
        const std::string_view key = s.text(r.matchKey);
        if (p.himokuNo == 0 || key.empty()) continue;
        const int64_t kind = syubetuOf(i);
        const std::string k = std::to_string(kind) + "|" + std::string(key);
        if (lookUp(learned_, kind, key) == p.himokuNo)
            learned.erase(k);
        else
            learned[k] = {"", std::string(key), kind, p.himokuNo};
    }
    for (auto& [key, a] : learned) b.assignments.push_back(std::move(a));
    b.assignments.insert(b.assignments.end(), layoutDefaults_.begin(), layoutDefaults_.end());
    return b;
}

#include "app/ImportCommand.h"

#include <memory>
#include <vector>

#include "app/CommandLine.h"
#include "import/CardStatementCheck.h"
#include "import/ImportPlan.h"
#include "store/BookCheck.h"
#include "store/BookLock.h"
#include "store/DataModel.h"
#include "store/Provisioning.h"
#include "ui/Clock.h"

namespace {

// Why the book cannot take an import; "" when it can (then it is provisioned).
std::string bookProblem(const std::string& book)
{
    const BookCheck check = checkBook(book);
    const std::string detail = check.detail.empty() ? "" : "（" + check.detail + "）";
    switch (check.verdict) {
    case BookVerdict::Ready: {
        std::string error;
        return provisionBook(book, &error) ? "" : "家計簿のファイルを用意できませんでした: " + book + "（" + error + "）";
    }
    case BookVerdict::Missing:
        return "家計簿がありません: " + book;
    case BookVerdict::Locked:
        return "家計簿のファイルは別のプログラムが書き込み中です: " + book;
    case BookVerdict::FileReadOnly:
    case BookVerdict::FolderReadOnly:
        return "家計簿のファイルに書き込めません: " + book + detail;
    default:
        return "家計簿のファイルを開けません: " + book + detail;
    }
}

std::vector<ImportProfile> savedProfiles(DataModel& dm)
{
    std::vector<ImportProfileRow> rows;
    std::vector<ImportProfile> profiles;
    if (!dm.readImportProfiles(rows)) return profiles;
    for (const ImportProfileRow& r : rows) profiles.push_back(profileFromMapping(mappingFromJson(r.mapping)));
    return profiles;
}

class ImportRun {
public:
    ImportRun(DataModel& dm, const CommandLine& line, int64_t sisanId, std::FILE* out, std::FILE* err)
        : dm_(dm), line_(line), sisanId_(sisanId), out_(out), err_(err), profiles_(savedProfiles(dm))
    {
    }

    // Imports one file; false when it was refused.
    bool importFile(const std::string& path)
    {
        ReadOptions options;
        options.savedProfiles = profiles_;
        StatementReading reading = readStatementFile(path, options);
        if (!reading.ok()) return refuse(path, "-", nullptr, reading.refusal->message);
        auto statement = std::make_shared<const StatementFile>(std::move(reading.statement));
        ImportContext context;
        const std::string& layout = statement->layout.profile.id;
        if (!loadImportContext(dm_, *statement, sisanId_, context)) return refuse(path, layout, nullptr, "");
        ImportPlan plan(statement, std::move(context));
        decide(plan);
        const ImportSummary summary = plan.summary();
        std::string why = plan.refusal();
        if (why.empty() && summary.unassigned > 0) why = unassigned(plan, summary.unassigned);
        if (!why.empty()) return refuse(path, layout, &plan, why);
        if (!line_.dryRun && summary.imported > 0) {
            const std::string now = currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")).toStdString();
            if (!dm_.importStatementEntries(plan.batch(now), nullptr))
                return refuse(path, layout, &plan, "");  // the store has said why
        }
        report(path, layout, summary);
        cardPeriod(path, plan);
        refusedRows(path, plan);
        return true;
    }

private:
    // The window's proposals, less what only a person should decide.
    void decide(ImportPlan& plan) const
    {
        std::vector<size_t> duplicates, transfers;
        for (size_t i = 0; i < plan.rows().size(); ++i) {
            const MatchStatus status = plan.rows()[i].status;
            if (status == MatchStatus::PossibleDuplicate) duplicates.push_back(i);
            if (status == MatchStatus::TransferCandidate) transfers.push_back(i);
        }
        if (line_.acceptCandidates) {
            plan.setChecked(duplicates, true);
        } else {
            plan.setChecked(transfers, false);
        }
    }

    static std::string unassigned(const ImportPlan& plan, int64_t count)
    {
        const size_t first = plan.firstUnassigned();
        const StatementRow& r = plan.source(first);
        return "「" + plan.statement().fileName + "」には費目の決まらない行が " + std::to_string(count) + " 行あります（" +
               std::to_string(r.line) + "行目「" + std::string(plan.statement().text(r.text)) +
               "」ほか）。ウィンドウの「明細の取り込み」で費目を選んで取り込むと、次からは覚えた費目で取り込めます。";
    }

    bool refuse(const std::string& path, const std::string& layout, const ImportPlan* plan, const std::string& why)
    {
        ImportSummary summary = plan ? plan->summary() : ImportSummary{};
        summary.imported = summary.income = summary.expense = 0;
        report(path, layout, summary);
        if (plan) refusedRows(path, *plan);
        if (!why.empty()) std::fprintf(err_, "%s\n", why.c_str());
        return false;
    }

    void report(const std::string& path, const std::string& layout, const ImportSummary& s)
    {
        std::fprintf(out_,
                     "import %s layout=%s read=%lld imported=%lld already=%lld possible_duplicates=%lld transfers=%lld "
                     "refused=%lld income=%lld expense=%lld\n",
                     path.c_str(), layout.empty() ? "-" : layout.c_str(), ll(s.read), ll(s.imported), ll(s.already),
                     ll(s.possibleDuplicates), ll(s.transfers), ll(s.refused), ll(s.income), ll(s.expense));
    }

    // A card's statement against its period in the book, the imported rows in.
    void cardPeriod(const std::string& path, const ImportPlan& plan)
    {
        const std::optional<CardStatementPeriod>& card = plan.context().cardPeriod;
        if (!card) return;
        const CardStatementCheck check = checkCardStatement(plan, *card);
        std::fprintf(out_, "card %s closing=%s withdrawal=%s statement=%lld book=%lld difference=%lld\n", path.c_str(),
                     card->period.purchases.last.iso().c_str(), card->period.withdrawal.iso().c_str(),
                     ll(check.statementKingaku), ll(check.bookKingaku), ll(check.difference()));
    }

    void refusedRows(const std::string& path, const ImportPlan& plan)
    {
        for (size_t i = 0; i < plan.rows().size(); ++i) {
            if (plan.rows()[i].status != MatchStatus::Unreadable) continue;
            std::fprintf(out_, "refused %s line=%u reason=%s\n", path.c_str(), plan.source(i).line,
                         plan.matchText(i).c_str());
        }
    }

    static long long ll(int64_t v) { return static_cast<long long>(v); }

    DataModel& dm_;
    const CommandLine& line_;
    int64_t sisanId_;
    std::FILE* out_;
    std::FILE* err_;
    std::vector<ImportProfile> profiles_;
};

// The asset of that name, or 0 after saying which assets there are.
int64_t sisanNamed(const DataModel& dm, const std::string& name, std::FILE* err)
{
    std::string names;
    for (const auto& s : dm.sisanList) {
        if (s->Namae == name) return s->Id;
        names += (names.empty() ? "" : "、") + s->Namae;
    }
    std::fprintf(err, "資産「%s」は家計簿にありません（資産: %s）。\n", name.c_str(), names.c_str());
    return 0;
}

}  // namespace

int runImportCommand(const CommandLine& line, std::FILE* out, std::FILE* err)
{
    // The book is the file the path leads to, locked as the window locks it:
    // a book open in a window is not written behind its back.
    const BookPath path = resolveBookPath(line.book.empty() ? DataModel::defaultBookPath() : line.book);
    const std::string& bookPath = path.path;
    BookLock lock(bookPath);
    if (lock.state() == BookLock::State::HeldElsewhere) {
        std::fprintf(err, "この家計簿は Zenvora のウィンドウで開かれています。閉じてからもう一度実行してください: %s\n",
                     bookPath.c_str());
        return 1;
    }
    if (const std::string problem = bookProblem(bookPath); !problem.empty()) {
        std::fprintf(err, "%s\n", problem.c_str());
        return 1;
    }
    DataModel dm(bookPath);
    const int64_t sisanId = sisanNamed(dm, line.asset, err);
    if (sisanId == 0) return 1;
    ImportRun run(dm, line, sisanId, out, err);
    bool allImported = true;
    for (const std::string& file : line.importFiles) allImported = run.importFile(file) && allImported;
    // The window writes the balances as it closes; so does the command.
    if (!line.dryRun && !dm.updateSisanZankinTable()) allImported = false;
    return allImported ? 0 : 1;
}

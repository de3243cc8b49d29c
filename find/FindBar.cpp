#include "find/FindBar.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QLocale>
#include <QScopedValueRollback>
#include <QSignalBlocker>

#include "find/FoundItemsModel.h"
#include "find/SearchRunner.h"
#include "reports/ReportExport.h"
#include "store/DataModel.h"
#include "ui/AmountText.h"
#include "ui/Clock.h"
#include "ui_FindBar.h"

namespace {

// The items of the period choice.
enum Kikan { AllTime, ThisMonth, LastMonth, ThisYear, LastYear, Chosen };

struct Period {
    QDate from, to;
};

Period periodOf(int kikan, const QDate& today)
{
    const QDate month(today.year(), today.month(), 1);
    switch (kikan) {
    case ThisMonth:
        return {month, month.addMonths(1).addDays(-1)};
    case LastMonth:
        return {month.addMonths(-1), month.addDays(-1)};
    case ThisYear:
        return {QDate(today.year(), 1, 1), QDate(today.year(), 12, 31)};
    case LastYear:
        return {QDate(today.year() - 1, 1, 1), QDate(today.year() - 1, 12, 31)};
    default:
        return {};
    }
}

// An amount typed in a search field: digits of any width, with or without
// digit grouping, "円" and "¥" allowed. Empty means no condition.
struct AmountField {
    bool valid = true;
    std::optional<int64_t> value;
};

AmountField amountField(const QString& typed)
{
    QString text = typed.normalized(QString::NormalizationForm_KC).trimmed();
    text.remove(QLatin1Char(',')).remove(QChar(u'円')).remove(QLatin1Char('\\')).remove(QChar(u'¥'));
    text = text.trimmed();
    if (text.isEmpty()) return {};
    const auto value = kingakuFromText(text);
    return value ? AmountField{true, value} : AmountField{false, {}};
}

std::string hizukeOf(const QDate& date)
{
    return date.toString(QStringLiteral("yyyy-MM-dd")).toStdString();
}

const QString kRedBorder = QStringLiteral("QLineEdit { border: 2px solid red; }");

}  // namespace

FindBar::FindBar(DataModel& dm, QWidget* parent)
    : QWidget(parent),
      DM(dm),
      ui(std::make_unique<Ui::FindBar>()),
      model(new FoundItemsModel(dm, this)),
      runner(new SearchRunner(dm.bookPath(), this))
{
    ui->setupUi(this);
    ui->tblFindResults->setModel(model);
    ui->tblFindResults->horizontalHeader()->setSortIndicator(FoundItemsModel::Hizuke, Qt::DescendingOrder);
    const QDate today = currentDateTime().date();
    for (QDateEdit* date : {ui->dateFindFrom, ui->dateFindTo}) {
        date->setLocale(QLocale(QLocale::Japanese, QLocale::Japan));
        date->setDate(today);
        date->setEnabled(false);
    }
    layOutColumns();
    reloadSisanChoices();
    wire();
    hide();
}

FindBar::~FindBar() = default;

void FindBar::wire()
{
    connect(ui->txtFindWords, &QLineEdit::textChanged, this, &FindBar::runSearch);
    connect(ui->txtFindKingakuFrom, &QLineEdit::textChanged, this, &FindBar::runSearch);
    connect(ui->txtFindKingakuTo, &QLineEdit::textChanged, this, &FindBar::runSearch);
    connect(ui->cmbFindSyubetu, &QComboBox::currentIndexChanged, this, &FindBar::runSearch);
    connect(ui->cmbFindSisan, &QComboBox::currentIndexChanged, this, &FindBar::runSearch);
    connect(ui->cmbFindKikan, &QComboBox::currentIndexChanged, this, &FindBar::periodChosen);
    for (QDateEdit* date : {ui->dateFindFrom, ui->dateFindTo})
        connect(date, &QDateEdit::dateChanged, this, [this] {
            if (!settingPeriod) runSearch();
        });
    connect(runner, &SearchRunner::found, this, &FindBar::showFound);
    // Enter activates; a double click activates too in some styles only. A
    // second jump to the same entry changes nothing.
    connect(ui->tblFindResults, &QAbstractItemView::activated, this, &FindBar::activated);
    connect(ui->tblFindResults, &QAbstractItemView::doubleClicked, this, &FindBar::activated);
    connect(ui->btnFindSaveCsv, &QPushButton::clicked, this, &FindBar::saveCsv);
    connect(ui->btnFindClose, &QPushButton::clicked, this, &FindBar::closeBar);
}

void FindBar::layOutColumns()
{
    // Widths from the font, never from the rows.
    const QFontMetrics metrics(font());
    const int amount = metrics.horizontalAdvance(QStringLiteral("-9,999,999,999")) + 24;
    QHeaderView* header = ui->tblFindResults->horizontalHeader();
    header->resizeSection(FoundItemsModel::Hizuke, metrics.horizontalAdvance(QStringLiteral("0000-00-00")) + 32);
    header->resizeSection(FoundItemsModel::Sisan, metrics.horizontalAdvance(QStringLiteral("クレジットカード")) + 16);
    header->resizeSection(FoundItemsModel::Himoku, metrics.horizontalAdvance(QStringLiteral("水道光熱費/その他")) + 16);
    header->resizeSection(FoundItemsModel::Nyuukin, amount);
    header->resizeSection(FoundItemsModel::Syukkin, amount);
    header->setStretchLastSection(true);
    ui->tblFindResults->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    ui->tblFindResults->verticalHeader()->setDefaultSectionSize(metrics.height() + 10);
    const int kingaku = metrics.horizontalAdvance(QStringLiteral("99,999,999")) + 16;
    ui->txtFindKingakuFrom->setFixedWidth(kingaku);
    ui->txtFindKingakuTo->setFixedWidth(kingaku);
}

void FindBar::reloadSisanChoices()
{
    const QSignalBlocker quiet(ui->cmbFindSisan);
    const qlonglong chosen = ui->cmbFindSisan->currentData().toLongLong();
    ui->cmbFindSisan->clear();
    ui->cmbFindSisan->addItem(QStringLiteral("すべての資産"), qlonglong{0});
    for (const auto& sisan : DM.sisanList)
        ui->cmbFindSisan->addItem(QString::fromStdString(sisan->Namae), qlonglong{sisan->Id});
    const int again = ui->cmbFindSisan->findData(chosen);
    ui->cmbFindSisan->setCurrentIndex(again >= 0 ? again : 0);
}

void FindBar::open()
{
    show();
    ui->txtFindWords->setFocus(Qt::ShortcutFocusReason);
    ui->txtFindWords->selectAll();
    bookChanged();
}

void FindBar::closeBar()
{
    runner->cancel();
    hide();
    emit closed();
}

void FindBar::bookChanged()
{
    if (isHidden()) return;
    reloadSisanChoices();
    runSearch();
}

void FindBar::keyPressEvent(QKeyEvent* event)
{
    // Reaches the bar only when the focused field let it pass: an open list
    // or calendar keeps its own Escape.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        closeBar();
        return;
    }
    QWidget::keyPressEvent(event);
}

void FindBar::periodChosen()
{
    const int kikan = ui->cmbFindKikan->currentIndex();
    {
        const QScopedValueRollback quiet(settingPeriod, true);
        const Period period = periodOf(kikan, currentDateTime().date());
        if (period.from.isValid()) {
            ui->dateFindFrom->setDate(period.from);
            ui->dateFindTo->setDate(period.to);
        }
        ui->dateFindFrom->setEnabled(kikan == Chosen);
        ui->dateFindTo->setEnabled(kikan == Chosen);
    }
    runSearch();
}

SearchCriteria FindBar::criteria(QString* problem) const
{
    SearchCriteria c;
    c.words = DM.searchWords(ui->txtFindWords->text().toStdString());
    const AmountField from = amountField(ui->txtFindKingakuFrom->text());
    const AmountField to = amountField(ui->txtFindKingakuTo->text());
    ui->txtFindKingakuFrom->setStyleSheet(from.valid ? QString() : kRedBorder);
    ui->txtFindKingakuTo->setStyleSheet(to.valid ? QString() : kRedBorder);
    if (!from.valid || !to.valid) {
        *problem = QStringLiteral("金額は0から2,147,483,647までの数字で入力してください。");
        return c;
    }
    if (from.value && !to.value) {
        c.kingakuMin = c.kingakuMax = from.value;  // one amount: exactly that
    } else if (to.value) {
        c.kingakuMin = from.value.value_or(0);
        c.kingakuMax = to.value;
        if (*c.kingakuMin > *c.kingakuMax) std::swap(c.kingakuMin, c.kingakuMax);  // typed backwards
    }
    if (ui->cmbFindKikan->currentIndex() != AllTime) {
        QDate first = ui->dateFindFrom->date(), last = ui->dateFindTo->date();
        if (first > last) std::swap(first, last);
        c.hizukeFrom = hizukeOf(first);
        c.hizukeTo = hizukeOf(last);
    }
    c.kind = static_cast<SearchCriteria::Kind>(ui->cmbFindSyubetu->currentIndex());
    c.sisanId = ui->cmbFindSisan->currentData().toLongLong();
    return c;
}

void FindBar::runSearch()
{
    if (isHidden()) return;
    QString problem;
    const SearchCriteria c = criteria(&problem);
    if (!problem.isEmpty()) {
        runner->cancel();
        ui->lblFindSummary->setText(problem);
        return;
    }
    if (c.empty()) {
        runner->cancel();
        model->setItems(std::make_shared<FoundItems>());
        ui->lblFindSummary->setText(QStringLiteral("探す語句や条件を入力してください。"));
        return;
    }
    if (!c.words.empty() && !DM.refreshSearchIndex()) {
        runner->cancel();
        ui->lblFindSummary->setText(QStringLiteral("検索用の索引を使えません: ") +
                                    QString::fromStdString(DM.searchIndexError));
        return;
    }
    ui->lblFindSummary->setText(QStringLiteral("検索中…"));
    runner->search(c);
}

void FindBar::showFound(std::shared_ptr<const FoundItems> items, const QString& error)
{
    if (!error.isEmpty()) {
        ui->lblFindSummary->setText(QStringLiteral("検索できませんでした: ") + error);
        emit searched();
        return;
    }
    model->setItems(std::move(items));
    const QHeaderView* header = ui->tblFindResults->horizontalHeader();
    if (header->sortIndicatorSection() != FoundItemsModel::Hizuke || header->sortIndicatorOrder() != Qt::DescendingOrder)
        model->sort(header->sortIndicatorSection(), header->sortIndicatorOrder());
    showSummary();
    emit searched();
}

void FindBar::showSummary()
{
    const FoundItems& found = model->items();
    QString text = groupedKingaku(found.count) + QStringLiteral("件　収入 ") + groupedKingaku(found.nyuukinTotal) +
                   QStringLiteral("　支出 ") + groupedKingaku(found.syukkinTotal);
    if (static_cast<size_t>(found.count) > found.rows.size())
        text += QStringLiteral("（新しい ") + groupedKingaku(static_cast<int64_t>(found.rows.size())) +
                QStringLiteral("件を表示）");
    ui->lblFindSummary->setText(text);
}

void FindBar::activated(const QModelIndex& index)
{
    if (!index.isValid()) return;
    const FoundItem& item = model->item(index.row());
    emit jumpRequested(item.SisanNo, item.Id);
}

void FindBar::saveCsv()
{
    saveReportCsv(model->csv(), QStringLiteral("検索結果_") + fileDateStamp(currentDateTime().date()),
                  "search results csv write error \n");
}

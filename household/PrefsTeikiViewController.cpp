#include "household/PrefsTeikiViewController.h"

#include <QColor>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLocale>
#include <QShortcut>
#include <algorithm>

#include "editors/EditorUndo.h"
#include "editors/EditorWidgets.h"
#include "household/HouseholdLabels.h"
#include "household/QtDates.h"
#include "household/TeikiSchedule.h"
#include "household/TeikiTexts.h"
#include "store/DataModel.h"
#include "store/FindById.h"
#include "ui/AmountText.h"
#include "ui/BoxKeys.h"
#include "ui/FitToScreen.h"
#include "ui/ListTableModel.h"
#include "ui/MessageService.h"
#include "ui_PrefsTeikiViewController.h"

namespace {

const QString kHensyuuUnselected = QStringLiteral("編集する定期的な支出入の行を選択してからにしてください。");
const QString kSakujyoUnselected = QStringLiteral("削除する定期的な支出入の行を選択してからにしてください。");
const QString kKingakuInvalid = QStringLiteral("金額の欄に不正なデータがあります");
const QString kRedBorder = QStringLiteral("QLineEdit { border: 2px solid red; }");
const QString kTuikaChuui = QStringLiteral("登録した日より前の分は記帳しません。期日が来ると、記帳するかどうかを確かめる画面が出ます。");
const QString kHensyuuChuui =
    QStringLiteral("繰り返し・日・開始日を変えると、明日以降の分から記帳します。金額や備考の変更は、まだ記帳していない分から使われます。");
const QColor kBroken(0xc0, 0x00, 0x00);

QString q(const std::string& text)
{
    return QString::fromStdString(text);
}

void say(const QString& message)
{
    messageService().someMessageWithAlert(message, QStringLiteral("information"));
}

}  // namespace

PrefsTeikiViewController::PrefsTeikiViewController(DataModel& dm, QWidget* parent)
    : QDialog(parent), DM(dm), ui(std::make_unique<Ui::PrefsTeikiViewController>())
{
    ui->setupUi(this);
    viewDidLoad();
}

PrefsTeikiViewController::~PrefsTeikiViewController() = default;

void PrefsTeikiViewController::viewDidLoad()
{
    const auto teiki = [this](int row) -> const Teiki& { return *DM.teikiList[static_cast<size_t>(row)]; };
    const auto problem = [this, teiki](int row) { return teikiProblem(DM, teiki(row)); };
    teikiModel = new ListTableModel(
        [this] { return static_cast<int>(DM.teikiList.size()); },
        {{"SisanNo", QStringLiteral("資産"), false,
          [=, this](int r) { return q(sisanNamaeOrGone(DM, teiki(r).SisanNo)); }},
         {"SyubetuNo", QStringLiteral("種別"), false, [=](int r) { return q(teikiSyubetuText(teiki(r).SyubetuNo)); }},
         {"Naiyou", QStringLiteral("内容"), false, [=, this](int r) { return q(teikiNaiyou(DM, teiki(r))); }},
         {"Kingaku", QStringLiteral("金額"), true, [=, this](int r) { return groupedKingaku(teiki(r).Kingaku); }},
         {"Nittei", QStringLiteral("日程"), false, [=, this](int r) { return q(scheduleLabel(scheduleOf(teiki(r)))); }},
         {"Jikai", QStringLiteral("次回"), false,
          [=, this](int r) {
              const std::string why = problem(r);
              if (!why.empty()) return QStringLiteral("使えません: ") + q(why);
              const Teiki& t = teiki(r);
              const Date looked = Date::fromIso(t.Kakunin).value_or(Date{});
              const auto next = nextOccurrence(recurrenceOf(t).value(), std::max(householdToday(), looked.addDays(1)));
              return next ? q(dayWithWeekday(next->posting)) : QStringLiteral("終了");
          }}},
        [=, this](int r) { return q(problem(r)); }, this);
    teikiModel->setRowForeground([=, this](int r) { return problem(r).empty() ? QVariant() : QVariant(kBroken); });
    ui->tblTeiki->setModel(teikiModel);

    const auto yotei = [this](int row) -> const TeikiOutlook& { return yoteiList[static_cast<size_t>(row)]; };
    const auto rule = [this](const TeikiOutlook& line) -> const Teiki& {
        return *findById(DM.teikiList, DM.teikiId2Idx, line.teikiNo);
    };
    yoteiModel = new ListTableModel(
        [this] { return static_cast<int>(yoteiList.size()); },
        {{"Hizuke", QStringLiteral("日付"), false, [=, this](int r) { return q(dayWithWeekday(yotei(r).hizuke)); }},
         {"SisanNo", QStringLiteral("資産"), false,
          [=, this](int r) { return q(sisanNamaeOrGone(DM, yotei(r).sisanNo)); }},
         {"Naiyou", QStringLiteral("内容"), false,
          [=, this](int r) { return q(teikiNaiyou(DM, rule(yotei(r)), yotei(r).idouSaki)); }},
         {"Nyuukin", QStringLiteral("収入"), true,
          [=, this](int r) { return yotei(r).kingaku >= 0 ? groupedKingaku(yotei(r).kingaku) : QString(); }},
         {"Syukkin", QStringLiteral("支出"), true,
          [=, this](int r) { return yotei(r).kingaku < 0 ? groupedKingaku(-yotei(r).kingaku) : QString(); }},
         {"Zankin", QStringLiteral("残高見込み"), true, [=, this](int r) { return groupedKingaku(yotei(r).zankin); }}},
        {}, this);
    // An asset expected to go below zero shows in red.
    yoteiModel->setRowForeground([=](int r) { return yotei(r).zankin < 0 ? QVariant(kBroken) : QVariant(); });
    ui->tblTeikiYotei->setModel(yoteiModel);

    fillFixedLists();
    layOutColumns();
    wireActions();
    undoKeys = new EditorUndo(DM, this, [this](const StepFocus&) { showUndone(); });
    keepPlaceWhenHidden(ui->teikiBox);
    ui->teikiBox->hide();
    DM.readFromTeikiTable();
    reloadTables();
    fitToScreen(this);
}

void PrefsTeikiViewController::fillFixedLists()
{
    for (int month = 1; month <= 12; ++month) ui->cmbTeikiTuki->addItem(QString::number(month) + QStringLiteral("月"));
    for (int day = 1; day <= kLastDay; ++day) ui->cmbTeikiHi->addItem(q(dayText(day)));
    for (const char* youbi : {"日曜日", "月曜日", "火曜日", "水曜日", "木曜日", "金曜日", "土曜日"})
        ui->cmbTeikiYoubi->addItem(QString::fromUtf8(youbi));
    // In the order of the numbers a book stores.
    for (HolidayShift shift : {HolidayShift::SameDay, HolidayShift::Before, HolidayShift::After})
        ui->cmbTeikiKyuujitu->addItem(q(holidayShiftName(shift)));
    const QLocale japanese(QLocale::Japanese, QLocale::Japan);
    ui->dateTeikiKaisi->setLocale(japanese);
    ui->dateTeikiSyuuryou->setLocale(japanese);
}

void PrefsTeikiViewController::layOutColumns()
{
    const QFontMetrics metrics(font());
    const int amount = metrics.horizontalAdvance(QStringLiteral("-9,999,999,999")) + 24;
    const int day = metrics.horizontalAdvance(QStringLiteral("0000-00-00（水）")) + 24;
    const int name = 8 * metrics.horizontalAdvance(QChar(0x4E00)) + 24;
    const int kanji = metrics.horizontalAdvance(QChar(0x4E00));
    // The content takes what is left; the other columns fit what they hold.
    QHeaderView* rules = ui->tblTeiki->horizontalHeader();
    rules->setStretchLastSection(false);
    rules->setSectionResizeMode(2, QHeaderView::Stretch);
    const std::vector<std::pair<int, int>> ruleWidths{
        {0, name}, {1, 2 * kanji + 24}, {3, amount}, {4, 15 * kanji + 16}, {5, day}};
    int fixed = 12 * kanji;  // the content's least width
    for (const auto& [column, width] : ruleWidths) {
        rules->resizeSection(column, width);
        fixed += width;
    }
    ui->tblTeiki->setMinimumWidth(fixed + 2 * ui->tblTeiki->frameWidth() + 24);
    QHeaderView* yotei = ui->tblTeikiYotei->horizontalHeader();
    yotei->setStretchLastSection(false);
    yotei->setSectionResizeMode(2, QHeaderView::Stretch);
    for (const auto& [column, width] :
         std::vector<std::pair<int, int>>{{0, day}, {1, name}, {3, amount}, {4, amount}, {5, amount + 24}})
        yotei->resizeSection(column, width);
    setRowHeights(ui->tblTeiki);
    setRowHeights(ui->tblTeikiYotei);
    fitButtonsTo({ui->btnTeikiOK, ui->btnTeikiCancel}, {QStringLiteral("キャンセル")});
}

void PrefsTeikiViewController::wireActions()
{
    connect(ui->btnTeikiTuika, &QPushButton::clicked, this, &PrefsTeikiViewController::btnTeikiTuika);
    connect(ui->btnTeikiHensyuu, &QPushButton::clicked, this, &PrefsTeikiViewController::btnTeikiHensyuu);
    connect(ui->btnTeikiSakujyo, &QPushButton::clicked, this, &PrefsTeikiViewController::btnTeikiSakujyo);
    connect(ui->btnTeikiOK, &QPushButton::clicked, this, &PrefsTeikiViewController::btnTeikiOK);
    connect(ui->btnTeikiCancel, &QPushButton::clicked, this, &PrefsTeikiViewController::btnTeikiCancel);
    connect(ui->btnTeikiClose, &QPushButton::clicked, this, &PrefsTeikiViewController::btnTeikiClose);
    connect(ui->tblTeiki, &QAbstractItemView::doubleClicked, this, &PrefsTeikiViewController::btnTeikiHensyuu);
    connect(new QShortcut(QKeySequence(Qt::Key_Delete), ui->tblTeiki, nullptr, nullptr, Qt::WidgetShortcut),
            &QShortcut::activated, this, &PrefsTeikiViewController::btnTeikiSakujyo);
    bindBoxKeys(ui->teikiBox, [this] { btnTeikiOK(); }, [this] { btnTeikiCancel(); });

    for (QAbstractButton* kind : {static_cast<QAbstractButton*>(ui->rdbTeikiSisyutu),
                                  static_cast<QAbstractButton*>(ui->rdbTeikiSyuunyuu),
                                  static_cast<QAbstractButton*>(ui->rdbTeikiIdou)})
        connect(kind, &QAbstractButton::clicked, this, [this, kind] { kindChosen(kind); });
    const auto changedSchedule = [this] {
        showScheduleFields();
        describeSchedule();
    };
    for (QComboBox* box : {ui->cmbTeikiTani, ui->cmbTeikiTuki, ui->cmbTeikiHi, ui->cmbTeikiYoubi,
                           ui->cmbTeikiKyuujitu, ui->cmbTeikiOwari})
        connect(box, &QComboBox::currentIndexChanged, this, changedSchedule);
    for (QSpinBox* spin : {ui->spnTeikiKankaku, ui->spnTeikiKaisuu})
        connect(spin, &QSpinBox::valueChanged, this, changedSchedule);
    for (QDateEdit* date : {ui->dateTeikiKaisi, ui->dateTeikiSyuuryou})
        connect(date, &QDateEdit::dateChanged, this, changedSchedule);
}

void PrefsTeikiViewController::reloadTables()
{
    teikiModel->reload();
    reloadYotei();
}

void PrefsTeikiViewController::reloadYotei()
{
    yoteiList = teikiOutlook(DM, householdToday()).value_or(std::vector<TeikiOutlook>{});
    yoteiModel->reload();
}

const Teiki* PrefsTeikiViewController::selectedTeiki() const
{
    const int row = selectedRow(ui->tblTeiki);
    if (row < 0 || row >= static_cast<int>(DM.teikiList.size())) return nullptr;
    return DM.teikiList[static_cast<size_t>(row)].get();
}

const Teiki* PrefsTeikiViewController::preparedTeiki() const
{
    return preparedTeikiId ? findById(DM.teikiList, DM.teikiId2Idx, *preparedTeikiId) : nullptr;
}

void PrefsTeikiViewController::btnTeikiTuika()
{
    const Date today = householdToday();
    Teiki fresh;
    const bool shown = DM.theSisanNo >= 0 && DM.theSisanNo < static_cast<int64_t>(DM.sisanList.size());
    fresh.SisanNo = shown ? DM.sisanList[static_cast<size_t>(DM.theSisanNo)]->Id : 0;
    Schedule schedule;
    schedule.day = today.day == daysInMonth(today.year, today.month) ? kLastDay : today.day;
    schedule.month = today.month;
    schedule.weekday = today.weekday();
    schedule.start = today;
    setSchedule(fresh, schedule);
    preparedTeikiId.reset();
    fillBox(fresh);
    ui->txtTeikiKingaku->clear();
    prepareBox(kTuika, QStringLiteral("新規追加"));
}

void PrefsTeikiViewController::btnTeikiHensyuu()
{
    const Teiki* teiki = selectedTeiki();
    if (!teiki) {
        say(kHensyuuUnselected);
        return;
    }
    preparedTeikiId = teiki->Id;
    fillBox(*teiki);
    prepareBox(kHensyuu, QStringLiteral("編集"));
}

void PrefsTeikiViewController::prepareBox(SyoriNo action, const QString& title)
{
    syoriNo = action;
    ui->teikiBox->setTitle(title);
    ui->lblTeikiChuui->setText(action == kTuika ? kTuikaChuui : kHensyuuChuui);
    ui->txtTeikiKingaku->setStyleSheet(QString());
    ui->teikiBox->show();
    ui->cmbTeikiSisan->setFocus();
}

void PrefsTeikiViewController::fillBox(const Teiki& teiki)
{
    fillSisanList(teiki.SisanNo);
    QRadioButton* kind = teiki.SyubetuNo == kSyubetuSyuunyuu  ? ui->rdbTeikiSyuunyuu
                         : teiki.SyubetuNo == kSyubetuIdouMoto ? ui->rdbTeikiIdou
                                                               : ui->rdbTeikiSisyutu;
    kind->setChecked(true);
    fillHimokuList(shownKind(), teiki.SyubetuNo == kSyubetuIdouMoto ? teiki.IdouSisanNo : teiki.HimokuNo);
    ui->txtTeikiKingaku->setText(QString::number(teiki.Kingaku));
    ui->txtTeikiBikou->setText(q(teiki.Bikou));

    const Schedule s = scheduleOf(teiki);
    ui->cmbTeikiTani->setCurrentIndex(std::clamp(static_cast<int>(s.unit), 0, 2));
    ui->spnTeikiKankaku->setValue(s.every);
    ui->cmbTeikiTuki->setCurrentIndex(std::clamp(s.month, 1, 12) - 1);
    ui->cmbTeikiHi->setCurrentIndex(std::clamp(s.day, 1, kLastDay) - 1);
    ui->cmbTeikiYoubi->setCurrentIndex(std::clamp(s.weekday, 0, 6));
    ui->cmbTeikiKyuujitu->setCurrentIndex(std::clamp(static_cast<int>(s.shift), 0, 2));
    ui->dateTeikiKaisi->setDate(s.start.isValid() ? qdateOf(s.start) : currentDateTime().date());
    ui->cmbTeikiOwari->setCurrentIndex(s.end ? 1 : s.count ? 2 : 0);
    const bool endDay = s.end && s.end->isValid();
    ui->dateTeikiSyuuryou->setDate(endDay ? qdateOf(*s.end) : ui->dateTeikiKaisi->date().addYears(1));
    ui->spnTeikiKaisuu->setValue(s.count.value_or(12));
    showScheduleFields();
    describeSchedule();
}

void PrefsTeikiViewController::fillSisanList(int64_t chosen)
{
    ui->cmbTeikiSisan->clear();
    sisanIds.clear();
    for (const auto& sisan : DM.sisanList) {
        sisanIds.push_back(sisan->Id);
        ui->cmbTeikiSisan->addItem(q(sisan->Namae));
    }
    const auto at = std::find(sisanIds.begin(), sisanIds.end(), chosen);
    ui->cmbTeikiSisan->setCurrentIndex(at == sisanIds.end() ? -1 : static_cast<int>(at - sisanIds.begin()));
}

void PrefsTeikiViewController::fillHimokuList(int64_t kind, int64_t chosen)
{
    ui->cmbTeikiHimoku->clear();
    himokuIds.clear();
    if (kind == kSyubetuIdouMoto) {
        ui->lblTeikiHimoku->setText(QStringLiteral("移動先資産"));
        for (const auto& sisan : DM.sisanList) {
            himokuIds.push_back(sisan->Id);
            ui->cmbTeikiHimoku->addItem(q(sisan->Namae));
        }
    } else {
        ui->lblTeikiHimoku->setText(QStringLiteral("費目"));
        for (const auto& himoku : DM.himokuList) {
            if (himoku->SyubetuNo != kind || himoku->Ucount != 0) continue;
            himokuIds.push_back(himoku->Id);
            ui->cmbTeikiHimoku->addItem(q(himoku->Namae));
        }
    }
    const auto at = std::find(himokuIds.begin(), himokuIds.end(), chosen);
    ui->cmbTeikiHimoku->setCurrentIndex(at == himokuIds.end() ? -1 : static_cast<int>(at - himokuIds.begin()));
}

int64_t PrefsTeikiViewController::shownKind() const
{
    if (ui->rdbTeikiSyuunyuu->isChecked()) return kSyubetuSyuunyuu;
    if (ui->rdbTeikiIdou->isChecked()) return kSyubetuIdouMoto;
    return kSyubetuSisyutu;
}

void PrefsTeikiViewController::kindChosen(QAbstractButton* button)
{
    fillHimokuList(button->property("tag").toInt() + 1, -1);
}

void PrefsTeikiViewController::showScheduleFields()
{
    const auto unit = static_cast<RepeatUnit>(ui->cmbTeikiTani->currentIndex());
    ui->cmbTeikiTuki->setVisible(unit == RepeatUnit::Year);
    ui->cmbTeikiHi->setVisible(unit != RepeatUnit::Week);
    ui->cmbTeikiYoubi->setVisible(unit == RepeatUnit::Week);
    ui->lblTeikiHi->setText(unit == RepeatUnit::Week ? QStringLiteral("曜日")
                            : unit == RepeatUnit::Year ? QStringLiteral("月日")
                                                       : QStringLiteral("日"));
    // Every month, day 31 is the last day; every year it is the 31st.
    ui->cmbTeikiHi->setItemText(kLastDay - 1, unit == RepeatUnit::Year ? QStringLiteral("31日") : QStringLiteral("末日"));
    ui->dateTeikiSyuuryou->setVisible(ui->cmbTeikiOwari->currentIndex() == 1);
    ui->spnTeikiKaisuu->setVisible(ui->cmbTeikiOwari->currentIndex() == 2);
}

Schedule PrefsTeikiViewController::shownSchedule() const
{
    Schedule s;
    s.unit = static_cast<RepeatUnit>(ui->cmbTeikiTani->currentIndex());
    s.every = ui->spnTeikiKankaku->value();
    s.day = ui->cmbTeikiHi->currentIndex() + 1;
    s.month = ui->cmbTeikiTuki->currentIndex() + 1;
    s.weekday = ui->cmbTeikiYoubi->currentIndex();
    s.shift = static_cast<HolidayShift>(ui->cmbTeikiKyuujitu->currentIndex());
    s.start = dateOf(ui->dateTeikiKaisi->date());
    if (ui->cmbTeikiOwari->currentIndex() == 1) s.end = dateOf(ui->dateTeikiSyuuryou->date());
    if (ui->cmbTeikiOwari->currentIndex() == 2) s.count = ui->spnTeikiKaisuu->value();
    return s;
}

void PrefsTeikiViewController::describeSchedule()
{
    const Checked<Recurrence> recurrence = Recurrence::make(shownSchedule());
    if (!recurrence) {
        ui->lblTeikiNittei->setStyleSheet(QStringLiteral("color: #c00000;"));
        ui->lblTeikiNittei->setText(q(recurrence.refusal()));
        return;
    }
    ui->lblTeikiNittei->setStyleSheet(QString());
    const auto next = nextOccurrence(recurrence.value(), householdToday());
    ui->lblTeikiNittei->setText(q(scheduleLabel(recurrence->schedule())) + QStringLiteral("\n次回: ") +
                                (next ? q(monthDayText(next->posting, true)) : QStringLiteral("なし")));
}

std::optional<Teiki> PrefsTeikiViewController::checkedBox()
{
    const int sisan = ui->cmbTeikiSisan->currentIndex();
    if (sisan < 0 || sisan >= static_cast<int>(sisanIds.size())) {
        say(QStringLiteral("資産を選択してください。"));
        return std::nullopt;
    }
    Teiki t;
    t.SisanNo = sisanIds[static_cast<size_t>(sisan)];
    t.SyubetuNo = shownKind();
    const int partner = ui->cmbTeikiHimoku->currentIndex();
    if (partner < 0 || partner >= static_cast<int>(himokuIds.size())) {
        say(t.SyubetuNo == kSyubetuIdouMoto ? QStringLiteral("移動先資産を選択してください。")
                                            : QStringLiteral("費目を選択してください。"));
        return std::nullopt;
    }
    (t.SyubetuNo == kSyubetuIdouMoto ? t.IdouSisanNo : t.HimokuNo) = himokuIds[static_cast<size_t>(partner)];
    if (t.SyubetuNo == kSyubetuIdouMoto && t.IdouSisanNo == t.SisanNo) {
        say(QStringLiteral("移動元と移動先が同じです。処理を中止します。"));
        return std::nullopt;
    }
    const auto kingaku = kingakuFromText(trimmedAmountText(ui->txtTeikiKingaku->text()));
    if (!kingaku) {
        ui->txtTeikiKingaku->setStyleSheet(kRedBorder);
        say(kKingakuInvalid);
        return std::nullopt;
    }
    ui->txtTeikiKingaku->setStyleSheet(QString());
    t.Kingaku = *kingaku;
    t.Bikou = ui->txtTeikiBikou->text().toStdString();
    const Checked<Recurrence> recurrence = Recurrence::make(shownSchedule());
    if (!recurrence) {
        say(q(recurrence.refusal()));
        return std::nullopt;
    }
    setSchedule(t, recurrence->schedule());
    return t;
}

void PrefsTeikiViewController::btnTeikiOK()
{
    if (ui->teikiBox->isHidden() || syoriNo == kNone) return;
    std::optional<Teiki> teiki = checkedBox();
    if (!teiki) return;
    const Date today = householdToday();
    bool done = false;
    if (syoriNo == kTuika) {
        teiki->Kakunin = kakuninOfNewRule(today);
        done = DM.teikiInsert(*teiki);
        if (done) preparedTeikiId = DM.teikiList.empty() ? 0 : DM.teikiList.back()->Id;
    } else {
        const Teiki* before = preparedTeiki();
        if (!before) {
            say(kHensyuuUnselected);
            return;
        }
        teiki->Id = before->Id;
        teiki->Kakunin = kakuninAfterEdit(*before, *teiki, today);
        done = DM.teikiUpdate(*teiki);
    }
    if (!done) return;
    undoKeys->stepMade();
    teikiChangedSw = true;
    const int64_t saved = *preparedTeikiId;
    reloadTables();
    hideBox();
    if (const int64_t* row = DM.teikiId2Idx.find(saved)) ui->tblTeiki->selectRow(static_cast<int>(*row));
}

void PrefsTeikiViewController::btnTeikiSakujyo()
{
    const Teiki* teiki = selectedTeiki();
    if (!teiki) {
        say(kSakujyoUnselected);
        return;
    }
    const int64_t id = teiki->Id;
    const QString rule = q(teikiNaiyou(DM, *teiki)) + QStringLiteral("　") + groupedKingaku(teiki->Kingaku) +
                         QStringLiteral("円　") + q(scheduleLabel(scheduleOf(*teiki)));
    if (!messageService().yesNoMessageWithAlert(QStringLiteral("定期的な支出入「") + rule +
                                                    QStringLiteral("」を削除しますか？\n記帳済みの入力は残ります。"),
                                                QStringLiteral("削除する"), QStringLiteral("しない")))
        return;
    if (!DM.teikiDelete(id)) return;
    undoKeys->stepMade();
    teikiChangedSw = true;
    if (preparedTeikiId == id) hideBox();
    reloadTables();
    ui->tblTeiki->setFocus();
}

void PrefsTeikiViewController::showUndone()
{
    teikiChangedSw = true;
    hideBox();
    DM.readFromTeikiTable();
    reloadTables();
}

void PrefsTeikiViewController::btnTeikiCancel()
{
    hideBox();
}

void PrefsTeikiViewController::hideBox()
{
    syoriNo = kNone;
    ui->teikiBox->hide();
    ui->tblTeiki->setFocus();  // the keyboard goes on from the list
}

void PrefsTeikiViewController::btnTeikiClose()
{
    accept();
}

void PrefsTeikiViewController::reject()
{
    if (ui->teikiBox->isVisible()) {
        btnTeikiCancel();
        return;
    }
    QDialog::reject();
}

void PrefsTeikiViewController::keyPressEvent(QKeyEvent* event)
{
    if (!pressFocusedButton(*event)) QDialog::keyPressEvent(event);
}

#include "import/ImportProfile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "import/UnicodeText.h"

namespace {

// A mapped column: by its heading when the file has a header line, else by position.
ColumnRule mappedColumn(const UserMapping& m, Role role, int index)
{
    const bool byHeading = m.headerLine > 0 && index < static_cast<int>(m.headings.size()) &&
                           !trimmedCell(m.headings[static_cast<size_t>(index)]).empty();
    if (!byHeading) return {role, {}, index, true};
    // "|" separates alternatives in a heading; a heading with one stays findable by position.
    const std::string heading(trimmedCell(m.headings[static_cast<size_t>(index)]));
    if (heading.find('|') != std::string::npos || heading.starts_with('^')) return {role, {}, index, true};
    return {role, heading, -1, true};
}

QJsonArray intArray(const std::vector<int>& values)
{
    QJsonArray a;
    for (const int v : values) a.append(v);
    return a;
}

}  // namespace

ImportProfile profileFromMapping(const UserMapping& m)
{
    ImportProfile p;
    p.id = "mapping:" + m.name;
    p.name = m.name;
    p.source = SourceKind::Mapping;
    p.dateShapes = m.dateShapes;
    p.sign = m.positiveIsExpense ? SignConvention::PositiveIsExpense : SignConvention::PositiveIsIncome;
    p.columns.push_back(mappedColumn(m, Role::Date, m.dateColumn));
    for (const int c : m.textColumns) p.columns.push_back(mappedColumn(m, Role::Text, c));
    if (m.amountColumn >= 0) {
        p.columns.push_back(mappedColumn(m, Role::Amount, m.amountColumn));
    } else {
        p.columns.push_back(mappedColumn(m, Role::In, m.inColumn));
        p.columns.push_back(mappedColumn(m, Role::Out, m.outColumn));
    }
    if (m.noteColumn >= 0) p.columns.push_back(mappedColumn(m, Role::Note, m.noteColumn));
    return p;
}

std::string mappingToJson(const UserMapping& m)
{
    QJsonArray headings;
    for (const std::string& h : m.headings) headings.append(QString::fromStdString(h));
    const QJsonObject o{
        {"name", QString::fromStdString(m.name)},
        {"headerLine", m.headerLine},
        {"headings", headings},
        {"dateColumn", m.dateColumn},
        {"dateShapes", static_cast<int>(m.dateShapes)},
        {"textColumns", intArray(m.textColumns)},
        {"amountColumn", m.amountColumn},
        {"positiveIsExpense", m.positiveIsExpense},
        {"inColumn", m.inColumn},
        {"outColumn", m.outColumn},
        {"noteColumn", m.noteColumn},
    };
    return QJsonDocument(o).toJson(QJsonDocument::Compact).toStdString();
}

UserMapping mappingFromJson(const std::string& json)
{
    const QJsonObject o = QJsonDocument::fromJson(QByteArray::fromStdString(json)).object();
    UserMapping m;
    m.name = o.value("name").toString().toStdString();
    m.headerLine = o.value("headerLine").toInt(1);
    for (const QJsonValue h : o.value("headings").toArray()) m.headings.push_back(h.toString().toStdString());
    m.dateColumn = o.value("dateColumn").toInt(-1);
    m.dateShapes = static_cast<unsigned>(o.value("dateShapes").toInt(DateShape::Any));
    for (const QJsonValue c : o.value("textColumns").toArray()) m.textColumns.push_back(c.toInt());
    m.amountColumn = o.value("amountColumn").toInt(-1);
    m.positiveIsExpense = o.value("positiveIsExpense").toBool();
    m.inColumn = o.value("inColumn").toInt(-1);
    m.outColumn = o.value("outColumn").toInt(-1);
    m.noteColumn = o.value("noteColumn").toInt(-1);
    return m;
}
